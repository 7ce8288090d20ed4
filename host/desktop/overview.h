// COverview: the parts of the open configuration, with the counts of their samples.
#pragma once

#include <QTreeWidget>

#include "host/common/scan_loop.h"

namespace vastra {

class COverview : public QTreeWidget {
 public:
  explicit COverview(QWidget* parent);
  // Shows the parts of configuration. inputVariables: their number; below 0: unknown.
  void ShowConfiguration(const CConfiguration& configuration, int inputVariables);
  void ShowCounts(const CScanCounts& counts);
  void ShowTrend(const CTrendConfig& trend);  // after a change by a view

 private:
  void ShowHint(const char* state, const char* hint);
  QTreeWidgetItem& AddPart(const char* part, const CString& what);
  void Show(const char* part, int column, const CString& text);
};

}  // namespace vastra
