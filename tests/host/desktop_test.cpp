// The desktop host: real windows, real stages, the simulator and a driver that lets one wait.
#include <gtest/gtest.h>

#include <QClipboard>
#include <QDialog>
#include <QFileDialog>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QScreen>
#include <QTreeWidget>

#include <filesystem>
#include <map>

#include "host/common/configuration_file.h"
#include "tests/host/desktop_window.h"
#include "tests/support/recorder.h"
#include "vastra/console/console.h"
#include "vastra/core/link.h"

namespace vastra {
namespace {

// A runner with what it tells.
struct CRunning {
  explicit CRunning(const std::string& json, const CString& folder) {
    EXPECT_EQ(ParseConfiguration(json, folder, configuration), "");
    runner.SetConfiguration(configuration, configuration.m_trend);
  }
  bool Reaches(CRunner::EState state) {
    return QTest::qWaitFor([&] { return runner.State() == state; }, 20000);
  }

  CRecorder recorder;
  CConfiguration configuration;
  int failed = 0, refreshed = 0, ticks = 0;
  CRunMessenger messenger;
  CRunner runner{{[] {}, [this] { ++failed; }, [this] { ++refreshed; }, [this] { ++ticks; }, {}}, messenger};
};

TEST(DesktopRunner, ViewsAreRefreshedWithTheScansButNotOftenerThanTheyCanDraw) {
  const struct {
    UINT scan, refresh;
  } cases[] = {{5000, 5000}, {50, 50}, {49, 98}, {25, 50}, {20, 60}, {1, 50}, {0, 100}};
  for (const auto& [scan, refresh] : cases) EXPECT_EQ(CRunner::RefreshPeriodOf(scan), refresh) << scan;
}

TEST_F(Desktop, ARunWritesWhatItReadAndStopsWhereverItIs) {
  CRunning run(Configuration(kSimulator), m_dir.Path());
  run.runner.Start();
  EXPECT_EQ(run.runner.State(), CRunner::EState::starting);
  ASSERT_TRUE(run.Reaches(CRunner::EState::running));
  ASSERT_TRUE(Wait([&] { return run.runner.Run().Counts().scans.read >= 30; }));
  EXPECT_GT(run.refreshed, 2);
  EXPECT_LT(run.refreshed, 30) << "each scan draws";
  EXPECT_GT(run.ticks, 0);
  run.runner.Stop();
  ASSERT_TRUE(run.Reaches(CRunner::EState::stopped));
  EXPECT_EQ(Rows(), run.runner.Run().Counts().scans.read);

  run.runner.Start();
  run.runner.Stop();  // before it is open
  EXPECT_TRUE(run.Reaches(CRunner::EState::stopped));
  EXPECT_EQ(run.failed, 0);
}

TEST_F(Desktop, AStageThatDoesNotOpenIsNamed) {
  CRunning run(Configuration(R"({"plcType": 1})"), m_dir.Path());
  run.runner.Start();
  ASSERT_TRUE(run.Reaches(CRunner::EState::stopped));
  EXPECT_EQ(run.failed, 1);
  EXPECT_EQ(run.runner.Run().OpenFault().Find("input: the stage does not open: input.plcNodes: "), 0);
}

// Whatever the PLC lets one wait for, the window goes on meanwhile.
TEST_F(Desktop, TheWindowNeverWaitsForAPlc) {
  CRunning run(Configuration(R"({"plcType": 9077, "value1": 500, "value2": 500, "value3": 500})"),
               m_dir.Path());
  std::map<std::string, int> beats;
  QTimer beat;
  QObject::connect(&beat, &QTimer::timeout, [&] {
    const bool isReading = run.runner.State() == CRunner::EState::running && run.runner.Run().IsPending();
    ++beats[isReading                                         ? "reading"
            : run.runner.State() == CRunner::EState::starting ? "opening"
            : run.runner.State() == CRunner::EState::stopping ? "closing"
                                                              : "else"];
  });
  beat.start(10);
  run.runner.Start();
  ASSERT_TRUE(run.Reaches(CRunner::EState::running));
  ASSERT_TRUE(Wait([&] { return run.runner.Run().Counts().scans.read >= 1; }));
  run.runner.Stop();
  ASSERT_TRUE(run.Reaches(CRunner::EState::stopped));
  for (const char* phase : {"opening", "reading", "closing"}) EXPECT_GT(beats[phase], 5) << phase;
}

TEST_F(Desktop, AWindowMayGoWhileTheLoggerRuns) {
  CTestPrompter boxes;
  auto window = std::make_unique<CMainWindow>();
  ASSERT_TRUE(window->Open(m_dir / "demo.json"));
  window->Start();
  EXPECT_TRUE(Wait([&] { return Samples(*window) > 0; }));
  window.reset();
  QCoreApplication::processEvents();
  EXPECT_GT(Rows(), 0u) << "what was in memory is lost";
}

TEST_F(Desktop, ADocumentThatCannotBeReadChangesNothing) {
  CDocument document;
  ASSERT_EQ(document.Open(m_dir / "demo.json"), "");
  WriteBytes(m_dir / "bad.json", "{\"version\": 7}");
  EXPECT_EQ(document.Open(m_dir / "bad.json").Left(m_dir.Path().GetLength()), m_dir.Path());
  EXPECT_EQ(document.Path(), m_dir / "demo.json");
  EXPECT_EQ(document.Configuration().m_outputs.m_outputs.GetCount(), 1);
}

TEST_F(Desktop, WhatTheViewsChangedIsSavedInEitherForm) {
  for (const char* name : {"saved.json", "saved.vst"}) {
    CDocument document;
    ASSERT_EQ(document.Open(m_dir / "demo.json"), "");
    document.Configuration().m_trend.m_baseVars.Add("a");  // as the host does
    document.Configuration().m_trend.m_extraVars.Add("d");
    document.TrendChanged();
    EXPECT_TRUE(document.IsChanged());
    ASSERT_EQ(document.Save(m_dir / name), "");
    EXPECT_FALSE(document.IsChanged());
    CDocument again;
    ASSERT_EQ(again.Open(m_dir / name), "");
    EXPECT_EQ(again.Configuration().m_trend.m_extraVars.GetSize(), 2) << name;
    EXPECT_EQ(again.Configuration().m_trend.m_baseVars.GetSize(), 0)
        << "the names of the input are no setting";
  }
  CDocument document;
  EXPECT_NE(document.Save(m_dir / "no/such/folder.json"), "");
  document.Configuration().m_plcWrite.m_disableWriting = 1;
  ASSERT_EQ(document.Save(m_dir / "x.json"), "");
  EXPECT_EQ(document.Lost().GetSize(), 0);
  ASSERT_EQ(document.Save(m_dir / "x.vst"), "");
  EXPECT_EQ(document.Lost().GetSize(), 1) << "the file cannot hold that writing is disabled";
}

TEST_F(Desktop, SettingsKeepTheNewestFilesOnceAndNoBadPlace) {
  CSettings settings;
  for (const char* path : {"a", "b", "a", "c", "d", "e", "f", "g", "h", "i"}) settings.AddRecent(path);
  std::string all;
  for (const CString& path : CSettings().Recent()) all += path.Std();
  EXPECT_EQ(all, "ihgfedca");
  const struct {
    const char* value;
    bool isPlace;
  } cases[] = {{"1,2,30,40", true}, {"", false}, {"1,2,3", false}, {"1,2,0,40", false}, {"x", false}};
  for (const auto& [value, isPlace] : cases) {
    settings.Set("Place", value);
    CRect place{9, 9, 9, 9};
    EXPECT_EQ(settings.GetPlace("Place", place), isPlace) << value;
    EXPECT_EQ(place, isPlace ? CRect({1, 2, 31, 42}) : CRect({9, 9, 9, 9}));
  }
}

TEST_F(Desktop, TheWindowRunsAConfigurationAndAsksBeforeItStops) {
  CMainWindow window;
  CTestPrompter boxes;
  window.show();
  EXPECT_FALSE(ActionOf(window, "Start")->isEnabled());
  EXPECT_FALSE(window.Open(m_dir / "missing.json"));
  ASSERT_EQ(boxes.asked.size(), 1u);
  EXPECT_NE(boxes.Take()[0].find("missing.json: "), std::string::npos);
  ASSERT_TRUE(window.Open(m_dir / "demo.json"));
  ActionOf(window, "Start")->trigger();
  ASSERT_TRUE(Wait([&] { return HasStatus(window, "Running"); }));
  EXPECT_FALSE(ActionOf(window, "Open...")->isEnabled());
  ActionOf(window, "Trend")->trigger();
  ActionOf(window, "Scan Grid")->trigger();
  ASSERT_TRUE(Wait(
      [&] { return window.findChildren<QDialog*>().size() + QApplication::topLevelWidgets().size() > 3; }));

  boxes.answer = IDNO;
  window.close();
  EXPECT_EQ(boxes.Take(), std::vector<std::string>{"|The logger is running. Stop it and quit?|124"});
  EXPECT_TRUE(HasStatus(window, "Running"));

  ActionOf(window, "Stop")->trigger();
  ASSERT_TRUE(Wait([&] { return HasStatus(window, "Stopped"); }));
  EXPECT_GT(Rows(), 0u);
  EXPECT_TRUE(HasStatus(window, " samples, 0 failed reads, "));
  EXPECT_EQ(boxes.Take(), std::vector<std::string>{});
}

TEST_F(Desktop, AViewDoesNotGoWithTheOneThatWasActiveWhenItOpened) {
  CMainWindow window;
  window.show();
  ASSERT_TRUE(window.Open(m_dir / "demo.json"));
  ActionOf(window, "Trend")->trigger();
  ASSERT_TRUE(TopLevel("Trending"));
  TopLevel("Trending")->activateWindow();
  ASSERT_TRUE(Wait([] { return QApplication::activeWindow() == TopLevel("Trending"); }));
  QTest::keyClick(TopLevel("Trending"), Qt::Key_2, Qt::ControlModifier);
  ASSERT_TRUE(TopLevel("Scan Screen")) << "the key does not work here";
  Click(TopLevel("Trending"), "Cancel");
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  EXPECT_FALSE(TopLevel("Trending"));
  EXPECT_TRUE(TopLevel("Scan Screen"));
}

TEST_F(Desktop, AViewComesBackOntoTheScreen) {
  CSettings().SetPlace("TrendPlace", {5000, -3000, 5500, -2600});
  CMainWindow window;
  ASSERT_TRUE(window.Open(m_dir / "demo.json"));
  ActionOf(window, "Trend")->trigger();
  ASSERT_TRUE(TopLevel("Trending"));
  EXPECT_TRUE(window.screen()->geometry().contains(TopLevel("Trending")->geometry().center()));
}

TEST_F(Desktop, FilesAreChosenWhereTheProgramWasStarted) {
  const std::filesystem::path former = std::filesystem::current_path();
  std::filesystem::current_path(m_dir.Path().Std());
  CMainWindow window;
  std::filesystem::current_path(former);  // as a run does that looks for drivers
  CString path;
  WhileModal([&] { ChooseFile({}, path); },
             [&](QWidget* dialog) {
               EXPECT_EQ(qobject_cast<QFileDialog*>(dialog)->directory(), QDir(m_dir.Path().Std().c_str()));
             });
}

TEST_F(Desktop, TheProgramEndsWithEveryWindowOpen) {
  CMainWindow window;
  window.show();
  ASSERT_TRUE(window.Open(m_dir / "demo.json"));
  window.Start();
  ASSERT_TRUE(Wait([&] { return HasStatus(window, "Running"); }));
  for (const char* view : {"Trend", "Scan Grid", "Messages", "Report"}) ActionOf(window, view)->trigger();
  QTimer::singleShot(0, &window, [&] { window.StopAndQuit(); });
  QTimer::singleShot(20000, &window, [] { QApplication::exit(1); });
  EXPECT_EQ(QApplication::exec(), 0) << "a window that does not close keeps it";
  EXPECT_TRUE(HasStatus(window, "Stopped"));
}

// As the dialog of a view does.
void AddExtraVariable(CMainWindow& window) {
  window.Trendings().GetOptions()->m_extraVars.Add("d");
  window.Trendings().OptionsChanged();
}

TEST_F(Desktop, ChangesAreNotLostWithoutAQuestion) {
  const struct {
    int answer;
    bool quits, isSaved;
  } cases[] = {{IDCANCEL, false, false}, {IDNO, true, false}, {IDYES, true, true}};
  for (const auto& [answer, quits, isSaved] : cases) {
    WriteBytes(m_dir / "demo.json", Configuration(kSimulator));
    CMainWindow window;
    CTestPrompter boxes;
    ASSERT_TRUE(window.Open(m_dir / "demo.json"));
    AddExtraVariable(window);
    boxes.answer = answer;
    bool hasQuit = true;
    QTimer stays;  // ends a program that goes on
    QObject::connect(&stays, &QTimer::timeout, [&] { hasQuit = false, QApplication::exit(); });
    QTimer::singleShot(0, [&] {
      window.close();
      stays.start(200);
    });
    QApplication::exec();
    EXPECT_EQ(hasQuit, quits) << answer;
    EXPECT_EQ(boxes.Take(),
              std::vector<std::string>{"|Save the changes to " + (m_dir / "demo.json").Std() + "?|23"});
    CConfiguration saved;
    ASSERT_EQ(LoadConfiguration(m_dir / "demo.json", saved), "");
    EXPECT_EQ(saved.m_trend.m_extraVars.GetSize(), isSaved ? 2 : 1) << answer;
  }
}

TEST_F(Desktop, ANewDocumentIsNamedWhenItIsSaved) {
  CMainWindow window;
  CTestPrompter boxes;
  CTestChooser chooser;
  window.show();
  EXPECT_FALSE(ActionOf(window, "Save")->isEnabled());
  ActionOf(window, "New")->trigger();
  EXPECT_EQ(Title(window), "Untitled[*] - Vastra");
  EXPECT_TRUE(window.findChild<QTreeWidget*>()->topLevelItem(0)->text(2).contains("File > Configuration"));
  ASSERT_TRUE(ActionOf(window, "Start")->isEnabled());
  window.Start();
  ASSERT_TRUE(Wait([&] { return !boxes.asked.empty(); }));
  EXPECT_EQ(boxes.Take()[0], "|input: the stage does not open: input.plcNodes: there is no PLC node|30");

  AddExtraVariable(window);
  boxes.answer = IDCANCEL;
  ActionOf(window, "New")->trigger();
  EXPECT_EQ(boxes.Take(), std::vector<std::string>{"|Save the changes to Untitled?|23"});
  ActionOf(window, "Save")->trigger();  // the chooser is cancelled
  EXPECT_EQ(Title(window), "Untitled[*] - Vastra");
  chooser.path = m_dir / "mine.json";
  ActionOf(window, "Save")->trigger();
  EXPECT_EQ(chooser.file.defaultExtension, "json");
  EXPECT_EQ(Title(window), (m_dir / "mine.json[*] - Vastra").Std());
  EXPECT_FALSE(window.isWindowModified());
  EXPECT_NE(ReadBytes(m_dir / "mine.json").find("\"version\": 1003"), std::string::npos);

  ActionOf(window, "New")->trigger();
  EXPECT_EQ(Title(window), "Untitled[*] - Vastra") << "the name of the former document stays";
  EXPECT_TRUE(window.Trendings().GetOptions()->m_extraVars.IsEmpty());
  EXPECT_EQ(boxes.Take(), std::vector<std::string>{});
}

TEST_F(Desktop, AFileKeepsItsVersionUnlessThatLosesSettings) {
  const std::string start = R"({"version": 1002, "outputs": [{"name": "a")";
  const struct {
    const char *more, *file;
    int answer;
    std::size_t boxes;
    char version;  // the low byte in the file; 0: no configuration file
  } cases[] = {{"", "x.vst", IDYES, 0, '\xEA'},
               {R"(, "usePrefix": 1, "prefix": "P")", "x.vst", IDYES, 1, '\xEB'},
               {R"(, "usePrefix": 1, "prefix": "P")", "x.vst", IDNO, 2, '\xEA'},
               {R"(, "usePrefix": 1, "prefix": "P")", "x.json", IDNO, 0, 0}};
  for (const auto& [more, file, answer, boxCount, version] : cases) {
    WriteBytes(m_dir / "old.json", start + more + "}]}");
    CMainWindow window;
    CTestPrompter boxes;
    CTestChooser chooser;
    ASSERT_TRUE(window.Open(m_dir / "old.json"));
    boxes.answer = answer;
    chooser.path = m_dir / file;
    ActionOf(window, "Save As...")->trigger();
    ASSERT_EQ(boxes.asked.size(), boxCount) << more;
    for (const std::string& box : boxes.asked)
      EXPECT_NE(box.find("outputs[0].prefix: "), std::string::npos) << box;
    const std::string bytes = ReadBytes(chooser.path);
    EXPECT_EQ(version ? bytes.at(4) == version : bytes.find("\"version\": 1002") != bytes.npos, true) << more;
  }
}

TEST_F(Desktop, WhoIsNewHereIsOfferedTheDemoOnce) {
  ::setenv("HOME", m_dir.Path(), 1);
  const CString demo = m_dir / "vastra-demo/demo.json";
  for (const int answer : {IDNO, IDYES}) {
    CSettings().Set("DemoOffered", "");
    CMainWindow window;
    CTestPrompter boxes;
    boxes.answer = answer;
    EXPECT_EQ(window.findChild<QTreeWidget*>()->topLevelItem(0)->text(0), "Nothing is open");
    window.OfferDemo();
    window.OfferDemo();
    ASSERT_EQ(boxes.asked.size(), 1u);
    EXPECT_NE(boxes.asked[0].find((m_dir / "vastra-demo").Std() + "|24"), std::string::npos)
        << boxes.asked[0];
    EXPECT_EQ(Title(window), answer == IDYES ? (demo + "[*] - Vastra").Std() : "Vastra");
    EXPECT_EQ(std::filesystem::exists(demo.Std()), answer == IDYES);
  }
  CSettings().Set("DemoOffered", "");
  CMainWindow window;
  CTestPrompter boxes;
  window.OfferDemo();
  EXPECT_EQ(boxes.Take(), std::vector<std::string>{}) << "has been used before";
}

TEST_F(Desktop, AWrongEquationIsToldBeforeAnythingOpens) {
  WriteBytes(m_dir / "wrong.json",
             Configuration(kSimulator, R"(, "preprocess": 1, "preEquationText": "x = a; y = ;")"));
  CMainWindow window;
  CTestPrompter boxes;
  ASSERT_TRUE(window.Open(m_dir / "wrong.json"));
  window.Start();
  ASSERT_EQ(boxes.asked.size(), 1u);
  EXPECT_NE(boxes.asked[0].find("input.preEquationText: statement 2, offset 5: "), std::string::npos)
      << boxes.asked[0];
  EXPECT_TRUE(HasStatus(window, "Stopped"));
}

TEST_F(Desktop, ALogWithoutAFolderIsTold) {
  WriteBytes(
      m_dir / "lost.json",
      Configuration(kSimulator, R"(}, "summaries": [{"saveCsv": 1, "directory": "nowhere"}], "smart": {)"));
  CMainWindow window;
  CTestPrompter boxes;
  ASSERT_TRUE(window.Open(m_dir / "lost.json"));
  window.Start();
  ASSERT_TRUE(Wait([&] { return HasStatus(window, "Stopped"); }));
  EXPECT_EQ(boxes.asked.back(), "|summaries: the stage does not open: summaries[0].directory: " +
                                    (m_dir / "nowhere").Std() + ": No such file or directory|30");
}

TEST_F(Desktop, TheReportIsShownCopiedAndSaved) {
  CMainWindow window;
  CTestChooser chooser;
  ASSERT_TRUE(window.Open(m_dir / "demo.json"));
  ActionOf(window, "Report")->trigger();
  auto* report = window.findChild<QDialog*>();
  ASSERT_TRUE(report);
  const QString shown = Find<QPlainTextEdit>(report, "Report")->toPlainText();
  EXPECT_FALSE(shown.isEmpty());
  for (QAbstractButton* button : report->findChildren<QAbstractButton*>()) {
    chooser.path = m_dir / "report.txt";
    if (button->text() == "&Copy" || button->text() == "&Save...") button->click();
  }
  EXPECT_EQ(QGuiApplication::clipboard()->text(), shown);
  EXPECT_EQ(ToScreenLines(CString(ReadBytes(m_dir / "report.txt"))), shown);
}

// The kinds of lines that come through, by their first letters.
std::string Shown() {
  class CSink : public CConsoleSink {
   public:
    int Write(UINT, const CString& text, COLORREF, DWORD) override { return kinds += text[0], 1; }
    std::string kinds;
  } sink;
  class CProbe : public CLink {
   public:
    static CMessenger* Messenger() { return m_pMessenger; }
  };
  CConsoleSink* former = SetConsoleSink(&sink);
  for (const char severity : {severityError, severityWarning, severityNotice, severityBegin})
    CProbe::Messenger()->Send("C", "n", functionRead, severity, nullptr);
  SetConsoleSink(former);
  return sink.kinds;
}

void Configure(CMessages& messages, const std::vector<const char*>& clicks) {
  WhileModal([&] { messages.Configure(); },
             [&](QWidget* dialog) {
               for (const char* caption : clicks) Click(dialog, caption);
               Click(dialog, "OK");
             });
}

TEST_F(Desktop, TheKindsOfMessagesAreRememberedAndAllMeansAll) {
  CSettings settings;
  {
    CMessages messages(settings);
    EXPECT_EQ(Shown(), "EWN");
    Configure(messages, {"All Messages"});
    EXPECT_EQ(Shown(), "EWNB");
  }
  {
    CMessages messages(settings);
    EXPECT_EQ(Shown(), "EWNB") << "the next run";
    Configure(messages, {"Warning Messages", "Always on Top"});
    EXPECT_EQ(Shown(), "W");
  }
  CMessages messages(settings);
  EXPECT_EQ(Shown(), "W");
  EXPECT_EQ(CConsole::Instance()->IsOnTop(0), 1);
}

}  // namespace
}  // namespace vastra
