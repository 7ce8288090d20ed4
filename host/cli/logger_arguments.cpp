#include "host/cli/logger_arguments.h"

#include "host/cli/terminal/terminal.h"

namespace vastra {

CLoggerArguments::CLoggerArguments(CArguments& arguments)
    : m_run(arguments.OptionalFile("--dir", "DIR", "The folder with the feeds (default: /run/vastra)")),
      m_etc(arguments.OptionalFile("--etc", "DIR", "In place of /etc")) {
  arguments.Hide("--etc");
}

CLoggerFolders CLoggerArguments::Folders() const {
  CLoggerFolders folders;
  if (*m_run) folders.run = (*m_run)->path;
  if (*m_etc) folders.etc = (*m_etc)->path;
  return folders;
}

EExit CLoggerArguments::Check(const CString& name) {
  if (IsLoggerName(name)) return kDone;
  return Fail(kWrongUse, name, "is not the name of a logger, such as kiln for /etc/vastra/kiln.json");
}

}  // namespace vastra
