// Consoles as the screen shows them, without a call of theirs.
#pragma once

#include <QAbstractScrollArea>
#include <QScreen>
#include <QScrollBar>

#include <map>

#include "tests/support/windows.h"
#include "vastra/console/console_wnd.h"

namespace vastra {

// The client area as the screen shows it; paints nothing.
inline QImage OnScreen(CWnd& window) {
  const QImage all = QGuiApplication::primaryScreen()->grabWindow(window.Widget()->winId()).toImage();
  const QPoint corner = window.Client()->mapTo(window.Widget(), QPoint());
  const QRectF place(corner * all.devicePixelRatio(), window.Client()->size() * all.devicePixelRatio());
  return all.copy(place.toAlignedRect()).convertToFormat(QImage::Format_RGB32);
}

// The most frequent colour in a row of text besides white; white if there is no other.
inline COLORREF ColourOf(const QImage& image, int row, int height) {
  std::map<COLORREF, int> counts;
  for (int y = row * height; y < (row + 1) * height; ++y)
    for (int x = 0; x < image.width(); ++x) ++counts[PixelOf(image, x, y)];
  counts.erase(0xFFFFFF);
  COLORREF most = 0xFFFFFF;
  int count = 0;
  for (const auto& [colour, times] : counts)
    if (times > count) most = colour, count = times;
  return most;
}

inline std::vector<COLORREF> ColoursOf(CWnd& window) {
  const QImage image = OnScreen(window);
  std::vector<COLORREF> colours;
  for (int row = 0; row < image.height() / window.TextHeight(); ++row)
    colours.push_back(ColourOf(image, row, window.TextHeight()));
  while (!colours.empty() && colours.back() == 0xFFFFFF) colours.pop_back();
  return colours;
}

inline QScrollBar* BarOf(CWnd& window) {
  return static_cast<QAbstractScrollArea*>(window.Widget())->verticalScrollBar();
}

// A console with room for rows whole lines.
class CTestConsole : public CConsoleWnd {
 public:
  explicit CTestConsole(int rows, bool shown = true) {
    Create("test", 0, 0, 300, 100, nullptr);
    MoveWindow(CRect::Of({0, 0}, {300, 100 - GetClientRect().Height() + rows * TextHeight()}));
    if (shown) ShowWindow(SW_SHOW), QApplication::processEvents();
  }
  void Write(int number) { Write("EEEEEEEE", static_cast<COLORREF>(number)); }
  void Write(const CString& text, COLORREF colour) { CConsoleWnd::Write(text, colour, 0); }
  using CConsoleWnd::OnSize;
};

}  // namespace vastra
