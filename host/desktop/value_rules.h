// What the table of values says of a variable: its node, its texts, and whether its value is stale.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "host/run/live_state.h"

namespace vastra {

class CInputConfig;

// A node that is read, and its variables as the samples name them.
struct CValueNode {
  CString name;
  std::vector<CString> variables;
  CString alive;  // the variable that is 0 while the node is away; empty: none

  bool operator==(const CValueNode&) const = default;
};

// The nodes of an input; none for a replay.
std::vector<CValueNode> NodesOf(const CInputConfig& input);

// Where a variable comes from.
struct CValueOrigin {
  int node = -1;        // index of its node; -1: none, for example of a computed variable
  bool isHeld = false;  // its value is not measured while the node is away; false for the alive variable
};

// One for each of names. Equal names of several nodes are taken in the order of the nodes.
std::vector<CValueOrigin> OriginsOf(const std::vector<CString>& names, const std::vector<CValueNode>& nodes);

// The state of the node at index, or null. Nodes with equal names are told apart by their index.
const CNodeState* StateOf(const std::vector<CValueNode>& nodes, int index,
                          const std::vector<CNodeState>& states);

// The shortest digits that are this float, without an exponent if it is a usual size; "nan", "inf", "-inf".
CString ValueText(float value);

// How old a value is, in steps that can be read: "0.4 s", "12 s", "3 min 5 s", "2 h 7 min", "4 d 3 h".
CString AgeText(double seconds);

// Why a value is not the present one.
enum class EStale { no, old, away, stopped };

// seconds: the age of the sample.
EStale StalenessOf(bool isRunning, bool isAway, double seconds, std::chrono::milliseconds scanPeriod);

// What is in front of the age: "stale, ", "away, ", "stopped, " or nothing.
const char* StaleText(EStale stale);

// Compares texts as people order them: numbers inside by their value, so that "T2" is before "T10". Negative,
// 0 or positive; 0 only for equal bytes.
int CompareNatural(std::string_view a, std::string_view b);

// A search by words; a text matches if it contains all of them.
class CWordSearch {
 public:
  // fold: what makes upper and lower case equal.
  using Fold = std::function<std::string(const CString&)>;

  explicit CWordSearch(const std::string& foldedWords = {});
  bool Matches(std::string_view foldedText) const;

 private:
  std::vector<std::string> m_words;
};

}  // namespace vastra
