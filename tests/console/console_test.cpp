#include "vastra/console/console.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "tests/console/screen.h"
#include "tests/support/files.h"

namespace vastra {
namespace {

constexpr const char* kKey = "Software\\Vastra\\Console";

// Each test has its own settings and its own manager of consoles.
class Console : public testing::Test {
 protected:
  Console() { qputenv("XDG_CONFIG_HOME", m_settings.Path().Std().c_str()); }
  ~Console() override { CConsole::Release(); }

  static std::string Kept(const char* name) {
    SECRegistry registry;
    registry.OpenUserKey(kKey);
    return registry.GetString(name, "nothing").Std();
  }
  static QWidget* WindowOf(const char* title) {
    for (QWidget* widget : QApplication::topLevelWidgets())
      if (widget->windowTitle() == title) return widget;
    return nullptr;
  }
  static std::string PlaceOf(const char* title) {
    const QRect place(WindowOf(title)->pos(), WindowOf(title)->size());
    return CConsolePlace{place.x(), place.y(), place.width(), place.height()}.ToText().Std();
  }
  // Also deletes the widgets, which the toolkit would do later.
  static void EndRun() {
    CConsole::Release();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  }

  CTempDir m_settings;
};

TEST_F(Console, AnIdHasOneWindowAndAnUnknownIdNone) {
  CConsole& console = *CConsole::Instance();
  EXPECT_EQ(console.Create(0, "first", 10, 20, 300, 200, nullptr), 1);
  EXPECT_EQ(console.Create(0, "second", 1, 2, 3, 4, nullptr), 0);
  CString name = "untouched";
  EXPECT_EQ(console.Write(7, "lost", 0, 0) + console.ShowWindow(7, SW_SHOW) + console.IsOnTop(7) +
                console.GetWindowName(7, name) + console.SetWindowName(7, "x") + console.Destroy(7),
            0);
  console.Clear(7), console.AlwaysOnTop(7, 1);
  EXPECT_EQ(name.Std(), "untouched");
  EXPECT_EQ(console.IsOnTop(0), 0);
  EXPECT_EQ(console.GetWindowName(0, name), 1);
  EXPECT_EQ(name.Std(), "first");
  EXPECT_FALSE(WindowOf("first")->isVisible());
  EXPECT_EQ(console.ShowWindow(0, SW_SHOW), 1);
  EXPECT_TRUE(WindowOf("first")->isVisible());
  EXPECT_EQ(console.SetWindowName(0, "renamed"), 1);
  EXPECT_TRUE(WindowOf("renamed"));
  int written = 0;
  std::thread([&] {
    written = WriteToConsole(0, "line", 0, 0) + 2 * WriteToConsole(1, "line", 0, 0);
  }).join();
  EXPECT_EQ(written, 1);
}

TEST_F(Console, KeptPlaceOverridesTheCallersWhichIsKeptTheFirstTime) {
  CConsole& console = *CConsole::Instance();
  console.Create(3, "a", 10, 20, 300, 200, nullptr);
  EXPECT_EQ(Kept("Console3"), "10,20,300,200");
  WindowOf("a")->setGeometry(70, 80, 400, 250);
  EXPECT_EQ(console.Destroy(3), 1);
  EXPECT_EQ(Kept("Console3"), "10,20,300,200");
  console.Create(3, "b", 1, 2, 150, 160, nullptr);
  EXPECT_EQ(PlaceOf("b"), "10,20,300,200");
  SECRegistry registry;
  registry.OpenUserKey(kKey);
  registry.SetString("Console4", "30,40,spoiled");
  console.Create(4, "c", 1, 2, 150, 160, nullptr);
  EXPECT_EQ(PlaceOf("c"), "30,40,150,160");
  EXPECT_EQ(Kept("Console4"), "30,40,spoiled");
}

TEST_F(Console, PlacesAreSavedInEveryStateOfTheWindows) {
  const struct {
    const char* title;
    std::vector<int> commands;
  } kCases[] = {{"never shown", {}},
                {"shown", {SW_SHOW}},
                {"hidden", {SW_SHOW, SW_HIDE}},
                {"minimised", {SW_SHOW, SW_MINIMIZE}},
                {"maximised", {SW_SHOW, SW_SHOWMAXIMIZED}},
                {"minimised from large", {SW_SHOW, SW_SHOWMAXIMIZED, SW_MINIMIZE}}};
  UINT id = 0;
  for (const auto& c : kCases) {
    CConsole::Instance()->Create(id, c.title, 10, 20, 300, 200, nullptr);
    if (!c.commands.empty()) CConsole::Instance()->ShowWindow(id, SW_SHOW);
    WindowOf(c.title)->move(50, 60), WindowOf(c.title)->resize(310, 210);
    QApplication::processEvents();
    for (const int command : c.commands)
      CConsole::Instance()->ShowWindow(id, command), QApplication::processEvents();
    ++id;
  }
  EndRun();
  for (UINT i = 0; i < id; ++i)
    EXPECT_EQ(Kept(("Console" + std::to_string(i)).c_str()), "50,60,310,210") << kCases[i].title;
  EXPECT_FALSE(WindowOf("shown"));
  EXPECT_EQ(WriteToConsole(0, "lost", 0, 0), 0);
}

// The process that ends is a child; an environment variable has the path of its settings.
TEST_F(Console, PlacesAreSavedAtTheEndOfTheProcess) {
  testing::GTEST_FLAG(death_test_style) = "threadsafe";
  if (!qEnvironmentVariableIsSet("SETTINGS_OF_TEST"))
    qputenv("SETTINGS_OF_TEST", m_settings.Path().Std().c_str());
  const auto run = [this](const std::function<void()>& end) {
    std::filesystem::remove_all(m_settings.Path().Std());
    qputenv("XDG_CONFIG_HOME", qgetenv("SETTINGS_OF_TEST"));
    CConsole::Instance()->Create(1, "left", 10, 20, 300, 200, nullptr);
    CConsole::Instance()->ShowWindow(1, SW_SHOW);
    WindowOf("left")->move(50, 60);
    end();
  };
  const auto isKept = [] {
    const CString path = CString(qgetenv("SETTINGS_OF_TEST").constData()) + "/vastra/settings.ini";
    return ReadBytes(path).find("50,60,300,200") != std::string::npos;
  };
  EXPECT_EXIT(run([&] { qApp->~QApplication(), std::exit(isKept()); }), testing::ExitedWithCode(1), "");
  std::filesystem::remove_all((m_settings / "vastra").Std());
  EXPECT_EXIT(run([] { std::exit(0); }), testing::ExitedWithCode(0), "");
  EXPECT_TRUE(isKept());
}

TEST_F(Console, WithoutSettingsUsesTheCallersNumbers) {
  qputenv("XDG_CONFIG_HOME", "/dev/null");
  CConsole::Instance()->Create(1, "bare", 10, 20, 300, 200, nullptr);
  EXPECT_EQ(PlaceOf("bare"), "10,20,300,200");
  EndRun();
}

TEST_F(Console, OnTopChangesNothingElseOfTheWindow) {
  CConsole& console = *CConsole::Instance();
  console.Create(1, "top", 10, 20, 300, 200, nullptr);
  console.ShowWindow(1, SW_SHOW);
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
  std::thread worker([&] {
    while (!ended) WriteToConsole(0, "line", 0, 0);
  });
  for (int i = 0; i < 50; ++i) {
    CConsole::Instance()->Create(0, "zero", 0, 0, 300, 200, nullptr);
    EXPECT_EQ(CConsole::Instance()->Destroy(0), 1);
    QApplication::processEvents();
  }
  ended = true;
  worker.join();
  EXPECT_EQ(WriteToConsole(0, "line", 0, 0), 0);
}

}  // namespace
}  // namespace vastra
