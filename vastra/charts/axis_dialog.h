// The dialog for the range of a value axis: automatic, or from one number to another.
#pragma once

#include <QDialog>

#include "vastra/charts/chart_layout_rules.h"

class QCheckBox;
class QLabel;
class QLineEdit;

namespace vastra {

class CAxisDialog : public QDialog {
 public:
  // title: what is on the axis.
  CAxisDialog(const QString& title, const CChartAxis& axis, QWidget* parent);
  // After it was accepted.
  const CChartAxis& Axis() const { return m_axis; }

 private:
  void TakeRange();

  CChartAxis m_axis;
  QCheckBox* m_automatic;
  QLineEdit *m_low, *m_high;
  QLabel* m_fault;
};

}  // namespace vastra
