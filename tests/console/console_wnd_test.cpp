// Consoles as the screen shows them.
#include "vastra/console/console_wnd.h"

#include <QAbstractScrollArea>
#include <QScreen>
#include <QScrollBar>

#include <map>
#include <random>
#include <thread>

#include "tests/support/windows.h"

namespace vastra {
namespace {

// A console with room for rows whole lines.
class CTestConsole : public CConsoleWnd {
 public:
  explicit CTestConsole(int rows, bool shown = true) {
    Create("test", 0, 0, 300, 100, nullptr);
    MoveWindow(CRect::Of({0, 0}, {300, 100 - GetClientRect().Height() + rows * TextHeight()}));
    if (shown) ShowWindow(SW_SHOW), QApplication::processEvents();
  }
  QScrollBar* Bar() { return static_cast<QAbstractScrollArea*>(Widget())->verticalScrollBar(); }

  // Lines of the colours first to last, by this thread or by a worker.
  void Write(COLORREF first, COLORREF last) {
    for (COLORREF colour = first; colour <= last; ++colour) CConsoleWnd::Write("EEEEEEEE", colour, 0);
  }
  void WriteByWorker(COLORREF first, COLORREF last) {
    std::thread([&] { Write(first, last); }).join();
  }

  // The client area as the screen shows it; paints nothing.
  QImage OnScreen() {
    const QImage all = QGuiApplication::primaryScreen()->grabWindow(Widget()->winId()).toImage();
    const QPoint corner = Client()->mapTo(Widget(), QPoint());
    const QRectF place(corner * all.devicePixelRatio(), Client()->size() * all.devicePixelRatio());
    return all.copy(place.toAlignedRect()).convertToFormat(QImage::Format_RGB32);
  }
  // Of each row up to the first empty one, the darkest colour: the edges of its letters are paler.
  std::vector<COLORREF> Colours() {
    const QImage image = OnScreen();
    std::vector<COLORREF> colours;
    for (int top = 0; top + TextHeight() <= image.height(); top += TextHeight()) {
      COLORREF darkest = 0xFFFFFF;
      for (int y = top; y < top + TextHeight(); ++y)
        for (int x = 0; x < image.width(); ++x) darkest = std::min(darkest, PixelOf(image, x, y));
      if (darkest == 0xFFFFFF) break;
      colours.push_back(darkest);
    }
    return colours;
  }
  using CConsoleWnd::OnSize;
};

std::vector<COLORREF> Numbers(COLORREF first, COLORREF last) {
  std::vector<COLORREF> numbers;
  for (; first <= last; ++first) numbers.push_back(first);
  return numbers;
}

TEST(ConsoleWindow, FollowsAndScrollsByFiveLinesWhateverTheToolkitsPageIs) {
  CTestConsole window(10);
  window.Write(0, 29);
  EXPECT_EQ(window.Bar()->value(), 21);
  EXPECT_EQ(window.Bar()->maximum(), 21);
  EXPECT_EQ(window.Colours(), Numbers(21, 29));
  window.Bar()->triggerAction(QAbstractSlider::SliderPageStepSub);
  EXPECT_EQ(window.Bar()->value(), 16);
  EXPECT_EQ(window.Colours(), Numbers(16, 25));
  window.Bar()->triggerAction(QAbstractSlider::SliderSingleStepAdd);
  EXPECT_EQ(window.Colours(), Numbers(17, 26));
  window.Bar()->setSliderPosition(2);  // as a drag of the thumb
  window.Write(30, 30);
  EXPECT_EQ(window.Colours(), Numbers(2, 11));
  EXPECT_EQ(window.Bar()->contextMenuPolicy(), Qt::NoContextMenu)
      << "its menu moves the bar without an action";
}

// Letters that leave their rows, rows that are half visible, steps of all sizes.
TEST(ConsoleWindow, PictureThatWasMovedEqualsANewOne) {
  const char* const kTexts[] = {"gjpqy|_", "Z\xCC\x8C\xCC\x81\xCC\x8C\xCC\x81", "\xE0\xB8\x81\xE0\xB9\x89",
                                "",
                                "a line that is cut off at the right edge of its window, whatever it says"};
  std::mt19937 random(3);
  CTestConsole window(7);
  window.MoveWindow(CRect::Of({0, 0}, {300, window.GetPlace().Height() + 5}));
  const std::function<void()> kSteps[] = {
      [&] { window.Bar()->setSliderPosition(static_cast<int>(random() % 200)); },
      [&] { window.Bar()->triggerAction(QAbstractSlider::SliderPageStepAdd); },
      [&] { window.WriteByWorker(0, 2), QApplication::processEvents(); },
      [&] { static_cast<CConsoleWnd&>(window).Write(kTexts[random() % 5], random() & 0xFFFFFF, 0); }};
  for (int step = 0; step < 400; ++step) {
    if (step == 300) window.Clear();
    kSteps[std::min<std::size_t>(random() % 20, 3)]();
    const QImage moved = window.OnScreen();
    window.OnSize(window.GetClientRect().Width(), window.GetClientRect().Height());
    window.Client()->repaint();
    ASSERT_EQ(moved, window.OnScreen()) << step;
  }
}

TEST(ConsoleWindow, PaintsNothingWhileItIsNotSeenAndAllLinesAfterwards) {
  for (const int hide : {SW_HIDE, SW_MINIMIZE, SW_RESTORE}) {
    CTestConsole window(10, hide != SW_RESTORE);  // never shown
    if (hide == SW_HIDE) window.Widget()->close();
    if (hide == SW_MINIMIZE) window.ShowWindow(hide);
    CPaints paints(window.Client());
    window.Write(1, 30);
    EXPECT_EQ(paints.Take(), 0);
    window.ShowWindow(hide == SW_MINIMIZE ? SW_RESTORE : SW_SHOW);
    QApplication::processEvents();
    EXPECT_EQ(window.Colours(), Numbers(22, 30));
  }
}

TEST(ConsoleWindow, LinesOfAWorkerAndOfTheWindowsThreadKeepTheirOrder) {
  CTestConsole window(300);
  window.Write(1, 1);
  window.WriteByWorker(2, 100);
  EXPECT_EQ(window.Colours(), Numbers(1, 1));
  window.Write(101, 101);
  EXPECT_EQ(window.Colours(), Numbers(1, 101));
  QApplication::processEvents();
  window.WriteByWorker(102, 102);
  QApplication::processEvents();
  EXPECT_EQ(window.Colours(), Numbers(1, 102));
}

TEST(ConsoleWindow, LinesOfManyThreadsAreCompleteAndKeepTheOrderOfEachThread) {
  CTestConsole window(300);
  std::vector<std::thread> workers;
  for (const COLORREF first : {0x10000u, 0x20000u, 0x30000u})
    workers.emplace_back([&, first] { window.Write(first, first + 49); });
  window.Write(0x40000, 0x40000 + 49);
  for (std::thread& worker : workers) worker.join();
  QApplication::processEvents();
  std::map<COLORREF, COLORREF> next;
  for (const COLORREF colour : window.Colours()) EXPECT_EQ(colour & 0xFFFF, next[colour >> 16]++);
  EXPECT_EQ(next, (std::map<COLORREF, COLORREF>{{1, 50}, {2, 50}, {3, 50}, {4, 50}}));
}

TEST(ConsoleWindow, BurstOfAWorkerIsPaintedOnceAndLooksLikeSingleLines) {
  for (const COLORREF lines : {3u, 199u, 201u, 1000u}) {
    CTestConsole window(10), other(10);
    for (CTestConsole* each : {&window, &other}) each->Write(1, 12), each->Bar()->setSliderPosition(0);
    other.Write(1, lines);
    window.WriteByWorker(1, lines);
    CPaints paints(window.Client());
    QApplication::processEvents();
    EXPECT_EQ(paints.Take(), 1) << lines;
    EXPECT_EQ(window.OnScreen(), other.OnScreen()) << lines;
    EXPECT_EQ(window.Bar()->value(), other.Bar()->value()) << lines;
  }
}

TEST(ConsoleWindow, WithoutMemoryForItsPictureReportsItAndRecovers) {
  CTestPrompter prompter;
  CTestConsole window(10);
  window.OnSize(1 << 30, 1 << 30);
  EXPECT_EQ(prompter.Take(), std::vector<std::string>{"|Out of Memory!|10"});
  window.Write(1, 1);
  window.OnSize(0, 0);  // no picture is needed
  window.OnSize(300, 200);
  window.Write(2, 2);
  EXPECT_EQ(window.Colours(), Numbers(1, 2));
  EXPECT_TRUE(prompter.Take().empty());
}

}  // namespace
}  // namespace vastra
