// Why a stage does not open, in the words of a user: the links name no key and no path.
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
// The same for one node of the PLC write stage. key: its path.
CString FindOpenFault(const CPlcSingleConfig& node, const CString& key);

// why, or where to look if it is empty.
CString WhyNotOpened(const CString& why);

}  // namespace vastra
