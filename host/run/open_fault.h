// Why a stage does not open, as a message for the user: it contains the key and the path, which the messages
// of the links do not contain.
#pragma once

#include "host/common/configuration.h"
#include "host/common/scan_loop.h"

namespace vastra {

// The first reason that can be found: the path of the key, the folder, file or driver, and what is wrong with
// it, such as "outputs[1].directory: /logs: No such file or directory". Empty if there is none: the messages
// of the links say why.
CString FindOpenFault(const CConfiguration& configuration, EStage stage);
// The same for the folders of one stage, "outputs", or of one entry of it, "outputs[1]".
CString FindFolderFault(const CConfiguration& configuration, const CString& key);
// Why the logs of an output cannot have their names.
CString FindNameFault(const CString& key, const COutputConfig& output);
inline CString FindNameFault(const CString&, const CSummaryConfig&) { return {}; }
// The same for one node of the PLC write stage. key: its path.
CString FindOpenFault(const CPlcSingleConfig& node, const CString& key);

// Whether a stage that does not open can open later, although the configuration stays as it is: a device, a
// folder or a log comes, or another process ends.
bool MayOpenLater(const CConfiguration& configuration, EStage stage);

// Returns why or, if it is empty, a reference to the messages of the links.
CString WhyNotOpened(const CString& why);

}  // namespace vastra
