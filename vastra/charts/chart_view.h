// CChartView: the plot of a chart with its legend and axes. The user moves it by the mouse and by keys; it
// draws what is known and reads nothing.
#pragma once

#include <QImage>
#include <QWidget>

#include <functional>
#include <optional>

#include "vastra/charts/chart_painter.h"

class QAction;
class QMenu;

namespace vastra {

class VASTRA_API CChartView : public QWidget {
 public:
  struct CListener {
    std::function<void()> changed;                      // anything of the state; often
    std::function<void(int axis)> editAxis;             // a double click on an axis
    std::function<void(const QPoint& place)> showMenu;  // at a place of the view
  };

  CChartView(CListener listener, QWidget* parent);

  const CChartState& State() const { return m_state; }
  // Changes the state and draws it again: change(state).
  template <class TChange>
  void Change(const TChange& change) {
    change(m_state);
    Changed();
  }
  // A new picture, or new rows. The listener is not called.
  void SetPicture(CChartPicture picture);
  void SetHint(const QString& hint);  // shown in the plot instead of curves; empty: none

  // The moment that the user points at.
  std::optional<CMoment> Pointed() const;
  // The next drag with the left button makes a rectangle.
  void StartRectangle(bool isStarted);
  bool IsRectangleStarted() const { return m_isRectangleStarted; }
  // Ends a drag, or a rectangle that is started, without effect; false: there is none.
  bool Cancel();
  double PlotPixels() const;  // the width of the plot in pixels of the screen
  CChartFrame Frame();        // laid out for the present state
  CPlotScale Scale(int axis);
  // Draws all of it, as in a picture; without the pointer.
  void Render(QPainter& painter, const QSize& size, const QPalette& palette);

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void changeEvent(QEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void leaveEvent(QEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private:
  // What the pressed button does.
  enum class EDrag { none, pending, pan, rectangle, cursor, axis };
  // What lies at a place.
  struct CHit {
    bool isPlot = false, isTime = false;
    int axis = 0;                   // id; 0: none
    std::size_t item = kNoCurve;    // of the legend
    std::size_t cursor = kCursors;  // near the place; kCursors: none
  };

  void Changed();
  void LayOut();
  CHit HitAt(const QPointF& place);
  void Drag(const QPointF& place);
  void EndDrag(const QPointF& place, Qt::KeyboardModifiers modifiers);
  void DragValues(const QPointF& place);
  void EndRectangle();
  void PointAt(const QPointF& place);
  void ShowShape(const CHit& hit);
  void PaintRectangle(QPainter& painter) const;
  void PaintFocus(QPainter& painter) const;

  const CListener m_listener;
  CChartState m_state;
  CChartPainter m_painter;
  QImage m_plot;  // all but what follows the pointer
  bool m_isLaidOut = false, m_isPlotDrawn = false;
  QString m_hint;
  std::optional<QPointF> m_pointed;  // the place: the rows move below it while the chart follows
  EDrag m_drag = EDrag::none;
  bool m_isRectangleStarted = false;
  QPointF m_pressed, m_dragged;  // where the drag began, and is
  CMomentRange m_dragRange;      // when it began
  int m_dragAxis = 0;
  double m_dragPart = 0;  // of the height that values were moved by
  std::size_t m_dragCursor = 0;
};

}  // namespace vastra
