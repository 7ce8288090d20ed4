#include "host/desktop/value_rules.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <sstream>
#include <unordered_map>

#include "vastra/config/input_config.h"

namespace vastra {
namespace {

// Sizes from kSmall to below kLarge are written without an exponent: these texts fit into a column.
constexpr float kSmall = 1e-3F, kLarge = 1e10F;

constexpr std::chrono::milliseconds kShortestStale{2000};
constexpr int kStaleScans = 3;

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

// Removes the digits at the head of text and returns them without leading zeros.
std::string_view TakeNumber(std::string_view& text) {
  const std::size_t end = std::min(text.find_first_not_of("0123456789"), text.size());
  std::string_view digits = text.substr(0, end);
  text.remove_prefix(end);
  digits.remove_prefix(std::min(digits.find_first_not_of('0'), digits.size()));
  return digits;
}

int CompareNumbers(std::string_view& a, std::string_view& b) {
  const std::string_view left = TakeNumber(a), right = TakeNumber(b);
  if (left.size() != right.size()) return left.size() < right.size() ? -1 : 1;
  return left.compare(right);
}

int CompareBytes(std::string_view& a, std::string_view& b) {
  const auto left = static_cast<unsigned char>(Lower(a.front()));
  const auto right = static_cast<unsigned char>(Lower(b.front()));
  a.remove_prefix(1);
  b.remove_prefix(1);
  return left - right;
}

CString Whole(double number) { return CString(std::to_string(static_cast<std::int64_t>(number))); }

}  // namespace

std::vector<CValueNode> NodesOf(const CInputConfig& input) {
  std::vector<CValueNode> nodes;
  if (input.m_simulating) return nodes;
  for (const CPlcNodeConfig* node : input.m_plcNodes)
    nodes.push_back({node->m_nodeName, {node->m_varNames.begin(), node->m_varNames.end()}, node->m_aliveVar});
  return nodes;
}

std::vector<CValueOrigin> OriginsOf(const std::vector<CString>& names, const std::vector<CValueNode>& nodes) {
  std::unordered_map<std::string_view, std::vector<CValueOrigin>> places;  // of a name, the last one first
  for (int i = static_cast<int>(nodes.size()) - 1; i >= 0; --i) {
    const CValueNode& node = nodes[static_cast<std::size_t>(i)];
    if (!node.alive.IsEmpty()) places[node.alive.View()].push_back({i, false});
    std::for_each(node.variables.rbegin(), node.variables.rend(), [&](const CString& name) {
      places[name.View()].push_back({i, true});
    });
  }
  std::vector<CValueOrigin> origins(names.size());
  for (std::size_t i = 0; i < names.size(); ++i) {
    const auto found = places.find(names[i].View());
    if (found == places.end() || found->second.empty()) continue;
    origins[i] = found->second.back();
    found->second.pop_back();
  }
  return origins;
}

const CNodeState* StateOf(const std::vector<CValueNode>& nodes, int index,
                          const std::vector<CNodeState>& states) {
  if (index < 0) return nullptr;
  const auto place = static_cast<std::size_t>(index);
  const CString& name = nodes[place].name;
  if (place < states.size() && states[place].name == name) return &states[place];
  const auto found = std::ranges::find(states, name, &CNodeState::name);
  return found == states.end() ? nullptr : &*found;
}

CString ValueText(float value) {
  if (std::isnan(value)) return "nan";  // of either sign
  const float size = std::fabs(value);
  const bool isUsual = size == 0 || (size >= kSmall && size < kLarge);
  char text[64];
  const auto form = isUsual ? std::chars_format::fixed : std::chars_format::scientific;
  const char* end = std::to_chars(text, text + sizeof text, value, form).ptr;
  return {text, static_cast<std::size_t>(end - text)};
}

CString AgeText(double seconds) {
  struct CStep {
    double below, large;
    const char *largeUnit, *smallUnit;
    double small;
  };
  constexpr double kMinute = 60, kHour = 60 * kMinute, kDay = 24 * kHour;
  constexpr CStep kSteps[] = {{kHour, kMinute, " min ", " s", 1},
                              {kDay, kHour, " h ", " min", kMinute},
                              {std::numeric_limits<double>::infinity(), kDay, " d ", " h", kHour}};
  seconds = std::max(seconds, 0.0);
  CString text;
  if (seconds < 10) return text.Format("%.1f s", std::floor(seconds * 10) / 10), text;
  if (seconds < kMinute) return Whole(seconds) + " s";
  const CStep* step = kSteps;
  while (seconds >= step->below) ++step;
  const double large = std::floor(seconds / step->large);
  return Whole(large) + step->largeUnit + Whole((seconds - large * step->large) / step->small) +
         step->smallUnit;
}

EStale StalenessOf(bool isRunning, bool isAway, double seconds, std::chrono::milliseconds scanPeriod) {
  const std::chrono::duration<double> limit = std::max(kStaleScans * scanPeriod, kShortestStale);
  if (!isRunning) return EStale::stopped;
  if (isAway) return EStale::away;
  return seconds > limit.count() ? EStale::old : EStale::no;
}

const char* StaleText(EStale stale) {
  constexpr const char* kTexts[] = {"", "stale, ", "away, ", "stopped, "};
  return kTexts[static_cast<int>(stale)];
}

int CompareNatural(std::string_view a, std::string_view b) {
  std::string_view left = a, right = b;
  while (!left.empty() && !right.empty()) {
    const bool areNumbers = IsDigit(left.front()) && IsDigit(right.front());
    const int order = areNumbers ? CompareNumbers(left, right) : CompareBytes(left, right);
    if (order != 0) return order;
  }
  if (left.empty() != right.empty()) return left.empty() ? -1 : 1;
  return a.compare(b);
}

CWordSearch::CWordSearch(const std::string& foldedWords) {
  std::istringstream words(foldedWords);
  for (std::string word; words >> word;) m_words.push_back(word);
}

bool CWordSearch::Matches(std::string_view foldedText) const {
  return std::ranges::all_of(
      m_words, [&](const std::string& word) { return foldedText.find(word) != std::string_view::npos; });
}

}  // namespace vastra
