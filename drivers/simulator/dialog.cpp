// The simulator's dialog: a form for all its settings.
#include <limits>

#include "drivers/common/node_form.h"
#include "settings.h"
#include "station.h"

namespace simulator {
namespace {

constexpr int kHighest = std::numeric_limits<int>::max();

#define ROW(status, title, meaning, severity, transfer, open, words) {status, title},
constexpr driver::CChoice kStatuses[] = {{0, "Unknown error"}, DRIVER_TRANSFER_FAILURES(ROW)};
#undef ROW

constexpr driver::CField kFields[] = {
    {"Waveforms",
     "text1: a waveform for each variable, with commas between, and from the first one again: sine, ramp, "
     "square, noise, counter, constant. Empty means sine.",
     &DriverRecord::text1},
    {"Period (ms)", "value1: duration of one wave in milliseconds. 0 means 10000.", &DriverRecord::value1, 0,
     kHighest},
    {"Amplitude (1/1000)", "value2: height of the waves in thousandths: 2500 is 2.5. 0 means 1000.",
     &DriverRecord::value2, 0, kHighest},
    {"Seed of the noise", "value3: noise of the same seed is the same in each run.", &DriverRecord::value3, 0,
     kHighest},
    {"Station",
     "station: number of the station whose registers the node reads and writes. 0 means waveforms.",
     &DriverRecord::station, 0, kHighest},
    {"First register", "registerAddress: with a station, the register of the first variable.",
     &DriverRecord::registerAddress, 0, CStation::kRegisters - 1},
    {"Each n-th call fails", "value4: which calls fail, reads and writes counted together. 0 means none.",
     &DriverRecord::value4, 0, kHighest},
    {"It fails with", "value5: the status of the calls that fail. Binary configuration files do not keep it.",
     &DriverRecord::value5, kStatuses, "Status"},
};

// The defaults as numbers; in a stored node 0 means the default.
constexpr DriverRecord NewNode() {
  DriverRecord record = {};
  record.text1 = "sine";
  record.value1 = kDefaultPeriod;
  record.value2 = kDefaultAmplitude;
  return record;
}

std::string Check(const DriverRecord& record) {
  CSettings settings;
  return ReadSettings(record, settings);
}

}  // namespace
}  // namespace simulator

constinit const driver::CNodeForm driver::kNodeForm = {simulator::kDriverId, "Simulator", simulator::kFields,
                                                       simulator::NewNode(), simulator::Check};
