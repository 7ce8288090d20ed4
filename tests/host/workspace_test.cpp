// The windows of a configuration come back with it.
#include <QLineEdit>
#include <QTableView>

#include "host/desktop/workspace.h"
#include "tests/host/desktop_window.h"
#include "tests/support/names.h"
#include "vastra/views/selection_file.h"

namespace vastra {
namespace {

class Workspace : public Desktop {
 protected:
  // What a workspace of one window restores for path; "closed": it closes the window; "-": it does nothing.
  static std::string Restored(const CString& path) {
    CSettings settings;
    CWorkspace workspace(settings);
    std::string done = "-";
    workspace.Add({"w", [] { return std::nullopt; }, [&](const CString& state) { done = state.Std(); },
                   [&] { done = "closed"; }});
    const bool isStored = workspace.Open(path);
    EXPECT_EQ(isStored, done != "-");
    return done;
  }
  static void Save(const CString& path, const std::optional<CString>& state) {
    CSettings settings;
    CWorkspace workspace(settings);
    workspace.Add({"w", [&] { return state; }, {}, {}});
    workspace.Save(path);
  }
  // The selection of an open window, by its button Save.
  template <class SELECTION>
  SELECTION Selected(CTestWindow& window, const char* title) {
    window.chooser.path = m_dir / "saved";
    Click(TopLevel(title), "Save");
    SELECTION selection;
    EXPECT_EQ(ReadSelection(window.chooser.path, selection), ESelectionFile::good);
    return selection;
  }
  void Load(CTestWindow& window, const char* title, const auto& selection) {
    window.chooser.path = m_dir / "chosen";
    ASSERT_EQ(WriteSelection(window.chooser.path, selection), ESelectionFile::good);
    Click(TopLevel(title), "Load");
  }
};

TEST_F(Workspace, TheNewestConfigurationsAreKeptAndNoBadValueHarms) {
  Save("/first", "1");
  for (int i = 0; i < CWorkspace::kMost - 1; ++i) Save("/c" + CString(std::to_string(i)), "\xE9 \"\n");
  Save("/first", "2");  // it is not the oldest any more
  Save("/next", std::nullopt);
  const std::string many(3'000'000, 'x');  // as of many warnings that were accepted
  Save("/long", CString(many));
  const std::pair<const char*, std::string> cases[] = {{"/first", "2"},     {"/c0", "-"},
                                                       {"/c1", "-"},        {"/c2", "\xC3\xA9 \"\n"},
                                                       {"/next", "closed"}, {"/long", many}};
  for (const auto& [path, done] : cases) EXPECT_TRUE(Restored(path) == done) << path;
  for (const char* bad : {"", "[", "[1]", R"({"path":"/p"})", R"({"path":"/p","windows":7,"used":"x"})",
                          R"({"path":"/p","windows":{"w":1}})"}) {
    CSettings().Set("Workspace3", bad);
    const std::string done = Restored("/p");
    EXPECT_TRUE(done == "closed" || done == "-") << bad;
  }
}

TEST_F(Workspace, TheWindowsOfAConfigurationComeBackWithTheirChoices) {
  const CString other = m_dir / "other.json";
  WriteBytes(other, Configuration(kSimulator));
  const CTrendSelection curves = {{{"c", -1, 7, RGB(1, 2, 3)}, {"a", 0, 5, RGB(9, 8, 7)}}, 1};
  QRect place;
  {
    CTestWindow window(m_demo);
    for (const char* action : {"Values", "Trend", "Scan Grid", "Messages", "Message Log"})
      ActionOf(window, action)->trigger();
    Find<QLineEdit>(TopLevel("Values"), "Search")->setText("a");
    TopLevel("Trending")->resize(450, 360);
    TopLevel("Trending")->move(120, 90);
    Load(window, "Trending", curves);
    Load(window, "Scan Screen", Names({"b"}));
    ActionOf(window, "Check")->trigger();
    Part(window, "Outputs")->setExpanded(false);
    QTest::qWait(300);
    place = TopLevel("Trending")->geometry();

    ASSERT_TRUE(window.Open(other));
    EXPECT_TRUE(TopLevel("Trending")) << "another configuration without a workspace closes nothing";
    for (const char* title : {"Values", "Messages", "Message Log"}) TopLevel(title)->close();
    for (const char* title : {"Trending", "Scan Screen"}) Click(TopLevel(title), "Cancel");
    window.StopAndQuit();
  }
  CTestWindow window(m_demo);
  for (const char* title : {"Values", "Trending", "Scan Screen", "Messages", "Message Log", "Check"})
    ASSERT_TRUE(TopLevel(title)) << title;
  EXPECT_EQ(Find<QLineEdit>(TopLevel("Values"), "Search")->text(), "a");
  EXPECT_EQ(TopLevel("Trending")->geometry(), place);
  EXPECT_EQ(Selected<CTrendSelection>(window, "Trending").curves, curves.curves);
  EXPECT_EQ(Selected<CTrendSelection>(window, "Trending").scaleIndex, 1u);
  EXPECT_EQ(Selected<CStringArray>(window, "Scan Screen"), Names({"b"}));
  EXPECT_FALSE(Part(window, "Outputs")->isExpanded());
  ASSERT_TRUE(window.Open(other));
  for (const char* title : {"Values", "Trending", "Scan Screen", "Messages", "Message Log", "Check"})
    EXPECT_FALSE(TopLevel(title)) << title;
}

TEST_F(Workspace, AVariableThatIsGoneIsTold) {
  {
    CTestWindow window(m_demo);
    ActionOf(window, "Trend")->trigger();
    Load(window, "Trending", CTrendSelection{{{"c", 0, 1, 0}, {"a", 0, 1, 0}}, 0});
    window.StopAndQuit();
  }
  std::string text = Configuration(kSimulator);
  text.replace(text.find(R"("extraVars": ["c"], "equationText": "c = a)"), 43,
               R"("extraVars": ["d"], "equationText": "d = a)");
  WriteBytes(m_demo, text);
  CTestWindow window(m_demo);
  EXPECT_EQ(Selected<CTrendSelection>(window, "Trending").curves.size(), 1u);
  ActionOf(window, "Message Log")->trigger();
  EXPECT_TRUE(Wait([] {
    return Logged(TopLevel("Message Log"), nullptr, "Some variables had to be removed from the trending.") ==
           1;
  }));
}

}  // namespace
}  // namespace vastra
