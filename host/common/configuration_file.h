// The configuration of a logger on disk. The configuration file is the four bytes "VSTR", the version as u32
// and the blocks of the six objects, with nothing behind them; the other form is JSON. Whoever reads takes
// both and tells them apart by content.
//
// An operation that can fail gives one line for the user, without the path, or an empty text for success.
#pragma once

#include "host/common/configuration.h"

namespace vastra {

// Reads either form. After a failure configuration is as it was.
CString LoadConfiguration(const CString& path, CConfiguration& configuration);
// The same for bytes in memory. Relative paths in JSON are taken from folder.
CString ParseConfiguration(std::string bytes, const CString& folder, CConfiguration& configuration);

// Writes the configuration file in the version of configuration. The file at path is replaced whole or stays
// as it was.
CString SaveConfiguration(const CString& path, CConfiguration& configuration);
// The bytes of the configuration file.
std::string StoreConfiguration(CConfiguration& configuration);

// A line for each setting of configuration that the configuration file in its version does not hold, because
// it has no place for it and it differs from what a load gives.
CStringArray LostInFile(CConfiguration& configuration);

}  // namespace vastra
