// Which part of the guide explains a window.
#pragma once

#include <span>

#include "vastra/platform/string.h"

namespace vastra {

struct CHelpPlace {
  const char* title;    // of the window or of its page; "*" at one end stands for any characters
  const char* page;     // a file in docs/
  const char* heading;  // there; empty: the begin of the page
};

std::span<const CHelpPlace> HelpPlaces();
// Null: the window has no part of its own.
const CHelpPlace* HelpPlaceOf(std::string_view title);

// The anchor of a heading in a link: "From an empty sheet" is from-an-empty-sheet.
std::string AnchorOf(std::string_view heading);

}  // namespace vastra
