#include "vastra/charts/chart_texts.h"

#include <QFontMetricsF>
#include <QPainter>

#include "vastra/ui/text.h"

namespace vastra {

void CChartTexts::SetFont(const QFont& font) {
  if (m_ascent > 0 && font == m_font) return;
  m_font = font;
  m_ascent = QFontMetricsF(font).ascent();
  m_texts.clear();
}

void CChartTexts::Draw(QPainter& painter, double left, double baseline, const CString& text) {
  painter.drawStaticText(QPointF(left, baseline - m_ascent), Find(text));
}

QStaticText& CChartTexts::Find(const CString& text) {
  const auto key = QByteArray::fromRawData(text.Std().data(), static_cast<qsizetype>(text.Std().size()));
  const auto found = m_texts.find(key);
  if (found != m_texts.end()) return *found;
  if (m_texts.size() >= kMost) m_texts.clear();
  QStaticText shaped(ToScreen(text));
  shaped.setTextFormat(Qt::PlainText);
  shaped.prepare(QTransform(), m_font);
  return *m_texts.insert(QByteArray(key.constData(), key.size()), shaped);
}

}  // namespace vastra
