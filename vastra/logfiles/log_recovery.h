// Recovery of journals whose output or summary is not open. That of the others is a part of CLogTrack.
#pragma once

#include <vector>

#include "vastra/logfiles/log_keeper.h"

namespace vastra {

class CKeeperState;

// Makes logs of the journals in the folders of the open tracks that belong to none of them and that no
// process has open. Returns a line for each output or summary; listener, if not null, gets the logs.
std::vector<CKeeperLine> RecoverForeignJournals(CKeeperState& keeper, CLogListener* listener);
// The same for what has happened to these logs since.
std::vector<CKeeperLine> DeliverForeign(CKeeperState& keeper, CLogListener* listener);

}  // namespace vastra
