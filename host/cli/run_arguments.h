// The arguments that run and watch share.
#pragma once

#include "host/cli/arguments.h"
#include "host/cli/session.h"

namespace vastra {

class CRunArguments {
 public:
  explicit CRunArguments(CArguments& arguments);

  const CFileArgument& File() const { return *m_file; }
  // Sets the terminal up, reads the configuration and runs it; see RunSession.
  EExit Run(CSessionView& view, CSessionResult& result) const;

 private:
  CSessionOptions Options() const;

  CArgument<CFileArgument> m_file;
  CArgument<CNumber> m_scans, m_period, m_node;
  CArgument<bool> m_threaded, m_debug, m_quiet;
};

}  // namespace vastra
