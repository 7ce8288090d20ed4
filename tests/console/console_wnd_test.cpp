#include "vastra/console/console_wnd.h"

#include <gtest/gtest.h>

#include <QContextMenuEvent>

#include <numeric>
#include <random>
#include <thread>

#include "tests/console/screen.h"

namespace vastra {
namespace {

std::vector<COLORREF> Numbers(COLORREF first, COLORREF last) {
  std::vector<COLORREF> numbers(last - first + 1);
  std::iota(numbers.begin(), numbers.end(), first);
  return numbers;
}

int PaintsOf(CWnd& window, const std::function<void()>& work) {
  struct CCounter : QObject {
    bool eventFilter(QObject*, QEvent* event) override {
      return paints += event->type() == QEvent::Paint, false;
    }
    int paints = 0;
  } counter;
  window.Client()->installEventFilter(&counter);
  work();
  return counter.paints;
}

TEST(ConsoleWindow, ShowsALineInItsColourWhenWriteReturns) {
  CTestConsole window(10);
  for (const COLORREF colour : {0x0000B4, 0x0082FF, 0x960000, 0x000000}) window.Write("EEEE", colour);
  EXPECT_EQ((std::vector<COLORREF>{0x0000B4, 0x0082FF, 0x960000, 0x000000}), ColoursOf(window));
  EXPECT_EQ(0, BarOf(window)->maximum());
}

TEST(ConsoleWindow, FollowsAndScrollsByFiveLinesWhateverTheToolkitsPageIs) {
  CTestConsole window(10);
  for (int i = 1; i <= 30; ++i) window.Write(i);
  EXPECT_EQ(21, BarOf(window)->value());
  EXPECT_EQ(21, BarOf(window)->maximum());
  EXPECT_EQ(Numbers(22, 30), ColoursOf(window));
  BarOf(window)->triggerAction(QAbstractSlider::SliderPageStepSub);
  EXPECT_EQ(16, BarOf(window)->value());
  EXPECT_EQ(Numbers(17, 26), ColoursOf(window));
  BarOf(window)->triggerAction(QAbstractSlider::SliderSingleStepAdd);
  EXPECT_EQ(Numbers(18, 27), ColoursOf(window));
  BarOf(window)->setSliderPosition(2);  // as a thumb that is drawn
  window.Write(31);
  EXPECT_EQ(Numbers(3, 12), ColoursOf(window));
  // The toolkit's menu, if it comes up, moves the bar without an action.
  QTimer::singleShot(0, [] {
    if (QWidget* menu = QApplication::activePopupWidget())
      QTest::keyClick(menu, Qt::Key_Down), QTest::keyClick(menu, Qt::Key_Return);
  });
  const QPoint middle = BarOf(window)->rect().center();
  QContextMenuEvent asked(QContextMenuEvent::Mouse, middle, BarOf(window)->mapToGlobal(middle));
  QApplication::sendEvent(BarOf(window), &asked);
  QApplication::processEvents();
  EXPECT_EQ(2, BarOf(window)->value());
}

// Letters that reach out of their rows, rows that are half in the picture, steps of all sizes.
TEST(ConsoleWindow, PictureThatWasMovedIsTheOneDrawnAnew) {
  const char* texts[] = {"plain",
                         "gjpqy|_",
                         "Z\xCC\x8C\xCC\x81\xCC\x8C\xCC\x81",
                         "\xE0\xB8\x81\xE0\xB9\x89",
                         "",
                         "a line that is cut off at the right edge of its window, whatever it says"};
  std::mt19937 random(3);
  CTestConsole window(7);
  window.MoveWindow(CRect::Of({0, 0}, {300, window.GetPlace().Height() + 5}));
  for (int step = 0; step < 400; ++step) {
    switch (random() % 20) {
      case 0:
        BarOf(window)->setSliderPosition(static_cast<int>(random() % 200));
        break;
      case 1:
        BarOf(window)->triggerAction(QAbstractSlider::SliderPageStepAdd);
        break;
      case 2:
        if (step % 9 == 0) window.Clear();
        break;
      case 3:
        std::thread([&] {
          for (int i = 0; i < 3; ++i) window.Write(i);
        }).join();
        QApplication::processEvents();
        break;
      default:
        window.Write(texts[random() % 6], random() & 0xFFFFFF);
    }
    const QImage moved = OnScreen(window);
    window.OnSize(window.GetClientRect().Width(), window.GetClientRect().Height());
    window.Client()->repaint();
    ASSERT_EQ(OnScreen(window), moved) << step;
  }
}

TEST(ConsoleWindow, CloseBoxHidesItAndLinesGoOnBeingKept) {
  CTestConsole window(10);
  window.Write(1);
  window.Widget()->close();
  EXPECT_FALSE(window.IsWindowVisible());
  EXPECT_EQ(0, PaintsOf(window, [&] { window.Write(2); }));
  window.ShowWindow(SW_SHOW);
  QApplication::processEvents();
  EXPECT_EQ(Numbers(1, 2), ColoursOf(window));
}

TEST(ConsoleWindow, ThatWasNeverShownFollowsByTheHeightItWillHave) {
  CTestConsole window(10, false);
  for (int i = 1; i <= 30; ++i) window.Write(i);
  window.ShowWindow(SW_SHOW);
  QApplication::processEvents();
  EXPECT_EQ(Numbers(22, 30), ColoursOf(window));
}

TEST(ConsoleWindow, PaintsNothingWhileMinimisedAndAllOfItAfterwards) {
  CTestConsole window(10);
  window.ShowWindow(SW_MINIMIZE);
  EXPECT_EQ(0, PaintsOf(window, [&] {
              for (int i = 1; i <= 12; ++i) window.Write(i);
            }));
  window.ShowWindow(SW_RESTORE);
  QApplication::processEvents();
  EXPECT_EQ(Numbers(4, 12), ColoursOf(window));
}

TEST(ConsoleWindow, LinesOfAWorkerAndOfTheWindowsThreadKeepTheirOrder) {
  CTestConsole window(300);
  window.Write(1);
  std::thread([&] {
    for (int i = 2; i <= 100; ++i) window.Write(i);
  }).join();
  EXPECT_EQ(Numbers(1, 1), ColoursOf(window));
  window.Write(101);
  EXPECT_EQ(Numbers(1, 101), ColoursOf(window));
  QApplication::processEvents();
  std::thread([&] { window.Write(102); }).join();
  QApplication::processEvents();
  EXPECT_EQ(Numbers(1, 102), ColoursOf(window));
}

TEST(ConsoleWindow, LinesOfManyThreadsAtOnceAreAllThereEachThreadsInItsOrder) {
  CTestConsole window(300);
  std::vector<std::thread> workers;
  const auto write = [&window](int writer) {
    for (int i = 0; i < 50; ++i) window.Write(writer << 16 | i);
  };
  for (const int worker : {1, 2, 3}) workers.emplace_back(write, worker);
  write(4);
  for (std::thread& worker : workers) worker.join();
  QApplication::processEvents();
  std::map<COLORREF, COLORREF> next;
  for (const COLORREF colour : ColoursOf(window)) EXPECT_EQ(next[colour >> 16]++, colour & 0xFFFF);
  EXPECT_EQ((std::map<COLORREF, COLORREF>{{1, 50}, {2, 50}, {3, 50}, {4, 50}}), next);
}

TEST(ConsoleWindow, BurstOfAWorkerIsPaintedOnceAndComesOutAsLineByLine) {
  for (const int lines : {3, 50, 199, 201, 1000}) {
    CTestConsole window(10), other(10);
    for (int i = 1; i <= 12; ++i) window.Write(i), other.Write(i);
    BarOf(window)->setSliderPosition(0), BarOf(other)->setSliderPosition(0);
    for (int i = 0; i < lines; ++i) other.Write(i);
    std::thread([&] {
      for (int i = 0; i < lines; ++i) window.Write(i);
    }).join();
    EXPECT_EQ(1, PaintsOf(window, [] { QApplication::processEvents(); })) << lines;
    EXPECT_EQ(OnScreen(other), OnScreen(window)) << lines;
    EXPECT_EQ(BarOf(other)->value(), BarOf(window)->value()) << lines;
  }
}

TEST(ConsoleWindow, WithoutMemoryForItsPictureSaysSoAndComesBackLater) {
  CTestPrompter prompter;
  CTestConsole window(10);
  window.OnSize(1 << 30, 1 << 30);
  EXPECT_EQ(std::vector<std::string>{"|Out of Memory!|10"}, prompter.Take());
  window.Write(1);
  window.OnSize(0, 0);  // no picture is needed
  window.OnSize(300, 200);
  window.Write(2);
  EXPECT_EQ(Numbers(1, 2), ColoursOf(window));
  EXPECT_TRUE(prompter.Take().empty());
}

}  // namespace
}  // namespace vastra
