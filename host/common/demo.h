// The demo: a configuration with three nodes of the simulator that shows what a logger can do, and the
// folders for its logs.
#pragma once

#include "vastra/platform/string.h"

namespace vastra {

extern const char* const kDemoConfiguration;  // JSON; its paths are relative

constexpr const char* kDemoFile = "demo.json";

// Makes folder and those of the logs in it. Gives one line that says what is wrong, or an empty text.
CString MakeDemoFolders(const CString& folder);
// Writes the configuration to path. A file that is there already stays; isChanged then says that it is no
// longer what an earlier demo has written. As MakeDemoFolders.
CString SaveDemo(const CString& path, bool& isChanged);

}  // namespace vastra
