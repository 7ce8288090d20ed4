// CCursorTable: the figures of the two cursors, a row for each curve: the values, their difference, and min,
// max and mean between the cursors.
#pragma once

#include <QWidget>

#include "vastra/charts/chart_data.h"
#include "vastra/charts/chart_state_rules.h"

class QLabel;
class QTableWidget;

namespace vastra {

// What is known of the cursors; lists that are empty are not known yet.
struct CCursorFigures {
  std::vector<std::vector<float>> values;  // of the cursors, those of the variables
  std::vector<CCurveStatistics> between;
  std::vector<CHistoryFault> faults;  // logs whose rows are missing
};

class CCursorTable : public QWidget {
 public:
  explicit CCursorTable(QWidget* parent);

  // Values that are not known yet are those of the picture.
  void Show(const CChartState& state, const CCursorFigures& figures);
  QString Text() const;  // with tabs between the cells

 private:
  void ShowRow(int row, const CChartState& state, const CCursorFigures& figures);
  void WidenColumns();
  void SetCell(int row, int column, const QString& text);

  QLabel* m_times;
  QLabel* m_missing;
  QTableWidget* m_table;
};

}  // namespace vastra
