#include "vastra/charts/chart_view.h"

#include <QContextMenuEvent>
#include <QEvent>
#include <QMimeData>
#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>

#include <cmath>

#include "vastra/ui/text.h"

namespace vastra {
namespace {

constexpr double kDragStart = 4;      // pixels, before a click is a drag
constexpr double kCursorReach = 5;    // pixels
constexpr double kWheelFactor = 0.8;  // of the range for a notch of the wheel
constexpr double kWheelNotch = 120;
constexpr double kWheelPan = 0.15;     // of the range
constexpr double kLeastRectangle = 6;  // pixels; smaller ones are mistakes

}  // namespace

CChartView::CChartView(CListener listener, QWidget* parent)
    : QWidget(parent), m_listener(std::move(listener)) {
  setFocusPolicy(Qt::StrongFocus);
  setMouseTracking(true);
  setAcceptDrops(true);
  setAccessibleName("Chart");
  setAttribute(Qt::WA_OpaquePaintEvent);
}

QSize CChartView::sizeHint() const {
  return {fontMetrics().averageCharWidth() * 90, fontMetrics().height() * 24};
}

QSize CChartView::minimumSizeHint() const {
  return {fontMetrics().averageCharWidth() * 24, fontMetrics().height() * 8};
}

void CChartView::Changed() {
  m_isLaidOut = m_isPlotDrawn = false;
  update();
  m_listener.changed();
}

void CChartView::SetPicture(CChartPicture picture) {
  m_state.SetPicture(std::move(picture));
  m_isLaidOut = m_isPlotDrawn = false;
  update();
}

void CChartView::SetHint(const QString& hint) {
  if (hint == m_hint) return;
  m_hint = hint;
  update();
}

void CChartView::StartRectangle(bool isStarted) {
  m_isRectangleStarted = isStarted;
  setCursor(isStarted ? Qt::CrossCursor : Qt::ArrowCursor);
  m_listener.changed();
}

void CChartView::LayOut() {
  if (m_isLaidOut) return;
  m_painter.LayOut(m_state, size(), font(), palette());
  m_isLaidOut = true;
}

CChartFrame CChartView::Frame() {
  LayOut();
  return m_painter.Frame();
}

CPlotScale CChartView::Scale(int axis) {
  LayOut();
  return m_painter.Scale(m_state, axis);
}

double CChartView::PlotPixels() const {
  const double width = m_isLaidOut ? m_painter.Frame().plot.width : this->width() * 0.9;
  return std::max(width, 1.0) * devicePixelRatioF();
}

void CChartView::Render(QPainter& painter, const QSize& size, const QPalette& palette) {
  CChartPainter picture;
  picture.LayOut(m_state, size, font(), palette);
  picture.PaintPlot(painter, m_state);
  picture.PaintCursors(painter, m_state);
  std::optional<CMoment> moment;
  if (m_state.HasCursors()) moment = m_state.CursorAt(m_state.ActiveCursor());
  picture.PaintLegend(painter, m_state, moment);
}

// The curves are drawn again only if they have changed: the pointer and the cursors move over an image of
// them.
void CChartView::paintEvent(QPaintEvent*) {
  LayOut();
  const double ratio = devicePixelRatioF();
  if (const QSize pixels = (QSizeF(size()) * ratio).toSize(); m_plot.size() != pixels) {
    m_plot = QImage(pixels, QImage::Format_RGB32);
    m_isPlotDrawn = false;
  }
  if (!m_isPlotDrawn) {
    m_plot.setDevicePixelRatio(ratio);
    const CChartCanvas canvas = {{reinterpret_cast<std::uint32_t*>(m_plot.bits()), m_plot.bytesPerLine() / 4},
                                 {0, 0, m_plot.width(), m_plot.height()},
                                 ratio};
    QPainter plot(&m_plot);
    m_painter.PaintPlot(plot, m_state, &canvas);
    m_isPlotDrawn = true;
  }
  QPainter painter(this);
  painter.drawImage(0, 0, m_plot);
  if (!m_hint.isEmpty()) m_painter.PaintHint(painter, m_hint);
  m_painter.PaintCursors(painter, m_state);
  const std::optional<CMoment> pointed = Pointed();
  std::optional<CMoment> moment = pointed;
  if (!moment && m_state.HasCursors()) moment = m_state.CursorAt(m_state.ActiveCursor());
  m_painter.PaintLegend(painter, m_state, moment);
  if (pointed && m_drag != EDrag::rectangle) m_painter.PaintPointer(painter, m_state, *pointed);
  PaintRectangle(painter);
  PaintFocus(painter);
}

void CChartView::PaintRectangle(QPainter& painter) const {
  if (m_drag != EDrag::rectangle) return;
  QColor colour = palette().color(QPalette::Highlight);
  painter.setRenderHint(QPainter::Antialiasing, false);
  painter.setPen(colour);
  colour.setAlpha(40);
  painter.setBrush(colour);
  painter.drawRect(QRectF(m_pressed, m_dragged).normalized());
  painter.setBrush(Qt::NoBrush);
}

void CChartView::PaintFocus(QPainter& painter) const {
  if (!hasFocus()) return;
  painter.setRenderHint(QPainter::Antialiasing, false);
  painter.setPen(palette().color(QPalette::Highlight));
  painter.drawRect(rect().adjusted(0, 0, -1, -1));
}

void CChartView::resizeEvent(QResizeEvent*) { Changed(); }

void CChartView::changeEvent(QEvent* event) {
  const QEvent::Type type = event->type();
  if (type == QEvent::PaletteChange || type == QEvent::FontChange || type == QEvent::StyleChange) {
    m_isLaidOut = m_isPlotDrawn = false;
    update();
  }
  QWidget::changeEvent(event);
}

CChartView::CHit CChartView::HitAt(const QPointF& place) {
  LayOut();
  const CChartFrame& frame = m_painter.Frame();
  CHit hit;
  hit.isPlot = frame.plot.Has(place.x(), place.y());
  hit.isTime = frame.time.Has(place.x(), place.y());
  for (std::size_t i = 0; i < frame.axes.size(); ++i)
    if (frame.axes[i].Has(place.x(), place.y())) hit.axis = m_state.Layout().axes[i].id;
  for (std::size_t i = 0; i < frame.items.size(); ++i)
    if (frame.items[i].all.Has(place.x(), place.y())) hit.item = i;
  double reach = kCursorReach;
  for (std::size_t i = 0; m_state.HasCursors() && hit.isPlot && i < kCursors; ++i) {
    const double distance = std::abs(m_painter.Scale(m_state, 0).X(m_state.CursorAt(i)) - place.x());
    if (distance <= reach) hit.cursor = i, reach = distance;
  }
  return hit;
}

void CChartView::mousePressEvent(QMouseEvent* event) {
  const bool isLeft = event->button() == Qt::LeftButton, isMiddle = event->button() == Qt::MiddleButton;
  if (!isLeft && !isMiddle) return;
  const CHit hit = HitAt(event->position());
  m_pressed = m_dragged = event->position();
  m_dragRange = m_state.Range();
  m_dragPart = 0;
  m_dragAxis = hit.axis;
  m_dragCursor = hit.cursor;
  if (hit.item != kNoCurve) return Change([&](CChartState& state) { state.Select(hit.item); });
  if (hit.axis)
    m_drag = EDrag::axis;
  else if (hit.isPlot || hit.isTime)
    m_drag = EDrag::pending;
  const bool wantsRectangle = m_isRectangleStarted || (event->modifiers() & Qt::ShiftModifier);
  if (hit.isPlot && isLeft && wantsRectangle)
    m_dragAxis = -1;  // the drag will be a rectangle
  else if (hit.cursor < kCursors && isLeft)
    m_drag = EDrag::cursor;
}

void CChartView::mouseMoveEvent(QMouseEvent* event) {
  if (m_drag != EDrag::none)
    Drag(event->position());
  else
    ShowShape(HitAt(event->position()));
  PointAt(event->position());
}

void CChartView::Drag(const QPointF& place) {
  m_dragged = place;
  if (m_drag == EDrag::pending) {
    if ((place - m_pressed).manhattanLength() < kDragStart || !m_state.HasRange()) return;
    if (m_dragAxis < 0) {
      m_drag = EDrag::rectangle;
    } else {
      m_drag = EDrag::pan;
      m_state.Show(m_dragRange, CChartState::moveDrag);  // a place to go back to
      setCursor(Qt::ClosedHandCursor);
    }
  }
  switch (m_drag) {
    case EDrag::pan: {
      const CChartBox& plot = m_painter.Frame().plot;
      const double part = (m_pressed.x() - place.x()) / plot.width;
      const auto by = std::llround(part * static_cast<double>(m_dragRange.to - m_dragRange.from));
      return Change([&](CChartState& state) { state.DragTo(Panned(m_dragRange, by)); });
    }
    case EDrag::cursor: {
      const CMoment moment = m_painter.Scale(m_state, 0).MomentAt(place.x());
      return Change([&](CChartState& state) { state.MoveCursor(m_dragCursor, moment); });
    }
    case EDrag::axis:
      return DragValues(place);
    case EDrag::rectangle:
      return update();
    default:
      return;
  }
}

void CChartView::DragValues(const QPointF& place) {
  const double part = (place.y() - m_pressed.y()) / m_painter.Frame().plot.height;
  Change([&](CChartState& state) { state.PanValues(m_dragAxis, part - m_dragPart, CChartState::moveDrag); });
  m_dragPart = part;
}

void CChartView::mouseReleaseEvent(QMouseEvent* event) {
  if (m_drag == EDrag::none) return;
  EndDrag(event->position(), event->modifiers());
  ShowShape(HitAt(event->position()));
}

// A click that is no drag moves a cursor, if cursors are shown.
void CChartView::EndDrag(const QPointF& place, Qt::KeyboardModifiers modifiers) {
  const EDrag drag = std::exchange(m_drag, EDrag::none);
  if (drag == EDrag::rectangle) {
    m_dragged = place;
    EndRectangle();
  } else if (drag == EDrag::pending && m_state.HasCursors() &&
             m_painter.Frame().plot.Has(place.x(), place.y())) {
    const CMoment moment = m_painter.Scale(m_state, 0).MomentAt(place.x());
    Change([&](CChartState& state) { state.MoveCursor(modifiers & Qt::ShiftModifier ? 1 : 0, moment); });
  }
  update();
}

// A flat rectangle chooses only the time, a narrow one only the values.
void CChartView::EndRectangle() {
  const CChartBox& plot = m_painter.Frame().plot;
  const QRectF chosen = QRectF(m_pressed, m_dragged).normalized().intersected(ToRect(plot));
  StartRectangle(false);
  const bool hasWidth = chosen.width() >= kLeastRectangle, hasHeight = chosen.height() >= kLeastRectangle;
  if (!hasWidth && !hasHeight) return;
  const CPlotScale scale = m_painter.Scale(m_state, 0);
  CMomentRange range = m_state.Range();
  if (hasWidth) range = {scale.MomentAt(chosen.left()), scale.MomentAt(chosen.right())};
  Change([&](CChartState& state) {
    if (!hasHeight) return state.Show(range, CChartState::moveRectangle);
    state.ShowRectangle(range, (plot.Bottom() - chosen.bottom()) / plot.height,
                        (plot.Bottom() - chosen.top()) / plot.height);
  });
}

bool CChartView::Cancel() {
  if (m_drag == EDrag::none && !m_isRectangleStarted) return false;
  const EDrag drag = std::exchange(m_drag, EDrag::none);
  if (drag == EDrag::pan) Change([&](CChartState& state) { state.DragTo(m_dragRange); });
  StartRectangle(false);
  update();
  return true;
}

void CChartView::mouseDoubleClickEvent(QMouseEvent* event) {
  const CHit hit = HitAt(event->position());
  if (hit.axis && event->button() == Qt::LeftButton) return m_listener.editAxis(hit.axis);
  if (hit.item != kNoCurve && event->button() == Qt::LeftButton)
    return m_listener.editAxis(m_state.Layout().curves[hit.item].axis);
  mousePressEvent(event);
}

void CChartView::wheelEvent(QWheelEvent* event) {
  event->accept();
  const CHit hit = HitAt(event->position());
  const QPoint turn = event->angleDelta();
  const double notches = (turn.y() ? turn.y() : turn.x()) / kWheelNotch;
  if (notches == 0 || !m_state.HasRange()) return;
  const CChartBox& plot = m_painter.Frame().plot;
  const double factor = std::pow(kWheelFactor, notches);
  const double height = std::clamp((plot.Bottom() - event->position().y()) / plot.height, 0.0, 1.0);
  const CMoment moment = m_painter.Scale(m_state, 0).MomentAt(event->position().x());
  const bool isPan = (event->modifiers() & Qt::ShiftModifier) || !turn.y();
  const bool isOfValues = hit.axis || (event->modifiers() & Qt::ControlModifier);
  Change([&](CChartState& state) {
    if (isOfValues)
      state.ZoomValues(hit.axis, height, factor, CChartState::moveWheel);
    else if (isPan)
      state.Pan(-notches * kWheelPan, CChartState::moveWheel);
    else
      state.Zoom(moment, factor, CChartState::moveWheel);
  });
  PointAt(event->position());
}

void CChartView::PointAt(const QPointF& place) {
  if (m_pointed == place) return;
  m_pointed = place;
  update();
}

std::optional<CMoment> CChartView::Pointed() const {
  if (!m_pointed || !m_state.HasRange()) return {};
  if (!m_painter.Frame().plot.Has(m_pointed->x(), m_pointed->y())) return {};
  return m_painter.Scale(m_state, 0).MomentAt(m_pointed->x());
}

void CChartView::ShowShape(const CHit& hit) {
  if (m_isRectangleStarted) return setCursor(Qt::CrossCursor);
  if (hit.cursor < kCursors) return setCursor(Qt::SplitHCursor);
  if (hit.axis) return setCursor(Qt::SizeVerCursor);
  setCursor(hit.item != kNoCurve ? Qt::PointingHandCursor : Qt::ArrowCursor);
}

void CChartView::leaveEvent(QEvent*) {
  m_pointed.reset();
  update();
}

// The menu is of the curve under the pointer.
void CChartView::contextMenuEvent(QContextMenuEvent* event) {
  if (event->reason() == QContextMenuEvent::Mouse) {
    const CHit hit = HitAt(event->pos());
    if (hit.item != kNoCurve) Change([&](CChartState& state) { state.Select(hit.item); });
  }
  m_listener.showMenu(event->pos());
}

void CChartView::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Escape && Cancel()) return;
  QWidget::keyPressEvent(event);
}

void CChartView::focusInEvent(QFocusEvent*) { update(); }

void CChartView::focusOutEvent(QFocusEvent*) { update(); }

// Lines of text are names of variables. Files are the concern of the window.
void CChartView::dragEnterEvent(QDragEnterEvent* event) {
  if (event->mimeData()->hasText() && !event->mimeData()->hasUrls())
    event->acceptProposedAction();
  else
    event->ignore();
}

void CChartView::dropEvent(QDropEvent* event) {
  const int axis = HitAt(event->position()).axis;
  event->acceptProposedAction();
  const QStringList names = event->mimeData()->text().split('\n', Qt::SkipEmptyParts);
  Change([&](CChartState& state) {
    for (const QString& name : names) {
      const CString variable = FromScreen(name);
      state.Add(variable);
      const std::size_t curve = FindCurve(state.Layout(), variable);
      if (axis && curve != kNoCurve) state.Use(curve, axis);
    }
  });
}

}  // namespace vastra
