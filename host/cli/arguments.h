// CArguments: the arguments of one command. A command declares each argument and gets a place for its value,
// which is filled when the command line has been parsed. Commands do not depend on the library that parses
// it.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "vastra/platform/string.h"

namespace CLI {
class App;
}

namespace vastra {

// A file or folder, as it was typed, for messages, and as an absolute path, for the program: the search for
// driver modules changes the current directory.
struct CFileArgument {
  CString typed;
  CString path;
};

CFileArgument ToFile(const CString& typed);

// The value of an argument, once the command line has been parsed.
template <class T>
using CArgument = std::shared_ptr<T>;
using CNumber = std::optional<std::int64_t>;

class CArguments {
 public:
  // command: of the parsing library; it must outlive this object.
  explicit CArguments(CLI::App& command) : m_command(command) {}

  // Required arguments, by position.
  CArgument<CString> Text(const char* name, const char* help);
  CArgument<CString> Choice(const char* choices,
                            const char* help);  // one of several words, with bars between
  CArgument<CFileArgument> File(const char* name, const char* help);
  CArgument<std::vector<CFileArgument>> Files(const char* name, const char* help);  // one or more

  // Optional arguments after them, any number.
  CArgument<std::vector<CString>> OptionalTexts(const char* name, const char* help);

  // Options: without a value, with a value, with a value and repeatable.
  CArgument<bool> Flag(const char* name, const char* help);
  CArgument<CNumber> Number(const char* name, const char* value, const char* help, std::int64_t lowest,
                            std::int64_t highest);
  // A number of seconds, with decimals.
  CArgument<std::optional<double>> Seconds(const char* name, const char* help, double highest);
  CArgument<std::optional<CFileArgument>> OptionalFile(const char* name, const char* value, const char* help);
  CArgument<std::optional<CString>> OptionalText(const char* name, const char* value, const char* help);
  CArgument<std::vector<CString>> Texts(const char* name, const char* value, const char* help);

  // Refuses a command line that has both first and second.
  void Exclude(const char* first, const char* second);
  // Refuses a command line that has option without needed.
  void Need(const char* option, const char* needed);
  // The argument by position is no longer required; option, in its place, excludes it and all options that
  // are not companions.
  void MakeAlternative(const char* argument, const char* option,
                       std::initializer_list<std::string_view> companions);
  // Leaves an option out of the help.
  void Hide(const char* option);

 private:
  CLI::App& m_command;
};

}  // namespace vastra
