#include "host/desktop/value_table.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

namespace vastra {
namespace {

constexpr std::chrono::milliseconds kAgeStep{1000};  // ages are shown again without a new sample
constexpr CValueRange kNoValues;

template <class T>
const T& At(const std::vector<T>& items, int index) {
  return items[static_cast<std::size_t>(index)];
}

double SecondsBetween(const _timeb& from, const _timeb& to) {
  return static_cast<double>(to.time) - from.time + (to.millitm - from.millitm) / 1000.0;
}

// In local time.
CString MomentText(const _timeb& time) {
  const std::tm local = CTime(time.time).GetLocalTm();
  char text[64];
  return {text, std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &local)};
}

// The place of each item in the natural order of keys. Equal keys have equal places.
std::vector<int> RanksOf(const std::vector<std::string>& keys) {
  std::vector<int> order(keys.size()), ranks(keys.size());
  std::iota(order.begin(), order.end(), 0);
  const auto compare = [&](int a, int b) { return CompareNatural(At(keys, a), At(keys, b)); };
  std::ranges::stable_sort(order, [&](int a, int b) { return compare(a, b) < 0; });
  for (std::size_t i = 1; i < order.size(); ++i)
    ranks[static_cast<std::size_t>(order[i])] =
        At(ranks, order[i - 1]) + (compare(order[i - 1], order[i]) != 0 ? 1 : 0);
  return ranks;
}

}  // namespace

void CValueTable::SetSource(CValueSource source) {
  m_hasNewNotes = m_hasNewNotes || source.notes != m_source.notes;
  m_source = std::move(source);
  m_newest = {};
  m_next = {};
  m_isNewSource = true;
}

CValueTable::EChange CValueTable::Look(Time now, const _timeb& clock) {
  if (m_source.live && !m_source.live->CopyNewest(m_next)) return EChange::none;
  std::swap(m_newest, m_next);
  const bool wasRunning = m_results.isRunning;
  const std::uint64_t resets = m_results.resets;
  if (m_source.statistics) m_source.statistics->Copy(m_results);
  const bool isNew = TakeNames();
  m_age = std::chrono::duration<double>(now - m_newest.read).count();
  LookAtNodes(clock);
  const bool isChanged = m_newest.number != m_next.number || m_newest.nodes != m_next.nodes ||
                         wasRunning != m_results.isRunning || resets != m_results.resets;
  if (!isNew && !isChanged && now < m_changed + kAgeStep) return EChange::none;
  m_changed = now;
  return isNew ? EChange::variables : EChange::texts;
}

// Whether names or nodes differ from those of the last look. Names are compared only when they were replaced.
bool CValueTable::TakeNames() {
  const auto& live = m_newest.names;
  bool isNew = false;
  if (m_isNewSource || live != m_seen) {
    const std::vector<CString>& names = live ? *live : m_source.names;
    isNew = names != m_names || m_source.nodes != m_nodes || std::exchange(m_hasNewNotes, false);
    if (isNew) m_names = names, m_nodes = m_source.nodes, RankNames();
  }
  if (m_isNewSource || live != m_seen || m_results.names != m_seenRanges)
    m_hasRanges = live && m_results.names && *m_results.names == m_names;
  m_isNewSource = false;
  m_seen = live;
  m_seenRanges = m_results.names;
  return isNew;
}

void CValueTable::RankNames() {
  m_origins = OriginsOf(m_names, m_nodes);
  std::vector<std::string> names, nodes, units;
  m_keys.clear();
  for (int i = 0; i < Variables(); ++i) {
    names.push_back(m_fold(At(m_names, i)));
    nodes.push_back(m_fold(NodeName(i)));
    units.push_back(m_fold(Unit(i)));
    m_keys.push_back(names.back() + '\n' + nodes.back());
  }
  m_nameRanks = RanksOf(names);
  m_nodeRanks = RanksOf(nodes);
  m_unitRanks = RanksOf(units);
}

void CValueTable::LookAtNodes(const _timeb& clock) {
  m_awayFor.assign(m_nodes.size(), -1);
  if (!m_newest.nodes) return;
  for (std::size_t i = 0; i < m_nodes.size(); ++i) {
    const CNodeState* state = StateOf(m_nodes, static_cast<int>(i), *m_newest.nodes);
    if (state && !state->isUp) m_awayFor[i] = std::max(SecondsBetween(state->since, clock), 0.0);
  }
}

void CValueTable::Reset() {
  if (m_source.statistics) m_source.statistics->Reset();
}

const CValueRange& CValueTable::RangeOf(int variable) const {
  return m_hasRanges ? At(m_results.ranges, variable) : kNoValues;
}

CString CValueTable::NodeName(int variable) const {
  const int node = At(m_origins, variable).node;
  return node < 0 ? CString() : At(m_nodes, node).name;
}

const CVariableNote* CValueTable::NoteOf(int variable) const {
  const auto found = m_source.notes.find(At(m_names, variable));
  return found == m_source.notes.end() ? nullptr : &found->second;
}

CString CValueTable::Unit(int variable) const {
  const CVariableNote* note = NoteOf(variable);
  return note ? note->m_unit : CString();
}

double CValueTable::AwayFor(int variable) const {
  const CValueOrigin& origin = At(m_origins, variable);
  return origin.isHeld ? At(m_awayFor, origin.node) : -1;
}

double CValueTable::Age(int variable) const { return std::max(m_age, AwayFor(variable)); }

EStale CValueTable::StaleOf(int variable) const {
  return StalenessOf(m_results.isRunning, AwayFor(variable) >= 0, m_age, m_source.period);
}

// NaN if there is no number.
double CValueTable::Number(int variable, int column) const {
  constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
  const CValueRange& range = RangeOf(variable);
  switch (column) {
    case columnValue:
      return HasValues() ? static_cast<double>(At(m_newest.values, variable)) : kNone;
    case columnMin:
      return range.count ? static_cast<double>(range.min) : kNone;
    case columnMax:
      return range.count ? static_cast<double>(range.max) : kNone;
    case columnMean:
      return range.Mean();
    default:
      return HasValues() ? Age(variable) : kNone;
  }
}

CString CValueTable::Text(int variable, int column) const {
  if (column == columnName) return At(m_names, variable);
  if (column == columnNode) return NodeName(variable);
  if (column == columnUnit) return Unit(variable);
  const bool isOfSample = column == columnValue || column == columnAge;
  if (isOfSample ? !HasValues() : RangeOf(variable).count == 0) return {};
  const double number = Number(variable, column);
  return column == columnAge ? StaleText(StaleOf(variable)) + AgeText(number)
                             : ValueText(static_cast<float>(number));
}

CString CValueTable::NodeHint(int variable) const {
  if (!m_newest.nodes || AwayFor(variable) < 0) return {};
  const CNodeState* state = StateOf(m_nodes, At(m_origins, variable).node, *m_newest.nodes);
  if (!state) return {};
  CString hint = "\n" + state->name + " is away since " + MomentText(state->since);
  if (!state->reason.IsEmpty()) hint += ": " + state->reason;
  if (state->next) hint += "\nNext attempt: " + MomentText(*state->next);
  return hint;
}

CString CValueTable::Hint(int variable) const {
  CString hint = At(m_names, variable);
  const CVariableNote* note = NoteOf(variable);
  if (note && !note->m_comment.IsEmpty()) hint += ": " + note->m_comment;
  hint += NodeHint(variable);
  if (m_hasRanges)
    hint += "\nMin, max and mean of " + CString(std::to_string(RangeOf(variable).count)) + " values since " +
            MomentText(m_results.since);
  return hint;
}

// What is not a number comes last in both directions; what is equal is in the order of names.
bool CValueTable::Precedes(int a, int b, const std::vector<double>& numbers) const {
  const double left = At(numbers, a), right = At(numbers, b);
  if (std::isnan(left) != std::isnan(right)) return std::isnan(right);
  if (left < right || left > right) return m_isDescending ? left > right : left < right;
  return At(m_nameRanks, a) < At(m_nameRanks, b);
}

std::vector<int> CValueTable::Sorted() const {
  std::vector<int> order;
  for (int i = 0; i < Variables(); ++i)
    if (m_search.Matches(At(m_keys, i))) order.push_back(i);
  if (m_column == kUnsorted) return order;
  std::vector<double> numbers(m_names.size());
  for (const int i : order) {
    double& number = numbers[static_cast<std::size_t>(i)];
    if (m_column == columnName)
      number = At(m_nameRanks, i);
    else if (m_column == columnNode)
      number = At(m_nodeRanks, i);
    else
      number = m_column == columnUnit ? At(m_unitRanks, i) : Number(i, m_column);
  }
  std::ranges::stable_sort(order, [&](int a, int b) { return Precedes(a, b, numbers); });
  return order;
}

}  // namespace vastra
