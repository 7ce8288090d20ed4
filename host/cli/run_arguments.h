// The arguments that run and watch share.
#pragma once

#include "host/cli/arguments.h"
#include "host/cli/driver_folders.h"
#include "host/cli/session.h"

namespace vastra {

// --plain, of run, watch, demo and check.
CArgument<bool> DeclarePlain(CArguments& arguments);

// What run alone can be asked for.
struct CServiceRequest {
  bool isService = false;  // see CSessionOptions::load; lines for the journal, if standard error leads to it
  bool retries = false;
  CString root = {};  // see LoadConfiguration
};

class CRunArguments {
 public:
  explicit CRunArguments(CArguments& arguments);

  const CFileArgument& File() const { return *m_file; }
  // Sets the terminal up, reads the configuration and runs it; see RunSession.
  EExit Run(CSessionView& view, CSessionResult& result, const CServiceRequest& service = {}) const;

 private:
  CSessionOptions Options(const CServiceRequest& service) const;
  std::optional<CLogPolicy> Policy() const;
  std::optional<CScanLoop::Period> Patience() const;

  CArgument<CFileArgument> m_file;
  CArgument<CNumber> m_scans, m_period, m_node;
  CArgument<bool> m_threaded, m_debug, m_quiet, m_plain;
  CArgument<std::optional<double>> m_sync;
  CArgument<CNumber> m_hold;
  CArgument<std::optional<double>> m_closeWithin;
  CArgument<std::optional<double>> m_patience;
  CArgument<bool> m_strict, m_writePlc, m_createFolders;
  CArgument<std::optional<CFileArgument>> m_feed;
  CDriverFolders m_drivers;
};

}  // namespace vastra
