// CValuesWindow: all variables of a logger in a table that is searched and sorted, with their least, largest
// and mean values since a reset. While the window is visible it looks at the logger ten times a second; only
// the rows on the screen are formatted.
#pragma once

#include <QTimer>
#include <QWidget>

#include "host/desktop/settings.h"
#include "host/desktop/value_table.h"

class QLabel;
class QLineEdit;
class QMenu;
class QTableView;

namespace vastra {

class CRun;
class CValuesModel;

// What the window shows of a run: statistics is its observer.
CValueSource ValuesOf(CRun& run, CValueStatistics& statistics);

class CValuesWindow : public QWidget {
 public:
  // name: under which settings remember the state.
  CValuesWindow(CSettings& settings, const char* name);
  ~CValuesWindow() override;  // saves them

  void SetSource(CValueSource source);
  // Brings the window to the front, or opens it.
  void BringUp();
  // Place, columns, sort and search as a string, and back.
  CString State() const;
  void SetState(const CString& state);

 protected:
  void showEvent(QShowEvent* event) override;
  void hideEvent(QHideEvent* event) override;

 private:
  void MakeTable();
  void MakeBar();
  QMenu* MakeSortMenu();
  void SortBy(int column);
  void Look();
  void FitColumns();
  void ShowCount();
  void Search();
  void Copy();
  void Reset();

  CSettings& m_settings;
  const CString m_name;
  CValuesModel* m_model;
  QTableView* m_view;
  QLineEdit* m_search;
  QLabel* m_count;
  QTimer m_timer;
  bool m_areColumnsFitted = false;
  CValueTable::Time m_sorted{};  // when the rows were sorted last
};

}  // namespace vastra
