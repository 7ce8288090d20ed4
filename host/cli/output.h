// Standard output, where the data of a command goes. A disk that is full or a reader that has gone is a
// failure of the command.
#pragma once

#include <functional>
#include <string>

#include "host/cli/exit.h"
#include "vastra/platform/file.h"

namespace vastra {

// Lets write fill standard output. kDone, or kFailed after telling why it could not be written.
EExit PrintData(const std::function<void(CFile&)>& write);
EExit PrintData(const std::string& text);

}  // namespace vastra
