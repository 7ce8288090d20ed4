// The scripts that complete a command line in a shell. Each is made from the declarations of the commands.
#pragma once

#include <string>
#include <vector>

#include "host/cli/command_facts.h"

namespace vastra {

// The folder with a folder for each logger that runs as a service.
inline constexpr const char* kLoggersFolder = "/run/vastra";

// commands: those that are offered.
std::string BashCompletion(const CCommandFacts& program, const std::vector<CCommandFacts>& commands);
std::string ZshCompletion(const CCommandFacts& program, const std::vector<CCommandFacts>& commands);
std::string FishCompletion(const CCommandFacts& program, const std::vector<CCommandFacts>& commands);

// text as one word of a shell, in single quotes.
std::string ShellQuoted(const std::string& text);

// words with separator between them.
std::string Joined(const std::vector<std::string>& words, const char* separator);

}  // namespace vastra
