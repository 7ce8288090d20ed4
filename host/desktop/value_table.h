// CValueTable: the rows of the window of values, without Qt. It looks at a logger through its live state and
// the statistics of its samples, so that the logger can be a run of this process or one that is attached.
// A text is made only when it is asked for: a look at 10,000 variables copies numbers.
//
// A variable is an index into the names of the samples; a row is a place in the sorted and searched table.
#pragma once

#include "host/common/configuration.h"
#include "host/desktop/value_rules.h"
#include "host/desktop/value_statistics.h"

namespace vastra {

// A logger, as the table looks at it.
struct CValueSource {
  std::shared_ptr<const CLiveState> live;  // null: none
  CValueStatistics* statistics = nullptr;  // exists as long as the table uses it
  std::vector<CString> names;              // before the first start; then those of live
  std::vector<CValueNode> nodes;
  std::chrono::milliseconds period{};  // of the scans; 0: as fast as possible
  CVariableNotes notes = {};
};

class CValueTable {
 public:
  enum EColumn {
    columnName,
    columnNode,
    columnValue,
    columnUnit,
    columnMin,
    columnMax,
    columnMean,
    columnAge,
    columns
  };
  // What a look has changed: nothing, only texts, or the variables, which are sorted and searched again.
  enum class EChange { none, texts, variables };
  using Time = std::chrono::steady_clock::time_point;
  static constexpr int kUnsorted = -1;  // a column: the variables are in the order of the samples

  explicit CValueTable(CWordSearch::Fold fold) : m_fold(std::move(fold)) {}

  // The next look is at source.
  void SetSource(CValueSource source);
  // Copies what the logger has now.
  EChange Look(Time now, const _timeb& clock);
  void Reset();  // min, max and mean begin again

  int Variables() const { return static_cast<int>(m_names.size()); }
  const std::vector<int>& Order() const { return m_order; }  // of each row its variable
  CString Text(int variable, int column) const;
  bool IsStale(int variable) const { return HasValues() && StaleOf(variable) != EStale::no; }
  // More about a variable, in lines: its comment, why its node is away, how many values min, max and mean
  // have.
  CString Hint(int variable) const;

  void SetSort(int column, bool isDescending) { m_column = column, m_isDescending = isDescending; }
  // Whether the order changes with the values.
  bool IsSortedByValues() const { return m_column >= columnValue && m_column != columnUnit; }
  void SetSearch(const CString& words) { m_search = CWordSearch(m_fold(words)); }
  // The order by the present sort and search, which the caller then sets.
  std::vector<int> Sorted() const;
  void SetOrder(std::vector<int> order) { m_order = std::move(order); }

 private:
  bool TakeNames();
  void RankNames();
  void LookAtNodes(const _timeb& clock);
  bool HasValues() const { return m_newest.samples > 0; }
  const CValueRange& RangeOf(int variable) const;
  double AwayFor(int variable) const;
  double Age(int variable) const;
  EStale StaleOf(int variable) const;
  double Number(int variable, int column) const;
  CString NodeName(int variable) const;
  const CVariableNote* NoteOf(int variable) const;
  CString Unit(int variable) const;
  CString NodeHint(int variable) const;
  bool Precedes(int a, int b, const std::vector<double>& numbers) const;

  const CWordSearch::Fold m_fold;
  CValueSource m_source;
  CLiveNewest m_newest, m_next;  // the last look, and the buffer of the next one
  CValueStatistics::CResults m_results;
  std::vector<CString> m_names;
  std::vector<CValueNode> m_nodes;  // of m_names
  std::vector<CValueOrigin> m_origins;
  std::vector<std::string> m_keys;  // folded name and node
  // Of each variable its place in the order of names, nodes and units.
  std::vector<int> m_nameRanks, m_nodeRanks, m_unitRanks;
  std::shared_ptr<const std::vector<CString>> m_seen, m_seenRanges;  // the names that were compared last
  bool m_isNewSource = true, m_hasNewNotes = false;
  bool m_hasRanges = false;       // m_results is of these names
  std::vector<double> m_awayFor;  // of each node, in seconds; negative: it answers
  double m_age = 0;               // of the sample, in seconds
  Time m_changed{};               // when the last change was returned
  int m_column = columnName;
  bool m_isDescending = false;
  CWordSearch m_search;
  std::vector<int> m_order;
};

}  // namespace vastra
