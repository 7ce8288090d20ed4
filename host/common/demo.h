// The demo: a configuration with three nodes of the simulator that shows what a logger can do, and the
// folders for its logs.
#pragma once

#include <string>

#include "vastra/platform/string.h"

namespace vastra {

extern const char* const kDemoConfiguration;  // JSON; its paths are relative

constexpr const char* kDemoFile = "demo.json";

// Makes folder and the log folders in it. Returns an error message of one line, or an empty string.
CString MakeDemoFolders(const CString& folder);
// Writes the configuration to path, unless the file exists; isChanged then says whether it differs from what
// the demo writes. Returns the same as MakeDemoFolders.
CString SaveDemo(const CString& path, bool& isChanged);

// The configuration to start a service from, as JSON with relative paths: that of the demo with a sample each
// second or, if host is not empty, one that reads the Modbus device at host.
std::string ExampleConfiguration(const CString& host);
// Writes text to a new file at path. Returns the same as MakeDemoFolders; a file that is there stays.
CString WriteNewFile(const CString& path, const std::string& text);

}  // namespace vastra
