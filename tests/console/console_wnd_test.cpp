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

TEST(ConsoleWindow, ShowsALineInItsColourWhenWriteReturns) {
  CTestConsole window(10);
  for (const COLORREF colour : {0x0000B4, 0x0082FF, 0x960000, 0x000000}) window.Write("EEEE", colour);
  EXPECT_EQ(ColoursOf(window), (std::vector<COLORREF>{0x0000B4, 0x0082FF, 0x960000, 0x000000}));
  EXPECT_EQ(BarOf(window)->maximum(), 0);
}

TEST(ConsoleWindow, FollowsAndScrollsByFiveLinesWhateverTheToolkitsPageIs) {
  CTestConsole window(10);
  for (int i = 1; i <= 30; ++i) window.Write(i);
  EXPECT_EQ(BarOf(window)->value(), 21);
  EXPECT_EQ(BarOf(window)->maximum(), 21);
  EXPECT_EQ(ColoursOf(window), Numbers(22, 30));
  BarOf(window)->triggerAction(QAbstractSlider::SliderPageStepSub);
  EXPECT_EQ(BarOf(window)->value(), 16);
  EXPECT_EQ(ColoursOf(window), Numbers(17, 26));
  BarOf(window)->triggerAction(QAbstractSlider::SliderSingleStepAdd);
  EXPECT_EQ(ColoursOf(window), Numbers(18, 27));
  BarOf(window)->setSliderPosition(2);  // as a drag of the thumb
  window.Write(31);
  EXPECT_EQ(ColoursOf(window), Numbers(3, 12));
  // The toolkit's menu, if it opens, would move the bar without an action.
  QTimer::singleShot(0, [] {
    if (QWidget* menu = QApplication::activePopupWidget())
      QTest::keyClick(menu, Qt::Key_Down), QTest::keyClick(menu, Qt::Key_Return);
  });
  const QPoint middle = BarOf(window)->rect().center();
  QContextMenuEvent asked(QContextMenuEvent::Mouse, middle, BarOf(window)->mapToGlobal(middle));
  QApplication::sendEvent(BarOf(window), &asked);
  QApplication::processEvents();
  EXPECT_EQ(BarOf(window)->value(), 2);
}

// Letters that leave their rows, rows that are half visible, steps of all sizes.
TEST(ConsoleWindow, PictureThatWasMovedEqualsANewOne) {
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
    ASSERT_EQ(moved, OnScreen(window)) << step;
  }
}

TEST(ConsoleWindow, PaintsNothingWhileItIsNotSeenAndAllLinesAfterwards) {
  const struct {
    bool shown;
    void (*hide)(CTestConsole&);
    int show;
  } kCases[] = {{true, [](CTestConsole& window) { window.Widget()->close(); }, SW_SHOW},
                {true, [](CTestConsole& window) { window.ShowWindow(SW_MINIMIZE); }, SW_RESTORE},
                {false, [](CTestConsole&) {}, SW_SHOW}};
  for (const auto& [shown, hide, show] : kCases) {
    CTestConsole window(10, shown);
    hide(window);
    CPaints paints(window.Client());
    for (int i = 1; i <= 30; ++i) window.Write(i);
    EXPECT_EQ(paints.Take(), 0);
    window.ShowWindow(show);
    QApplication::processEvents();
    EXPECT_EQ(ColoursOf(window), Numbers(22, 30));
  }
}

TEST(ConsoleWindow, LinesOfAWorkerAndOfTheWindowsThreadKeepTheirOrder) {
  CTestConsole window(300);
  window.Write(1);
  std::thread([&] {
    for (int i = 2; i <= 100; ++i) window.Write(i);
  }).join();
  EXPECT_EQ(ColoursOf(window), Numbers(1, 1));
  window.Write(101);
  EXPECT_EQ(ColoursOf(window), Numbers(1, 101));
  QApplication::processEvents();
  std::thread([&] { window.Write(102); }).join();
  QApplication::processEvents();
  EXPECT_EQ(ColoursOf(window), Numbers(1, 102));
}

TEST(ConsoleWindow, LinesOfManyThreadsAreCompleteAndKeepTheOrderOfEachThread) {
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
  for (const COLORREF colour : ColoursOf(window)) EXPECT_EQ(colour & 0xFFFF, next[colour >> 16]++);
  EXPECT_EQ(next, (std::map<COLORREF, COLORREF>{{1, 50}, {2, 50}, {3, 50}, {4, 50}}));
}

TEST(ConsoleWindow, BurstOfAWorkerIsPaintedOnceAndLooksLikeSingleLines) {
  for (const int lines : {3, 50, 199, 201, 1000}) {
    CTestConsole window(10), other(10);
    for (int i = 1; i <= 12; ++i) window.Write(i), other.Write(i);
    BarOf(window)->setSliderPosition(0), BarOf(other)->setSliderPosition(0);
    for (int i = 0; i < lines; ++i) other.Write(i);
    std::thread([&] {
      for (int i = 0; i < lines; ++i) window.Write(i);
    }).join();
    CPaints paints(window.Client());
    QApplication::processEvents();
    EXPECT_EQ(paints.Take(), 1) << lines;
    EXPECT_EQ(OnScreen(window), OnScreen(other)) << lines;
    EXPECT_EQ(BarOf(window)->value(), BarOf(other)->value()) << lines;
  }
}

TEST(ConsoleWindow, WithoutMemoryForItsPictureReportsItAndRecovers) {
  CTestPrompter prompter;
  CTestConsole window(10);
  window.OnSize(1 << 30, 1 << 30);
  EXPECT_EQ(prompter.Take(), std::vector<std::string>{"|Out of Memory!|10"});
  window.Write(1);
  window.OnSize(0, 0);  // no picture is needed
  window.OnSize(300, 200);
  window.Write(2);
  EXPECT_EQ(ColoursOf(window), Numbers(1, 2));
  EXPECT_TRUE(prompter.Take().empty());
}

}  // namespace
}  // namespace vastra
