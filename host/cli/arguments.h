// CArguments: what one command takes from the command line. A command declares its arguments here and gets a
// place for the value of each, which is filled when the line has been read. No command sees the library that
// reads the line.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "vastra/platform/string.h"

namespace CLI {
class App;
}

namespace vastra {

// A file or folder: as it was typed, for the user's eyes, and as the program uses it. The second is absolute,
// since the search for driver modules changes the current directory.
struct CFileArgument {
  CString typed;
  CString path;
};

CFileArgument ToFile(const CString& typed);

// Where the value of an argument is found once the line has been read.
template <class T>
using CArgument = std::shared_ptr<T>;
using CNumber = std::optional<std::int64_t>;

class CArguments {
 public:
  // command is what the library knows the command by; it outlives this object.
  explicit CArguments(CLI::App& command) : m_command(command) {}

  // What must be given, by its place on the line.
  CArgument<CString> Text(const char* name, const char* words);
  CArgument<CFileArgument> File(const char* name, const char* words);
  CArgument<std::vector<CFileArgument>> Files(const char* name, const char* words);  // one or more

  // What can be given, by name: without a value, with one, with one that may come again.
  CArgument<bool> Flag(const char* name, const char* words);
  CArgument<CNumber> Number(const char* name, const char* value, const char* words, std::int64_t lowest,
                            std::int64_t highest);
  CArgument<std::optional<CFileArgument>> OptionalFile(const char* name, const char* value,
                                                       const char* words);
  CArgument<std::vector<CString>> Texts(const char* name, const char* value, const char* words);

  // first and second cannot both be given.
  void Exclude(const char* first, const char* second);

 private:
  CLI::App& m_command;
};

}  // namespace vastra
