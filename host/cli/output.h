// Standard output, where the data of a command goes. Data in a pipe or a file is byte for byte; a terminal
// gets it without control characters.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "host/cli/exit.h"
#include "vastra/platform/file.h"

namespace vastra {

// Data for other programs, such as JSON and CSV. Calls write with standard output. Returns kDone, or kFailed
// after a message that says why the output cannot be written. A reader that has closed the pipe needs no
// message.
EExit PrintData(const std::function<void(CFile&)>& write);
EExit PrintData(const std::string& text);

// Text for people, line by line: control characters in a line are shown as "?", in a pipe or a file too. A
// name with a line feed stays on its line.
EExit PrintLines(const std::vector<std::string>& lines);

}  // namespace vastra
