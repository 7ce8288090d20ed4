// CExportArguments: the options of convert.
#pragma once

#include "host/cli/history/export.h"

namespace vastra {

class CExportArguments {
 public:
  explicit CExportArguments(CArguments& arguments);

  const std::vector<CFileArgument>& Paths() const { return *m_paths; }
  // Of --csv.
  const std::optional<CFileArgument>& Csv() const { return *m_csv; }
  // Whether there is one path alone, of a file, and no option except --csv.
  bool IsPlain() const;
  // Fills order. Returns kDone, or kWrongUse after an error message.
  EExit Read(CExportOrder& order) const;

 private:
  CString ReadRange(CExportRequest& request) const;
  CString ReadSteps(CExportRequest& request, bool isFixedStart) const;
  CString ReadNames(CExportRequest& request) const;
  CString ReadOutput(CExportOrder& order) const;
  CString ReadAll(CExportOrder& order) const;

  using CText = CArgument<std::optional<CString>>;

  CArgument<std::vector<CFileArgument>> m_paths;
  CText m_from, m_to, m_step, m_by;
  CArgument<std::vector<CString>> m_names;
  CText m_format, m_time;
  CArgument<std::optional<CFileArgument>> m_out, m_csv;
  CArgument<bool> m_force, m_recursive, m_unique, m_digest;
};

}  // namespace vastra
