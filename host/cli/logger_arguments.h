// The arguments that name loggers of this machine: --dir, and the hidden --etc.
#pragma once

#include "host/attach/find_loggers.h"
#include "host/cli/arguments.h"
#include "host/cli/exit.h"

namespace vastra {

class CLoggerArguments {
 public:
  explicit CLoggerArguments(CArguments& arguments);

  CLoggerFolders Folders() const;
  // Refuses a name that no logger can have, with a message.
  static EExit Check(const CString& name);

 private:
  CArgument<std::optional<CFileArgument>> m_run, m_etc;
};

}  // namespace vastra
