// The texts at the axes of a chart. Most of them are the same ones at each move of the pointer: their shapes
// are kept.
#pragma once

#include <QFont>
#include <QHash>
#include <QStaticText>

#include "vastra/platform/string.h"

class QPainter;

namespace vastra {

class CChartTexts {
 public:
  void SetFont(const QFont& font);
  double Ascent() const { return m_ascent; }
  double Width(const CString& text) { return Find(text).size().width(); }
  // In the pen and the font of the painter.
  void Draw(QPainter& painter, double left, double baseline, const CString& text);

 private:
  static constexpr int kMost = 1000;
  QStaticText& Find(const CString& text);

  QFont m_font;
  double m_ascent = 0;
  QHash<QByteArray, QStaticText> m_texts;
};

}  // namespace vastra
