// The configuration of a logger on disk. The configuration file is the four bytes "VSTR", the version as u32
// and the blocks of the six objects, and nothing after them; the other form is JSON. The readers accept both
// and distinguish them by content.
//
// An operation that can fail returns an error message of one line, without the path, or an empty string.
#pragma once

#include "host/common/configuration.h"

namespace vastra {

// Reads either form, from a regular file of at most 64 MB. On a failure configuration does not change.
// root, if not empty, is absolute: relative paths of both forms are taken from there. Without root those in
// JSON are relative to the folder of the file.
CString LoadConfiguration(const CString& path, CConfiguration& configuration, const CString& root = {});
// The same for bytes in memory. Relative paths in JSON are relative to folder if root is empty.
CString ParseConfiguration(std::string bytes, const CString& folder, CConfiguration& configuration,
                           const CString& root = {});

// Writes the configuration file in the version of configuration. On a failure the file at path does
// not change.
CString SaveConfiguration(const CString& path, CConfiguration& configuration);
// The bytes of the configuration file.
std::string StoreConfiguration(CConfiguration& configuration);

// A line for each setting that a configuration file of the version of configuration cannot hold and that
// differs from its value after a load.
CStringArray LostInFile(CConfiguration& configuration);

}  // namespace vastra
