// watch --attach: the table of watch, of a logger that runs as another process.
#pragma once

#include "host/attach/find_loggers.h"
#include "host/cli/watch_view.h"

namespace vastra {

// Shows the logger until a signal or the key q. A logger that goes away is waited for. kDone; kFailed if it
// is not there at the start or standard output cannot be written; kWrongUse for a variable that it does not
// have.
EExit WatchLogger(const CLoggerPlace& place, const CStringArray& variables);

}  // namespace vastra
