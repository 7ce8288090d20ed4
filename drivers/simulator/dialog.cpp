#include "dialog.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <limits>
#include <new>
#include <string>

#include "settings.h"
#include "station.h"

namespace simulator {
namespace {

std::atomic<const DriverHost*> g_host = nullptr;

// The settings of a node, with texts of its own. What the form has no field for goes through it untouched.
struct CNode {
  DriverRecord record = {};  // but for its texts
  std::string text1;
  std::string text2;
};
CNode g_node;  // of SetConfig, or of the last accepted form

// The settings that a new node starts with: the defaults in figures, where a 0 would stand for them.
CNode NewNode() {
  CNode node;
  node.text1 = "sine";
  node.record.value1 = kDefaultPeriod;
  node.record.value2 = kDefaultAmplitude;
  return node;
}

// From top to bottom. The help begins with the name that the settings have outside of the form, in its faults
// too.
constexpr struct {
  const char* name;
  const char* help;
  int kind;
  int DriverRecord::*number;  // null for the text
  int high;                   // of a number
} kFields[] = {
    {"Waveforms",
     "text1: sine, ramp, square, noise, counter, constant or a comma list of these: one for each variable, "
     "and from the start again. Empty: sine.",
     driverFieldText, nullptr, 0},
    {"Period (ms)", "value1: duration of one wave in milliseconds. 0: 10000.", driverFieldNumber,
     &DriverRecord::value1, std::numeric_limits<int>::max()},
    {"Amplitude (1/1000)", "value2: height of the waves in thousandths: 2500 is 2.5. 0: 1000.",
     driverFieldNumber, &DriverRecord::value2, std::numeric_limits<int>::max()},
    {"Seed of the noise", "value3: noise of the same seed is the same in each run.", driverFieldNumber,
     &DriverRecord::value3, std::numeric_limits<int>::max()},
    {"Station", "station: number of the station whose registers the node reads and writes. 0: waveforms.",
     driverFieldNumber, &DriverRecord::station, std::numeric_limits<int>::max()},
    {"First register", "registerAddress: with a station, the register of the first variable.",
     driverFieldNumber, &DriverRecord::registerAddress, CStation::kRegisters - 1},
    {"Each n-th call fails", "value4: n, the reads and writes of the node counted together. 0: none fails.",
     driverFieldNumber, &DriverRecord::value4, std::numeric_limits<int>::max()},
    {"It fails with", "value5: the status of the calls that fail. Binary configuration files do not keep it.",
     driverFieldChoice, &DriverRecord::value5, 0},
};
constexpr std::size_t kFieldCount = std::size(kFields);

struct CStatus {
  int status;
  const char* name;
};
constexpr CStatus kStatuses[] = {
    {0, "Unknown error"},
    {statusNoMemory, "No memory"},
    {statusExtendedError, "Extended error"},
    {statusNotOpened, "Not opened"},
    {statusInvalidFrame, "Invalid frame"},
    {statusTimeout, "Time-out"},
    {statusReplyError, "Reply error"},
};

// One run of the form, on a copy of a node.
class CForm {
 public:
  explicit CForm(CNode node) : m_node(std::move(node)) {
    for (const CStatus& status : kStatuses) AddStatus(status.status, status.name);
    if (std::ranges::find(m_statuses, m_node.record.value5) == m_statuses.end()) {
      m_otherStatus = "Status " + std::to_string(m_node.record.value5);
      AddStatus(m_node.record.value5, m_otherStatus.c_str());
    }
    m_node.text1.resize(std::max(m_node.text1.size(), kTextLength));  // the 0 behind it belongs to the buffer
    for (std::size_t i = 0; i < kFieldCount; ++i) m_fields[i] = Field(i);
  }
  CForm(const CForm&) = delete;  // the fields point into it
  CForm& operator=(const CForm&) = delete;

  // Shows the form. True: accepted.
  bool Run(const DriverHost& host) {
    const DriverForm form = {"Simulator", m_fields.data(), static_cast<int>(kFieldCount), Check, this};
    return host.ShowForm(&form) == 1;
  }
  // The node with what the fields have.
  CNode Result() const {
    CNode node = m_node;
    node.record = RecordOf(m_fields.data());
    node.text1 = node.record.text1;
    return node;
  }

 private:
  static constexpr std::size_t kTextLength = 1000;  // bytes that can be typed at least

  void AddStatus(int status, const char* name) {
    m_statuses.push_back(status);
    m_statusNames.push_back(name);
  }
  DriverField Field(std::size_t index) {
    const auto& row = kFields[index];
    DriverField field = {row.name, row.help, row.kind, 0, row.high, nullptr, 0, 0, nullptr, 0};
    if (row.number) field.number = m_node.record.*row.number;
    if (row.kind == driverFieldText) {
      field.text = m_node.text1.data();
      field.textSize = static_cast<unsigned>(m_node.text1.size() + 1);
    } else if (row.kind == driverFieldChoice) {
      field.choices = m_statusNames.data();
      field.choiceCount = static_cast<int>(m_statusNames.size());
      field.number =
          static_cast<int>(std::ranges::find(m_statuses, m_node.record.value5) - m_statuses.begin());
    }
    return field;
  }
  // The settings with what fields, of this form or a copy, have.
  DriverRecord RecordOf(const DriverField* fields) const {
    DriverRecord record = m_node.record;
    for (std::size_t i = 0; i < kFieldCount; ++i) {
      if (kFields[i].kind == driverFieldText)
        record.text1 = fields[i].text;
      else if (kFields[i].kind == driverFieldChoice)
        record.*kFields[i].number = m_statuses[static_cast<std::size_t>(fields[i].number)];
      else
        record.*kFields[i].number = fields[i].number;
    }
    return record;
  }
  // What Open would say.
  static const char* Check(const DriverField* fields, int /*fieldCount*/, void* user) {
    auto& form = *static_cast<CForm*>(user);
    try {
      CSettings settings;
      form.m_fault = ReadSettings(form.RecordOf(fields), settings);
    } catch (const std::bad_alloc&) {
      return "There is no memory left.";
    }
    return form.m_fault.empty() ? nullptr : form.m_fault.c_str();
  }

  CNode m_node;
  std::vector<int> m_statuses;  // of the choices
  std::vector<const char*> m_statusNames;
  std::string m_otherStatus;  // of a node that has one which is not in the list
  std::array<DriverField, kFieldCount> m_fields = {};
  std::string m_fault;
};

}  // namespace

void SetHost(const DriverHost* host) { g_host = host; }

int ShowConfig(int isNew) {
  const DriverHost* host = g_host;
  if (!host || !host->ShowForm) return 0;
  try {
    CForm form(isNew == 1 ? NewNode() : g_node);
    if (!form.Run(*host)) return 0;
    g_node = form.Result();
    return 1;
  } catch (const std::bad_alloc&) {
    return 0;
  }
}

DriverRecord GetConfig() {
  DriverRecord record = g_node.record;
  record.plcType = kDriverId;
  record.text1 = g_node.text1.c_str();
  record.text2 = g_node.text2.c_str();
  return record;
}

void SetConfig(DriverRecord config) {
  try {
    g_node = {config, config.text1 ? config.text1 : "", config.text2 ? config.text2 : ""};
  } catch (const std::bad_alloc&) {
    g_node = {};  // rather than the settings of another node
  }
}

}  // namespace simulator
