#include "host/desktop/help_rules.h"

#include <algorithm>
#include <cctype>

namespace vastra {
namespace {

constexpr const char *kGuide = "desktop-guide.md", *kEquationsPage = "equations.md";

constexpr CHelpPlace kHelpPlaces[] = {
    {"Vastra", kGuide, "The state of the plant"},
    {"* - Vastra", kGuide, "The state of the plant"},
    {"New Logger", kGuide, "A first logger by the assistant"},
    {"Input", kGuide, "Input: where the samples come from"},
    {"Node", kGuide, "Input: where the samples come from"},
    {"Output", kGuide, "Output: the logs"},
    {"Summary", kGuide, "Summary: a row each hour"},
    {"Tarvex", kGuide, "Tarvex: variables for logic of your own"},
    {"Plc Write", kGuide, "Plc Write: back to the PLC"},
    {"Equations", kEquationsPage, ""},
    {"Equation Editor", kGuide, "The equation editor"},
    {"Trending", kGuide, "Curves"},
    {"Scan Screen", kGuide, "Numbers"},
    {"Configuration", kGuide, "A variable of your own"},  // of a view; the sheet has the titles of its pages
    {"Messages", kGuide, "When it does not start"},
    {"Check", kGuide, "When it does not start"},
    {"Console Configuration", kGuide, "When it does not start"},
    {"New Logger", kGuide, "A first logger by the assistant"},
    {"Check", kGuide, "When it does not start"},
    {"Message Log", kGuide, "The message log"},
    {"Values", kGuide, "All values"},
    {"Chart", kGuide, "Charts"},
    {"* - Chart", kGuide, "Charts"},
    {"History of *", kGuide, "Charts"},
    {"Values of *", kGuide, "All values"},
    {"Axis", kGuide, "Axes"},
    {"Report", kGuide, "The report"},
    {"Attach", kGuide, "A logger that runs elsewhere"},
    {"* (attached)", kGuide, "A logger that runs elsewhere"},
};

bool IsTitle(std::string_view pattern, std::string_view title) {
  if (pattern.back() == '*') return title.starts_with(pattern.substr(0, pattern.size() - 1));
  return pattern.front() == '*' ? title.ends_with(pattern.substr(1)) : title == pattern;
}

}  // namespace

std::span<const CHelpPlace> HelpPlaces() { return kHelpPlaces; }

const CHelpPlace* HelpPlaceOf(std::string_view title) {
  const auto* found =
      std::ranges::find_if(kHelpPlaces, [&](const CHelpPlace& place) { return IsTitle(place.title, title); });
  return found == std::end(kHelpPlaces) ? nullptr : found;
}

std::string AnchorOf(std::string_view heading) {
  std::string anchor;
  for (const char letter : heading) {
    const auto code = static_cast<unsigned char>(letter);
    if (letter == ' ')
      anchor += '-';
    else if (std::isalnum(code) || letter == '-' || letter == '_' || code >= 0x80)
      anchor += static_cast<char>(std::tolower(code));
  }
  return anchor;
}

}  // namespace vastra
