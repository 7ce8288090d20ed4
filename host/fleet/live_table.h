// CLiveTable: a line about each logger of a fleet: on a terminal a table that is drawn each second, elsewhere
// a line for each message.
#pragma once

#include <map>

#include "host/attach/logger_status.h"
#include "host/fleet/fleet_view.h"
#include "host/fleet/live_gate.h"

namespace vastra {

class CLiveTable : public CFleetView {
 public:
  // isScreen: out is a terminal.
  CLiveTable(std::ostream& out, bool isScreen, CToldOnce& log)
      : m_out(out), m_isScreen(isScreen), m_log(log) {}

  void Hear(const CFleetLogger& logger, const CLiveMessage& message, Time now) override;
  void Tell(const std::string& line) override;
  void Turn(Time now) override;
  Time Due() const override { return m_due; }

 private:
  struct CSeen {
    CLiveContact contact;
    CLoggerStatus status;
    std::uint64_t sample = 0;   // its number
    std::optional<double> age;  // seconds, of the newest sample at aged
    Time aged{};
    bool isGoneTold = false;
  };
  using Key = std::tuple<std::string, std::string, std::string>;

  static constexpr std::size_t kMostLoggers = 5000;

  bool RemoveGone(Time now);
  static void Note(CSeen& seen, const CLiveMessage& message, Time now);
  static std::optional<double> Age(const CSeen& seen, Time now);
  static std::string Problem(CSeen& seen, Time now);
  static std::vector<std::string> Cells(const Key& key, CSeen& seen, Time now);
  void Draw(Time now);
  void PrintLine(const Key& key, CSeen& seen, Time now);

  std::ostream& m_out;
  const bool m_isScreen;
  CToldOnce& m_log;
  CLiveGate m_gate{kMostLoggers};
  std::map<Key, CSeen> m_loggers;
  std::string m_fault;  // the last one, on a screen
  Time m_faultTime{};
  Time m_due{};
};

}  // namespace vastra
