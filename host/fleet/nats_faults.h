// What the servers and their library say when something fails, in the words of this program.
#pragma once

#include <string>

namespace vastra {

// The text without its place in the library's source, followed by what to do about it if that is known.
// Subjects of a permission are cut to what they have in common, so that a line says it for all files.
std::string FaultWords(std::string text);

constexpr const char* kDenied = "Permissions Violation";  // the beginning of the server's words
constexpr const char* kDeniedToHear = "Permissions Violation for Subscription";

}  // namespace vastra
