#include "vastra/ui/window.h"

#include <gtest/gtest.h>

#include <QAbstractScrollArea>
#include <QMenu>
#include <QScrollBar>

#include <thread>

#include "tests/support/windows.h"
#include "vastra/ui/application.h"

namespace vastra {
namespace {

// Records its events.
class CSpy : public CWnd {
 public:
  bool OnPaint(const CRect& dirty) override { return painted = dirty, ++paints, true; }
  void OnSize(int cx, int cy) override { size = {cx, cy}; }
  void OnClose() override { ++closes; }
  bool OnLButtonUp(CPoint point) override { return left = point, true; }
  bool OnLButtonDblClk(CPoint point) override { return doubled = point, true; }
  bool OnRButtonDown(CPoint point) override { return right = point, true; }
  void OnVScroll(UINT code, int position) override { scrolled.push_back({static_cast<int>(code), position}); }
  void OnMessage(UINT message, WPARAM, LPARAM lparam) override { messages.push_back(message * 100 + lparam); }
  void OnTimer(UINT id) override { timers.push_back(id), KillTimer(id); }
  void PostNcDestroy() override { ++gone; }

  CRect painted;
  CSize size;
  CPoint left, doubled, right;
  int paints = 0, closes = 0, gone = 0;
  std::vector<CPoint> scrolled;
  std::vector<std::int64_t> messages;
  std::vector<UINT> timers;
};

constexpr CRect kPlace{30, 40, 330, 240};

TEST(Window, CallsTheHandlersOfItsEvents) {
  CSpy window;
  ASSERT_EQ(window.CreateTopLevel("Title", kPlace, nullptr, CWnd::plain), 1);
  EXPECT_FALSE(window.IsWindowVisible());
  window.ShowWindow(SW_SHOW);
  ASSERT_TRUE(QTest::qWaitForWindowExposed(window.Widget()));
  EXPECT_EQ(window.size, (CSize{300, 200}));
  QTest::mouseClick(window.Client(), Qt::LeftButton, {}, QPoint(5, 6));
  QTest::mouseDClick(window.Client(), Qt::LeftButton, {}, QPoint(7, 8));
  QTest::mousePress(window.Client(), Qt::RightButton, {}, QPoint(9, 10));
  EXPECT_EQ(window.doubled, (CPoint{7, 8}));
  EXPECT_EQ(window.right, (CPoint{9, 10}));
  QTest::mouseRelease(window.Client(), Qt::LeftButton, {}, QPoint(5, 6));
  EXPECT_EQ(window.left, (CPoint{5, 6}));
  window.SetTimer(3, 0);
  QTest::qWait(20);
  EXPECT_EQ(window.timers, std::vector<UINT>{3}) << "a killed timer continues";
  window.Widget()->close();
  EXPECT_EQ(window.closes, 1);
  EXPECT_TRUE(window.IsWindowVisible()) << "OnClose alone decides";
}

TEST(Window, PaintsAtOnceTheInvalidAreaOnly) {
  CSpy window;
  window.CreateTopLevel("", kPlace, nullptr, CWnd::ownGround);
  window.ShowWindow(SW_SHOW);
  ASSERT_TRUE(QTest::qWaitForWindowExposed(window.Widget()));
  window.UpdateWindow();
  window.paints = 0;
  window.UpdateWindow();
  EXPECT_EQ(window.paints, 0);
  window.Invalidate();
  QApplication::processEvents();  // paints, so the window is valid
  window.paints = 0;
  window.InvalidateRect({10, 20, 30, 40});
  window.UpdateWindow();
  EXPECT_EQ(window.paints, 1);
  EXPECT_EQ(window.painted, (CRect{10, 20, 30, 40}));
}

TEST(Window, KeepsItsNormalPlaceInEveryState) {
  CSpy window;
  window.CreateTopLevel("", kPlace, nullptr, CWnd::plain);
  EXPECT_EQ(window.GetNormalPlace(), kPlace) << "never shown";
  for (const int command : {SW_SHOWNORMAL, SW_SHOWMAXIMIZED, SW_SHOWMINIMIZED, SW_HIDE}) {
    window.ShowWindow(command);
    QTest::qWait(10);
    EXPECT_EQ(window.GetNormalPlace(), kPlace) << command;
  }
  window.ShowWindow(SW_SHOWMAXIMIZED);
  window.Widget()->setWindowState(Qt::WindowMinimized);  // some window managers report no more
  EXPECT_EQ(window.GetNormalPlace(), kPlace);
}

TEST(Window, IsDestroyedOnce) {
  CSpy destroyed;
  destroyed.CreateTopLevel("", kPlace, nullptr, CWnd::plain);
  EXPECT_EQ(destroyed.DestroyWindow(), 1);
  EXPECT_EQ(destroyed.DestroyWindow(), 0);
  EXPECT_EQ(destroyed.gone, 1);
  EXPECT_EQ(destroyed.GetSafeHwnd(), nullptr);

  CSpy parent, child;
  parent.CreateTopLevel("", kPlace, nullptr, CWnd::plain);
  child.CreateTopLevel("", kPlace, &parent, CWnd::plain);
  delete parent.Widget();
  EXPECT_EQ(parent.gone, 1);
  EXPECT_EQ(child.gone, 1) << "deleted with its parent";
}

TEST(Window, ClosesTheDialogsOverItWhenItIsDestroyed) {
  const CWindows real;
  CString path;
  COLORREF colour = 0;
  CSpy window;
  const std::function<int()> kOpen[] = {
      [] { return AfxMessageBox("Stay?", MB_OK) - IDCANCEL; },
      [&] { return ChooseFile({}, path); },
      [&] { return ChooseFolder(path); },
      [&] { return ChooseColour(colour); },
      [&] {
        return TrackPopupMenu(window, {10, 10}, {"First"}) + 1;
      },
  };
  for (const auto& open : kOpen) {
    window.CreateTopLevel("", kPlace, nullptr, CWnd::plain);
    window.ShowWindow(SW_SHOW);
    QApplication::processEvents();
    QTimer::singleShot(0, [&] { window.DestroyWindow(); });
    EXPECT_EQ(open(), 0) << &open - kOpen;
  }
}

TEST(Window, ReceivesMessagesInOrderFromAnyThread) {
  CSpy window;
  window.CreateTopLevel("", kPlace, nullptr, CWnd::plain);
  std::thread([&] {
    for (int i = 0; i < 3; ++i) PostMessage(window.GetSafeHwnd(), 7, 0, i);
  }).join();
  EXPECT_TRUE(window.messages.empty());
  QCoreApplication::processEvents();
  EXPECT_EQ(window.messages, (std::vector<std::int64_t>{700, 701, 702}));
  PostMessage(window.GetSafeHwnd(), 8, 0, 0);
  window.DestroyWindow();
  QCoreApplication::processEvents();
  EXPECT_EQ(window.messages.size(), 3u) << "a destroyed window receives no message";
}

TEST(Window, PassesOnTheActionsOfItsScrollBar) {
  CSpy window;
  window.CreateTopLevel("", kPlace, nullptr, CWnd::verticalScrollBar);
  window.ShowWindow(SW_SHOW);
  window.SetScrollRange(0, 50);
  window.SetScrollPos(20);
  window.SetScrollPos(70);
  EXPECT_EQ(window.GetScrollPos(), 50) << "kept in its range";
  QScrollBar* bar = static_cast<QAbstractScrollArea*>(window.Widget())->verticalScrollBar();
  for (const auto action : {QAbstractSlider::SliderSingleStepSub, QAbstractSlider::SliderPageStepAdd,
                            QAbstractSlider::SliderToMinimum})
    bar->triggerAction(action);
  std::vector<int> codes;
  for (const CPoint& event : window.scrolled) codes.push_back(event.x);
  EXPECT_EQ(codes, (std::vector<int>{SB_LINEUP, SB_PAGEDOWN, SB_TOP}));
}

TEST(Window, APopupMenuReturnsTheItemOrNone) {
  CSpy window;
  window.CreateTopLevel("", kPlace, nullptr, CWnd::plain);
  window.ShowWindow(SW_SHOW);
  for (const auto& [key, chosen] : {std::pair(Qt::Key_Return, 1), std::pair(Qt::Key_Escape, -1)}) {
    QTimer::singleShot(0, [key = key] {
      QWidget* menu = QApplication::activePopupWidget();
      QTest::keyClick(menu, Qt::Key_Down);
      QTest::keyClick(menu, Qt::Key_Down);
      QTest::keyClick(menu, key);
    });
    EXPECT_EQ(TrackPopupMenu(window, {10, 10}, {"First", "Second"}), chosen);
  }
}

}  // namespace
}  // namespace vastra
