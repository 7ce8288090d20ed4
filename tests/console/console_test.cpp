#include "vastra/console/console.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QWidget>

#include <atomic>
#include <thread>

#include "tests/support/files.h"
#include "vastra/console/console_wnd.h"

namespace vastra {
namespace {

constexpr const char* kKey = "Software\\Vastra\\Console";

// Each test has its own settings and its own manager of consoles.
class Console : public testing::Test {
 protected:
  Console() { qputenv("XDG_CONFIG_HOME", m_settings.Path().Std().c_str()); }
  ~Console() override { CConsole::Release(); }

  static CString Kept() {
    SECRegistry registry;
    registry.OpenUserKey(kKey);
    return registry.GetString("Console3", "nothing");
  }
  static QWidget* WindowOf(const char* title) {
    for (QWidget* widget : QApplication::topLevelWidgets())
      if (widget->windowTitle() == title) return widget;
    return nullptr;
  }
  static std::string PlaceOf(const char* title) {
    const QWidget* window = WindowOf(title);
    return CConsolePlace{window->x(), window->y(), window->width(), window->height()}.ToText().Std();
  }
  // The console id with a window of the same place.
  CConsole& Open(UINT id, const char* title) {
    EXPECT_EQ(CConsole::Instance()->Create(id, title, 10, 20, 300, 200, nullptr), 1);
    return *CConsole::Instance();
  }

  CTempDir m_settings;
};

TEST_F(Console, AnIdHasOneWindowAndAnUnknownIdNone) {
  CConsole& console = Open(0, "first");
  EXPECT_EQ(console.Create(0, "second", 1, 2, 3, 4, nullptr), 0);
  CString name = "untouched";
  EXPECT_EQ(console.Write(7, "lost", 0, 0) + console.ShowWindow(7, SW_SHOW) + console.IsOnTop(7) +
                console.GetWindowName(7, name) + console.SetWindowName(7, "x") + console.Destroy(7),
            0);
  console.Clear(7), console.AlwaysOnTop(7, 1);
  EXPECT_EQ(name, "untouched");
  EXPECT_EQ(console.GetWindowName(0, name), 1);
  EXPECT_EQ(name, "first");
  EXPECT_FALSE(WindowOf("first")->isVisible());
  EXPECT_EQ(console.ShowWindow(0, SW_SHOW) + console.SetWindowName(0, "renamed"), 2);
  EXPECT_TRUE(WindowOf("renamed")->isVisible());
  std::thread([] {
    EXPECT_EQ(WriteToConsole(0, "line", 0, 0) + 2 * WriteToConsole(1, "line", 0, 0), 1);
  }).join();
}

TEST_F(Console, KeptPlaceOverridesTheCallersAndIsSavedAtTheEnd) {
  CConsole& console = Open(3, "a");
  WindowOf("a")->setGeometry(70, 80, 400, 250);
  EXPECT_EQ(console.Destroy(3), 1);
  EXPECT_EQ(Kept(), "10,20,300,200");
  SECRegistry registry;
  registry.OpenUserKey(kKey);
  registry.SetString("Console3", "30,40,spoiled");
  Open(3, "b");
  EXPECT_EQ(PlaceOf("b"), "30,40,300,200");
  EXPECT_EQ(Kept(), "30,40,spoiled");
  console.ShowWindow(3, SW_SHOW);
  WindowOf("b")->move(50, 60), WindowOf("b")->resize(310, 210);
  console.ShowWindow(3, SW_SHOWMAXIMIZED);
  CConsole::Release();
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  EXPECT_EQ(Kept(), "50,60,310,210") << "where it was before it was maximised";
  EXPECT_FALSE(WindowOf("b"));
  EXPECT_EQ(WriteToConsole(3, "lost", 0, 0), 0);
  qputenv("XDG_CONFIG_HOME", "/dev/null");
  Open(3, "without settings");
  EXPECT_EQ(PlaceOf("without settings"), "10,20,300,200");
}

// The process that ends is a child; an environment variable has the path of its settings.
TEST_F(Console, PlacesAreSavedAtTheEndOfTheProcess) {
  testing::GTEST_FLAG(death_test_style) = "threadsafe";
  if (!qEnvironmentVariableIsSet("SETTINGS_OF_TEST"))
    qputenv("SETTINGS_OF_TEST", m_settings.Path().Std().c_str());
  for (const bool endsFirst : {true, false}) {  // the application before the process
    const auto run = [&] {
      qputenv("XDG_CONFIG_HOME", qgetenv("SETTINGS_OF_TEST"));
      Open(3, "left").ShowWindow(3, SW_SHOW);
      WindowOf("left")->move(endsFirst, 60);
      if (endsFirst) qApp->~QApplication();
      std::exit(Kept() == "1,60,300,200");
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(1), "");
  }
  qunsetenv("SETTINGS_OF_TEST");
  EXPECT_EQ(Kept(), "0,60,300,200");
}

TEST_F(Console, OnTopChangesNothingElseOfTheWindow) {
  CConsole& console = Open(1, "top");
  console.ShowWindow(1, SW_SHOW);
  EXPECT_EQ(console.IsOnTop(1), 0);
  for (const int onTop : {7, 0}) {
    console.AlwaysOnTop(1, onTop);
    EXPECT_EQ(console.IsOnTop(1), onTop != 0);
    EXPECT_EQ((WindowOf("top")->windowFlags() & Qt::WindowStaysOnTopHint) != 0, onTop != 0);
    EXPECT_TRUE(WindowOf("top")->isVisible());
    EXPECT_EQ(PlaceOf("top"), "10,20,300,200");
  }
}

TEST_F(Console, WindowIsDestroyedWhileAWorkerWritesToIt) {
  CConsole::Instance();
  std::atomic<bool> ended = false;
  std::atomic<int> writes = 0;
  std::thread worker([&] {
    const CString text(std::string(1 << 20, 'x'));  // its copy takes long
    for (; !ended; ++writes) WriteToConsole(0, text, 0, 0), std::this_thread::yield();
  });
  for (int i = 0; i < 50; ++i) {
    CConsole& console = Open(0, "zero");
    std::this_thread::sleep_for(std::chrono::microseconds(i));
    EXPECT_EQ(console.Destroy(0), 1);
    for (const int before = writes; writes == before;) std::this_thread::yield();
    QApplication::processEvents();
  }
  ended = true;
  worker.join();
}

}  // namespace
}  // namespace vastra
