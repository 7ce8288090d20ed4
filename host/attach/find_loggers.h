// Which loggers there are on this machine: those that have a feed, and those that should have one.
#pragma once

#include <vector>

#include "vastra/platform/string.h"

namespace vastra {

// The name of a logger is that of its configuration file and of a folder: it is not empty, has no slash and
// no control character, does not begin with a dot and has at most 200 bytes.
bool IsLoggerName(const CString& name);

struct CLoggerFolders {
  CString run = "/run/vastra";        // with a folder for each logger
  CString etc = "/etc";               // with the configurations and the enabled units
  CString state = "/var/lib/vastra";  // with a folder for each logger, where the relative paths begin
};

struct CLoggerPlace {
  CString name;
  CString feed;  // the path of its socket
};
CLoggerPlace PlaceOfLogger(const CLoggerFolders& folders, const CString& name);

// All loggers, by the bytes of their names: each folder of folders.run with a feed, each configuration in
// etc/vastra, each unit that is enabled. fault: why one of the places cannot be searched, if it is there;
// empty otherwise.
std::vector<CLoggerPlace> FindLoggers(const CLoggerFolders& folders, CString& fault);

}  // namespace vastra
