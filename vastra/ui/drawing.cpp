#include "vastra/ui/drawing.h"

#include <QApplication>
#include <QFontDatabase>
#include <QFontMetrics>
#include <QImage>
#include <QPainter>
#include <QWidget>

#include <algorithm>
#include <cmath>
#include <cstring>

#include "vastra/ui/convert.h"
#include "vastra/ui/line_raster.h"
#include "vastra/ui/text.h"
#include "vastra/ui/window.h"

namespace vastra {
namespace {

// The pixel size at which font has the requested height.
int PixelSize(QFont font, int height) {
  if (height < 0) return -height;
  constexpr int kProbe = 100;
  font.setPixelSize(kProbe);
  return std::max(height * kProbe / std::max(QFontMetrics(font).height(), 1), 1);
}

QFont ToFont(const CFontRequest& request) {
  QFont font = QApplication::font();
  if (*request.face) font.setFamily(request.face);
  font.setStyleHint(request.hasSerifs ? QFont::Serif : QFont::SansSerif);
  font.setWeight(static_cast<QFont::Weight>(std::clamp(request.weight, 1, 1000)));
  font.setStyleStrategy(QFont::PreferQuality);
  if (request.height != 0) font.setPixelSize(PixelSize(font, request.height));
  if (const int width = std::abs(request.width); width != 0) {
    const int natural = std::max(QFontMetrics(font).averageCharWidth(), 1);
    font.setStretch(std::clamp(100 * width / natural, 1, 400));
  }
  return font;
}

}  // namespace

CFont::CFont() : m_font(std::make_unique<QFont>(QApplication::font())) {}

CFont::CFont(const CFontRequest& request)
    : m_font(std::make_unique<QFont>(ToFont(request))), m_escapement(request.escapement) {}

CFont::CFont(const CFont& other)
    : m_font(std::make_unique<QFont>(*other.m_font)), m_escapement(other.m_escapement) {}

CFont& CFont::operator=(const CFont& other) {
  *m_font = *other.m_font;
  m_escapement = other.m_escapement;
  return *this;
}

CFont::~CFont() = default;

int CFont::Height() const { return QFontMetrics(*m_font).height(); }

CBitmap::CBitmap() : m_image(std::make_unique<QImage>()) {}

CBitmap::~CBitmap() = default;

int CBitmap::CreateCompatibleBitmap(const CWnd& window, CSize size) {
  DeleteObject();
  if (size.cx <= 0 || size.cy <= 0) return 0;
  const double scale = window.Widget() ? window.Widget()->devicePixelRatioF() : 1.0;
  *m_image = QImage(
      QSize(static_cast<int>(std::ceil(size.cx * scale)), static_cast<int>(std::ceil(size.cy * scale))),
      QImage::Format_RGB32);
  m_image->setDevicePixelRatio(scale);
  return IsCreated();
}

void CBitmap::DeleteObject() { *m_image = QImage(); }

bool CBitmap::IsCreated() const { return !m_image->isNull(); }

CSize CBitmap::Size() const {
  const QSizeF size = m_image->deviceIndependentSize();
  return {static_cast<int>(size.width()), static_cast<int>(size.height())};
}

COLORREF CBitmap::GetPixel(CPoint point) const {
  const double scale = m_image->devicePixelRatio();
  return FromColour(
      m_image->pixelColor(static_cast<int>(point.x * scale), static_cast<int>(point.y * scale)));
}

int CBitmap::ScrollRows(int dy) {
  const double pixels = dy * m_image->devicePixelRatio();
  const int rows = static_cast<int>(pixels);
  if (rows != pixels) return 0;
  const int kept = m_image->height() - std::abs(rows);
  if (rows == 0 || kept <= 0) return 1;
  const auto line = static_cast<std::size_t>(m_image->bytesPerLine());
  uchar* bits = m_image->bits();
  const std::size_t shift = static_cast<std::size_t>(std::abs(rows)) * line;
  std::memmove(rows > 0 ? bits + shift : bits, rows > 0 ? bits : bits + shift,
               static_cast<std::size_t>(kept) * line);
  return 1;
}

CDC::CDC(CBitmap& bitmap) : m_painter(std::make_unique<QPainter>(&bitmap.Image())), m_picture(&bitmap) {
  Reset(0);
}

CDC::CDC(CWnd& window) : m_painter(std::make_unique<QPainter>(window.Client())) {
  Reset(FromColour(window.Client()->palette().color(QPalette::WindowText)));
}

CDC::~CDC() = default;

void CDC::Reset(COLORREF textColour) {
  SelectObject(CPen());
  m_painter->setFont(QApplication::font());
  m_textColour = textColour;
}

void CDC::SaveDC() {
  m_painter->save();
  m_saved = std::make_unique<CSaved>(CSaved{m_textColour, m_ground, m_align, m_escapement});
}

void CDC::RestoreDC() {
  if (!m_saved) return;
  m_painter->restore();
  m_textColour = m_saved->textColour;
  m_ground = m_saved->ground;
  m_align = m_saved->align;
  m_escapement = m_saved->escapement;
  m_saved.reset();
}

void CDC::IntersectClipRect(const CRect& rect) { m_painter->setClipRect(ToRect(rect), Qt::IntersectClip); }

void CDC::SelectObject(const CPen& pen) { m_painter->setPen(QPen(ToColour(pen.colour), pen.width)); }

void CDC::SelectObject(const CFont& font) {
  m_painter->setFont(font.Font());
  m_escapement = font.Escapement();
}

void CDC::SetTextColor(COLORREF colour) { m_textColour = colour; }

void CDC::FillRect(const CRect& rect, const CBrush& brush) {
  m_painter->fillRect(ToRect(rect), ToColour(brush.colour));
}

void CDC::LineTo(CPoint point) {
  m_painter->drawLine(m_at.x, m_at.y, point.x, point.y);
  m_at = point;
}

void CDC::Polyline(std::span<const CPoint> points) {
  static_assert(sizeof(QPoint) == sizeof(CPoint));
  if (PolylineOnPicture(points)) return;
  m_painter->drawPolyline(reinterpret_cast<const QPoint*>(points.data()), static_cast<int>(points.size()));
}

// 0: the picture has a scale factor, or the pen is wider than a pixel.
int CDC::PolylineOnPicture(std::span<const CPoint> points) {
  if (!m_picture || m_picture->Image().devicePixelRatio() != 1.0 || m_painter->pen().width() != 1) return 0;
  QImage& image = m_picture->Image();
  QRect clip = image.rect();
  if (m_painter->hasClipping()) clip &= m_painter->clipBoundingRect().toRect();
  const CPixels pixels = {reinterpret_cast<std::uint32_t*>(image.bits()), image.bytesPerLine() / 4};
  RasterLines(pixels, CRect::Of({clip.x(), clip.y()}, {clip.width(), clip.height()}), points,
              m_painter->pen().color().rgb());
  return 1;
}

void CDC::TextOut(CPoint at, const CString& text) {
  const QString shown = ToScreen(text);
  const QFontMetrics metrics = m_painter->fontMetrics();
  const int width = m_align == TA_LEFT && !m_ground ? 0 : metrics.horizontalAdvance(shown);
  const int left = m_align == TA_RIGHT ? -width : m_align == TA_CENTER ? -width / 2 : 0;
  const QPen pen = m_painter->pen();
  m_painter->setPen(ToColour(m_textColour));
  m_painter->translate(at.x, at.y);
  if (m_escapement != 0) m_painter->rotate(-m_escapement / 10.0);
  if (m_ground) m_painter->fillRect(left, 0, width, metrics.height(), ToColour(*m_ground));
  m_painter->drawText(left, metrics.ascent(), shown);
  if (m_escapement != 0) m_painter->rotate(m_escapement / 10.0);
  m_painter->translate(-at.x, -at.y);
  m_painter->setPen(pen);
}

void CDC::DrawText(const CString& text, const CRect& rect) {
  const UINT align = m_align;
  m_align = TA_LEFT;
  TextOut(rect.TopLeft(), text);
  m_align = align;
}

void CDC::BitBlt(CPoint at, const CBitmap& picture) {
  if (picture.IsCreated()) m_painter->drawImage(at.x, at.y, picture.Image());
}

}  // namespace vastra
