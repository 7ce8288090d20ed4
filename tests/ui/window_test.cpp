#include "vastra/ui/window.h"

#include <thread>

#include "tests/support/windows.h"
#include "vastra/ui/application.h"

namespace vastra {
namespace {

constexpr CRect kPlace{30, 40, 330, 240};

// Notes its events.
class CSpy : public CWnd {
 public:
  explicit CSpy(int style = plain) { CreateTopLevel("", kPlace, nullptr, style); }
  bool OnPaint(const CRect& dirty) override { return painted.push_back(dirty), true; }
  void OnSize(int cx, int cy) override { size = {cx, cy}; }
  void OnClose() override { Note("close"); }
  bool OnLButtonUp(CPoint point) override { return Note("left", point.x, point.y); }
  bool OnLButtonDblClk(CPoint point) override { return Note("double", point.x, point.y); }
  bool OnRButtonDown(CPoint point) override { return Note("right", point.x, point.y); }
  bool OnKeyDown(UINT key) override { return Note("key", key); }
  void OnMessage(UINT message, WPARAM, LPARAM lparam) override { Note("message", message, lparam); }
  void OnTimer(UINT id) override { Note("timer", id), KillTimer(id); }
  void PostNcDestroy() override { Note("gone"); }

  bool Note(const std::string& event, std::int64_t a = 0, std::int64_t b = 0) {
    events += event + " " + std::to_string(a) + " " + std::to_string(b) + "|";
    return true;
  }
  std::string Take() { return std::exchange(events, {}); }

  std::vector<CRect> painted;
  CSize size;
  std::string events;
};

TEST(Window, CallsTheHandlersOfItsEventsUntilItIsDestroyed) {
  CSpy window;
  EXPECT_FALSE(window.IsWindowVisible());
  window.ShowWindow(SW_SHOW);
  ASSERT_TRUE(QTest::qWaitForWindowExposed(window.Widget()));
  EXPECT_EQ(window.size, (CSize{300, 200}));
  QTest::mouseClick(window.Client(), Qt::LeftButton, {}, {5, 6});
  QTest::mouseDClick(window.Client(), Qt::LeftButton, {}, {7, 8});
  QTest::mousePress(window.Client(), Qt::RightButton, {}, {9, 10});
  EXPECT_EQ(window.Take(), "left 5 6|double 7 8|right 9 10|");
  for (const Qt::Key key : {Qt::Key_PageUp, Qt::Key_PageDown, Qt::Key_Menu, Qt::Key_F10, Qt::Key_A})
    QTest::keyClick(window.Widget(), key);
  QTest::keyClick(window.Widget(), Qt::Key_F10, Qt::ShiftModifier);
  EXPECT_EQ(window.Take(), "key 33 0|key 34 0|key 93 0|key 93 0|");
  for (int twice = 0; twice < 2; ++twice) window.SetTimer(3, 0);
  QTest::qWait(20);
  EXPECT_EQ(window.Take(), "timer 3 0|") << "a replaced or a killed timer continues";
  std::thread([&] {
    for (int i = 0; i < 3; ++i) PostMessage(window.GetSafeHwnd(), 7, 0, i);
  }).join();
  EXPECT_EQ(window.Take(), "");
  QCoreApplication::processEvents();
  EXPECT_EQ(window.Take(), "message 7 0|message 7 1|message 7 2|");
  window.Widget()->close();
  EXPECT_TRUE(window.IsWindowVisible()) << "OnClose alone decides";
  PostMessage(window.GetSafeHwnd(), 8, 0, 0);
  EXPECT_EQ(window.DestroyWindow(), 1);
  EXPECT_EQ(window.DestroyWindow(), 0);
  QCoreApplication::processEvents();
  EXPECT_EQ(window.GetSafeHwnd(), nullptr);
  EXPECT_EQ(window.Take(), "close 0 0|gone 0 0|");
}

TEST(Window, PaintsAtOnceTheInvalidAreaOnly) {
  CSpy window(CWnd::ownGround);
  window.ShowWindow(SW_SHOW);
  window.Invalidate();
  QApplication::processEvents();  // paints, so the window is valid
  window.painted.clear();
  window.UpdateWindow();
  window.InvalidateRect({10, 20, 30, 40});
  window.UpdateWindow();
  EXPECT_EQ(window.painted, (std::vector<CRect>{{10, 20, 30, 40}}));
}

TEST(Window, KeepsItsNormalPlaceInEveryState) {
  CSpy window;
  EXPECT_EQ(window.GetNormalPlace(), kPlace) << "never shown";
  for (const int command : {SW_SHOWNORMAL, SW_SHOWMAXIMIZED, SW_SHOWMINIMIZED, SW_HIDE, SW_SHOWMAXIMIZED}) {
    window.ShowWindow(command);
    QTest::qWait(10);
    EXPECT_EQ(window.GetNormalPlace(), kPlace) << command;
  }
  window.Widget()->setWindowState(Qt::WindowMinimized);  // some window managers report no more
  EXPECT_EQ(window.GetNormalPlace(), kPlace);
}

TEST(Window, ClosesTheDialogsOverItWhenItIsDestroyed) {
  const CWindows real;
  CString path;
  COLORREF colour = 0;
  const std::function<int(CWnd&)> kOpen[] = {[](CWnd&) { return AfxMessageBox("Stay?", MB_OK) - IDCANCEL; },
                                             [&](CWnd&) { return ChooseFile({}, path); },
                                             [&](CWnd&) { return ChooseFolder(path); },
                                             [&](CWnd&) { return ChooseColour(colour); },
                                             [](CWnd& window) {
                                               return TrackPopupMenu(window, {9, 9}, {"First"}) + 1;
                                             }};
  for (const auto& open : kOpen) {
    CSpy window;
    window.ShowWindow(SW_SHOW);
    QApplication::processEvents();
    QTimer::singleShot(0, [&] { window.DestroyWindow(); });
    EXPECT_EQ(open(window), 0) << &open - kOpen;
  }
}

}  // namespace
}  // namespace vastra
