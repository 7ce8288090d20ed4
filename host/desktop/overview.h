// COverview: the parts of the open configuration at a glance, with what has become of their samples.
#pragma once

#include <QTreeWidget>

#include "host/common/scan_loop.h"

namespace vastra {

class COverview : public QTreeWidget {
 public:
  explicit COverview(QWidget* parent);
  // The parts of configuration; the input gives so many variables, below 0: not known.
  void ShowConfiguration(const CConfiguration& configuration, int inputVariables);
  void ShowCounts(const CScanCounts& counts);
  void ShowTrend(const CTrendConfig& trend);  // which the views change

 private:
  void ShowHint(const char* state, const char* hint);
  QTreeWidgetItem& AddPart(const char* part, const CString& what);
  void Show(const char* part, int column, const CString& text);
};

}  // namespace vastra
