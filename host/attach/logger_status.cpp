#include "host/attach/logger_status.h"

#include <algorithm>
#include <list>

#include "host/attach/feed_poll.h"
#include "host/common/shown_text.h"

namespace vastra {
namespace {

using Clock = std::chrono::steady_clock;
using Time = CFeedClient::Time;

constexpr std::chrono::seconds kLongestAnswer{2};
constexpr std::size_t kMostCauses = 20;
constexpr std::size_t kMostProblems = 50;
constexpr std::size_t kLongestText = 300;  // bytes
constexpr double kSoonest = 10;            // seconds that a sample may always be old

std::string Shown(const std::string& text) { return OneLine(Shortened(text.c_str(), kLongestText)); }

std::string Because(const std::string& reason) { return reason.empty() ? "" : ": " + Shown(reason); }

// One logger that is being asked.
class CQuestion {
 public:
  explicit CQuestion(const CLoggerPlace& place) : m_reader(place.feed, {{"counts"}}) {
    m_status.place = place;
  }

  CFeedClient& Reader() { return m_reader; }
  void Poll();
  // Whether the answer is complete, or there will be none.
  bool IsAnswered() const;
  CLoggerStatus Take();

 private:
  void Note(CHelloLine& line) { m_status.hello = std::move(line); }
  void Note(CStateLine& line) { m_status.state = std::move(line), m_hasState = true; }
  void Note(CCountsLine& line) { m_status.counts = std::move(line); }
  template <class T>
  void Note(T&) {}

  CFeedClient m_reader;
  CLoggerStatus m_status;
  bool m_hasState = false;
};

void CQuestion::Poll() {
  m_reader.Poll();
  while (std::optional<CFeedEvent> line = m_reader.Take()) {
    std::visit([this](auto& known) { Note(known); }, *line);
  }
}

bool CQuestion::IsAnswered() const {
  if (m_reader.HasEnded()) return true;
  const bool hasRun = m_status.state.state == "running" || m_status.state.state == "stopping";
  return m_hasState && (m_status.counts || !hasRun);
}

CLoggerStatus CQuestion::Take() {
  if (!m_hasState && m_reader.HasEnded())
    m_status.fault = m_reader.Fault();
  else if (!m_hasState)
    m_status.fault = "the logger has not answered for " + std::to_string(kLongestAnswer.count()) + " seconds";
  return std::move(m_status);
}

std::string Seconds(double seconds) {
  constexpr double kLongest = 1e12;
  return Counted(static_cast<std::uint64_t>(std::min(seconds, kLongest)), "second");
}

void AddStateProblems(const CLoggerStatus& status, std::vector<std::string>& problems) {
  const CStateLine& state = status.state;
  if (state.state != "running") problems.push_back("is " + Shown(state.state) + Because(state.reason));
  for (const auto* nodes : {&state.nodes, &state.writes})
    for (const CNodeFacts& node : *nodes)
      if (!node.up)
        problems.push_back("node " + Shown(node.name) + " is away" +
                           (nodes == &state.writes ? " for writing" : "") + Because(node.reason));
}

void AddSampleProblems(const CLoggerStatus& status, std::vector<std::string>& problems) {
  const CStateLine& state = status.state;
  const double limit = std::max(kSoonest, 3 * status.hello.period / 1000);
  if (!state.lastSampleAge)
    problems.push_back("has read no sample yet");
  else if (!(*state.lastSampleAge < limit))
    problems.push_back("the last sample is " + Seconds(*state.lastSampleAge) + " old, more than " +
                       Seconds(limit));
}

void AddLogProblems(const CLoggerStatus& status, std::vector<std::string>& problems) {
  if (!status.counts && !status.awaitsCounts && status.state.state == "running")
    problems.push_back("has sent no counts");
  const std::vector<CLedgerFacts> none, &ledger = status.counts ? status.counts->ledger : none;
  const std::vector<std::string> names = LedgerNames(ledger);
  for (std::size_t i = 0; i < ledger.size(); ++i)
    for (const auto& [cause, rows] : LossesOf(ledger[i].ledger))
      if (rows) problems.push_back(Counted(rows, "row") + " lost, " + Shown(names[i]) + Because(cause));
  for (const CUnsavedFacts& log : status.state.unsaved)
    problems.push_back("not saved: " + Shown(log.path) + Because(log.reason));
}

// The keys of the accounts in their configuration. An account at the end, of a journal that belongs to none
// of its outputs, continues the numbers.
std::vector<std::string> KeysOf(const std::vector<CLedgerFacts>& ledger) {
  std::vector<std::string> keys;
  keys.reserve(ledger.size());
  std::size_t counts[2] = {};
  for (const CLedgerFacts& entry : ledger)
    keys.push_back((entry.isSummary ? "summaries[" : "outputs[") + std::to_string(counts[entry.isSummary]++) +
                   "]");
  return keys;
}

}  // namespace

std::vector<std::string> LedgerNames(const std::vector<CLedgerFacts>& ledger) {
  std::vector<std::string> names = KeysOf(ledger);
  std::map<std::string, int> used;
  for (const std::string& key : names) used[key] = 2;  // a name that is a key is not used
  for (const CLedgerFacts& entry : ledger) ++used[Shown(entry.name)];
  for (std::size_t i = 0; i < names.size(); ++i)
    if (const std::string name = Shown(ledger[i].name); !name.empty() && used[name] == 1) names[i] = name;
  return names;
}

std::map<std::string, std::uint64_t> LossesOf(const CLogLedger& ledger) {
  std::map<std::string, std::uint64_t> losses;
  std::uint64_t rest = ledger.lost;
  for (const CLogLoss& loss : ledger.losses) {
    const std::string cause = Shown(loss.cause.Std());
    const std::uint64_t rows = std::min(loss.rows, rest);
    if (!losses.contains(cause) && losses.size() == kMostCauses) continue;
    losses[cause] += rows;
    rest -= rows;
  }
  losses[""] += rest;
  return losses;
}

std::vector<std::string> ProblemsOf(const CLoggerStatus& status) {
  if (!status.IsUp()) return {Shown(status.fault)};
  std::vector<std::string> problems;
  AddStateProblems(status, problems);
  AddSampleProblems(status, problems);
  AddLogProblems(status, problems);
  if (problems.size() <= kMostProblems) return problems;
  const std::size_t more = problems.size() - kMostProblems;
  problems.resize(kMostProblems);
  problems.push_back("and " + std::to_string(more) + " more");
  return problems;
}

std::vector<CLoggerStatus> AskLoggers(const std::vector<CLoggerPlace>& places, int stop) {
  const Time deadline = Clock::now() + kLongestAnswer;
  std::list<CQuestion> questions;
  for (const CLoggerPlace& place : places) questions.emplace_back(place);
  for (bool isStopped = false; !isStopped;) {
    std::vector<CFeedClient*> open;
    for (CQuestion& question : questions) {
      question.Poll();
      if (!question.IsAnswered()) open.push_back(&question.Reader());
    }
    if (open.empty() || Clock::now() >= deadline) break;
    isStopped = WaitForFeeds(open, {&stop, 1}, deadline);
  }
  std::vector<CLoggerStatus> all;
  for (CQuestion& question : questions) all.push_back(question.Take());
  for (CLoggerStatus& status : all) status.problems = ProblemsOf(status);
  return all;
}

}  // namespace vastra
