// What is known of one logger: what its feed has said, ready to be answered. It has no lock of its own: the
// board that it is on has one.
#pragma once

#include <chrono>

#include "host/web/logger_json.h"
#include "host/web/text_ring.h"

namespace vastra {

class CLoggerRecord {
 public:
  using Time = std::chrono::steady_clock::time_point;

  static constexpr std::size_t kMostMessages = 500;
  static constexpr std::size_t kLongestMessage = 4096;  // bytes; the rest of a text is cut

  explicit CLoggerRecord(const CLoggerPlace& place);

  // A line of the feed, out of which it may move.
  void Note(CFeedEvent& event, Time now);
  // The connection has ended.
  void Fail(const std::string& fault);

  const std::string& Name() const { return m_name; }
  // Whether it has ever said what it logs.
  bool HasAnswered() const { return m_hasAnswered; }
  // The present state, without its problems. The variables are not in its hello.
  CLoggerStatus Status(Time now) const;
  const CTextPtr& Variables() const { return m_variablesText; }
  const std::vector<std::string>& VariableNames() const { return m_variables->names; }
  const CTextPtr& Sample() const { return m_sample; }  // null before the first one
  // The messages have numbers of their own, which go on when the logger starts again.
  const CTextRing& Messages() const { return m_messages; }
  const CTextRing& Logs() const { return m_logs; }
  // The absolute folders of the outputs and summaries, each once.
  std::vector<std::string> Folders() const;

 private:
  void Note(CHelloLine& hello);
  void Note(CStateLine& state);
  void Note(CSampleLine& sample);
  void Note(CCountsLine& counts) { m_status.counts = std::move(counts); }
  void Note(CMessageLine& message);
  void Note(CLogLine& log);
  template <class T>
  void Note(T&) {}  // the numbers of the messages tell which are missing
  void TakeVariables(CHelloLine& hello);

  const std::string m_name;
  CLoggerStatus m_status;
  bool m_hasAnswered = false;
  Time m_now{};           // of the line
  Time m_runningSince{};  // when the counts began to be due
  std::optional<_timeb> m_lastSample;
  double m_lastAge = 0;  // of the last sample, at m_lastHeard
  Time m_lastHeard{};
  std::shared_ptr<const CSampleVariables> m_variables;
  CTextPtr m_variablesText, m_sample;
  CTextRing m_messages, m_logs;
  std::optional<std::uint64_t> m_lastMessage;  // the number that the process gave to it
};

}  // namespace vastra
