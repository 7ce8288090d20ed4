// CPlantView: the state of the plant in the main window: what is wrong now, and a tree with a row for each
// part of the configuration. It looks at the live state a few times a second while it can be seen.
#pragma once

#include <QTimer>
#include <QTreeWidget>

#include <memory>

#include "host/desktop/plant_state.h"

namespace vastra {

class CProblemBanner;

class CPlantView : public QWidget {
 public:
  // What the user can ask of an entry. Without edit the view only shows.
  struct CListener {
    std::function<void(const CString& key)> edit;  // of the part
    std::function<void()> trend, grid, values;
    std::function<void(EPart part, int index)> history;  // of an output or summary
  };

  CPlantView(CListener listener, QWidget* parent);

  // Shows the parts of configuration. inputVariables: their number; below 0: unknown.
  void ShowConfiguration(const CConfiguration& configuration, int inputVariables);
  void ShowTrend(const CTrendConfig& trend);
  // The state of the run has changed, or it is another one.
  void ShowRun(const CPlantRun& run, std::shared_ptr<const CLiveState> live);
  // Columns and closed rows as a string, and back.
  CString State() const;
  void SetState(const CString& state);

 protected:
  void showEvent(QShowEvent* event) override;
  void changeEvent(QEvent* event) override;

 private:
  void ShowHint();
  void MakeTree();
  void FitColumns();
  void FillTree();
  void Look();
  void LookIfSeen();
  void ShowRows();
  void ShowRow(QTreeWidgetItem& item, const CPlantRow& row, const CPlantRow& shown);
  const CPlantRow* RowOfItem(const QTreeWidgetItem* item) const;
  void Edit(const CPlantRow& row);
  void ShowMenu(const QPoint& place);

  const CListener m_listener;
  CPlantState m_state;
  CPlantRun m_run;
  std::shared_ptr<const CLiveState> m_live;
  CLiveNewest m_newest;
  QTimer m_timer;
  CProblemBanner* m_banner;
  QTreeWidget* m_tree;
  bool m_areColumnsFitted = false;
  std::vector<QTreeWidgetItem*> m_items;  // of the rows
  std::vector<CPlantRow> m_shown;         // the rows on the screen
};

}  // namespace vastra
