// The desktop host: real windows, real stages, the simulator and a slow driver.
#include <gtest/gtest.h>

#include <QClipboard>
#include <QDialog>
#include <QElapsedTimer>
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
#include "tests/support/names.h"
#include "tests/support/recorder.h"
#include "vastra/console/console.h"
#include "vastra/core/link.h"

namespace vastra {
namespace {

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
  QElapsedTimer time;
  time.start();
  const int before = run.refreshed;
  ASSERT_TRUE(Wait([&] { return run.runner.Run().Counts().scans.read >= 30; }));
  EXPECT_GT(run.refreshed, 2);
  EXPECT_LE(run.refreshed - before, time.elapsed() / run.runner.RefreshPeriod() + 2) << "each scan draws";
  EXPECT_GT(run.ticks, 0);
  run.runner.Stop();
  ASSERT_TRUE(run.Reaches(CRunner::EState::stopped));
  EXPECT_EQ(Rows(), run.runner.Run().Counts().scans.read);

  run.runner.Start();
  run.runner.Stop();  // before the stages are open
  EXPECT_TRUE(run.Reaches(CRunner::EState::stopped));
  EXPECT_EQ(run.failed, 0);
}

TEST_F(Desktop, TheWindowNeverWaitsForAPlc) {
  CRunning run(Configuration(R"({"plcType": 9077, "value1": 500, "value2": 500, "value3": 500})"),
               m_dir.Path());
  std::map<CRunner::EState, int> beats;  // running: while a read is pending
  QTimer beat;
  QObject::connect(&beat, &QTimer::timeout, [&] {
    const auto state = run.runner.State();
    beats[state] += state != CRunner::EState::running || run.runner.Run().IsPending();
  });
  beat.start(10);
  run.runner.Start();
  ASSERT_TRUE(run.Reaches(CRunner::EState::running));
  ASSERT_TRUE(Wait([&] { return run.runner.Run().Counts().scans.read >= 1; }));
  run.runner.Stop();
  ASSERT_TRUE(run.Reaches(CRunner::EState::stopped));
  for (const auto state : {CRunner::EState::starting, CRunner::EState::running, CRunner::EState::stopping})
    EXPECT_GT(beats[state], 5) << static_cast<int>(state);
}

TEST_F(Desktop, AWindowMayBeDestroyedWhileTheLoggerRuns) {
  {
    CMainWindow window;
    ASSERT_TRUE(window.Open(m_demo));
    window.Start();
    EXPECT_TRUE(Wait([&] { return Samples(window) > 0; }));
  }
  QCoreApplication::processEvents();
  EXPECT_GT(Rows(), 0u) << "the samples in memory are lost";
}

TEST_F(Desktop, ADocumentIsSavedInEitherFormAndAFaultChangesNothing) {
  WriteBytes(m_dir / "bad.json", "{\"version\": 7}");
  for (const char* name : {"saved.json", "saved.vst"}) {
    CDocument document, again;
    ASSERT_EQ(document.Open(m_demo), "");
    EXPECT_EQ(document.Open(m_dir / "bad.json").Left(m_dir.Path().GetLength()), m_dir.Path());
    EXPECT_EQ(document.Path(), m_demo);
    document.Configuration().m_trend.m_baseVars.Add("a");  // as the host does
    document.Configuration().m_trend.m_extraVars.Add("d");
    document.TrendChanged();
    EXPECT_TRUE(document.IsChanged());
    EXPECT_NE(document.Save(m_dir / "no/such/folder.json"), "");
    EXPECT_TRUE(document.IsChanged());
    document.Configuration().m_plcWrite.m_disableWriting = 1;
    ASSERT_EQ(document.Save(m_dir / name), "");
    EXPECT_FALSE(document.IsChanged());
    EXPECT_EQ(document.Lost().GetSize(), CString(name).Right(4) == ".vst");
    ASSERT_EQ(again.Open(m_dir / name), "");
    EXPECT_EQ(again.Configuration().m_outputs.m_outputs.GetCount(), 1);
    EXPECT_EQ(again.Configuration().m_trend.m_extraVars.GetSize(), 2) << name;
    EXPECT_EQ(again.Configuration().m_trend.m_baseVars.GetSize(), 0)
        << "names of the input are not a setting";
  }
}

TEST_F(Desktop, SettingsKeepTheNewestFilesOnceAndNoBadPlace) {
  CSettings settings;
  for (const char* path : {"a", "b", "a", "c", "d", "e", "f", "g", "h", "i"}) settings.AddRecent(path);
  EXPECT_EQ(CSettings().Recent(), Names({"i", "h", "g", "f", "e", "d", "c", "a"}));
  for (const char* value : {"", "1,2,3", "1,2,0,40", "x", "1,2,30,40"}) {
    settings.Set("Place", value);
    CRect place{9, 9, 9, 9};
    const bool isPlace = CString(value) == "1,2,30,40";
    EXPECT_EQ(settings.GetPlace("Place", place), isPlace) << value;
    EXPECT_EQ(place, isPlace ? CRect({1, 2, 31, 42}) : CRect({9, 9, 9, 9})) << value;
  }
}

TEST_F(Desktop, TheWindowRunsAConfigurationAndAsksBeforeItStops) {
  CTestWindow window;
  window.show();
  EXPECT_FALSE(ActionOf(window, "Start")->isEnabled());
  EXPECT_FALSE(window.Open(m_dir / "missing.json"));
  EXPECT_EQ(window.boxes.Take(),
            Texts{"|" + (m_dir / "missing.json").Std() + ": No such file or directory|30"});
  ASSERT_TRUE(window.Open(m_demo));
  ActionOf(window, "Start")->trigger();
  ASSERT_TRUE(Wait([&] { return HasStatus(window, "Running"); }));
  EXPECT_FALSE(ActionOf(window, "Open...")->isEnabled());
  window.boxes.answer = IDNO;
  window.close();
  EXPECT_EQ(window.boxes.Take(), Texts{"|The logger is running. Stop it and quit?|124"});
  EXPECT_TRUE(HasStatus(window, "Running"));
  ActionOf(window, "Stop")->trigger();
  ASSERT_TRUE(Wait([&] { return HasStatus(window, "Stopped"); }));
  EXPECT_GT(Rows(), 0u);
  EXPECT_TRUE(HasStatus(window, " samples, 0 failed reads, "));
}

TEST_F(Desktop, ViewsOpenOnTheScreenAndCloseOneByOne) {
  CSettings().SetPlace("TrendPlace", {5000, -3000, 5500, -2600});
  CMainWindow window;
  window.show();
  ASSERT_TRUE(window.Open(m_demo));
  ActionOf(window, "Trend")->trigger();
  QWidget* trend = TopLevel("Trending");
  ASSERT_TRUE(trend);
  EXPECT_TRUE(window.screen()->geometry().contains(trend->geometry().center()));
  trend->activateWindow();
  ASSERT_TRUE(Wait([&] { return QApplication::activeWindow() == trend; }));
  QTest::keyClick(trend, Qt::Key_2, Qt::ControlModifier);
  ASSERT_TRUE(TopLevel("Scan Screen")) << "the key does not work here";
  Click(trend, "Cancel");
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  EXPECT_FALSE(TopLevel("Trending"));
  EXPECT_TRUE(TopLevel("Scan Screen"));
}

TEST_F(Desktop, FilesAreChosenWhereTheProgramWasStarted) {
  const std::filesystem::path former = std::filesystem::current_path();
  std::filesystem::current_path(m_dir.Path().Std());
  CMainWindow window;
  std::filesystem::current_path(former);
  CString path;
  WhileModal([&] { ChooseFile({}, path); },
             [&](QWidget* dialog) {
               EXPECT_EQ(qobject_cast<QFileDialog*>(dialog)->directory(), QDir(m_dir.Path().Std().c_str()));
             });
}

TEST_F(Desktop, TheProgramEndsWithEveryWindowOpen) {
  CMainWindow window;
  window.show();
  ASSERT_TRUE(window.Open(m_demo));
  window.Start();
  ASSERT_TRUE(Wait([&] { return HasStatus(window, "Running"); }));
  for (const char* view : {"Trend", "Scan Grid", "Messages", "Report"}) ActionOf(window, view)->trigger();
  QTimer::singleShot(0, &window, [&] { window.StopAndQuit(); });
  QTimer::singleShot(20000, &window, [] { QApplication::exit(1); });
  EXPECT_EQ(QApplication::exec(), 0) << "the program goes on";
  EXPECT_TRUE(HasStatus(window, "Stopped"));
}

// Does what the dialog of a view does.
void AddExtraVariable(CMainWindow& window) {
  window.Trendings().GetOptions()->m_extraVars.Add("d");
  window.Trendings().OptionsChanged();
}

TEST_F(Desktop, ChangesAreNotLostWithoutAQuestion) {
  for (const int answer : {IDCANCEL, IDNO, IDYES}) {
    WriteBytes(m_demo, Configuration(kSimulator));
    CTestWindow window;
    ASSERT_TRUE(window.Open(m_demo));
    AddExtraVariable(window);
    window.boxes.answer = answer;
    bool hasQuit = true;
    QTimer stays;  // ends the program if it goes on
    QObject::connect(&stays, &QTimer::timeout, [&] { hasQuit = false, QApplication::exit(); });
    QTimer::singleShot(0, [&] {
      window.close();
      stays.start(200);
    });
    QApplication::exec();
    EXPECT_EQ(hasQuit, answer != IDCANCEL);
    EXPECT_EQ(window.boxes.Take(), Texts{"|Save the changes to " + m_demo.Std() + "?|23"});
    CConfiguration saved;
    ASSERT_EQ(LoadConfiguration(m_demo, saved), "");
    EXPECT_EQ(saved.m_trend.m_extraVars.GetSize(), answer == IDYES ? 2 : 1) << answer;
  }
}

TEST_F(Desktop, ANewDocumentIsNamedWhenItIsSaved) {
  CTestWindow window;
  window.show();
  EXPECT_FALSE(ActionOf(window, "Save")->isEnabled());
  ActionOf(window, "New")->trigger();
  EXPECT_EQ(Title(window), "Untitled[*] - Vastra");
  EXPECT_TRUE(window.findChild<QTreeWidget*>()->topLevelItem(0)->text(2).contains("File > Configuration"));
  ASSERT_TRUE(ActionOf(window, "Start")->isEnabled());
  window.Start();
  ASSERT_TRUE(Wait([&] { return !window.boxes.asked.empty(); }));
  EXPECT_EQ(window.boxes.Take()[0],
            "|input: the stage does not open: input.plcNodes: there is no PLC node|30");

  AddExtraVariable(window);
  window.boxes.answer = IDCANCEL;
  ActionOf(window, "New")->trigger();
  EXPECT_EQ(window.boxes.Take(), Texts{"|Save the changes to Untitled?|23"});
  ActionOf(window, "Save")->trigger();  // the chooser is cancelled
  EXPECT_EQ(Title(window), "Untitled[*] - Vastra");
  window.chooser.path = m_dir / "mine.json";
  ActionOf(window, "Save")->trigger();
  EXPECT_EQ(window.chooser.file.defaultExtension, "json");
  EXPECT_EQ(Title(window), (m_dir / "mine.json[*] - Vastra").Std());
  EXPECT_FALSE(window.isWindowModified());
  EXPECT_NE(ReadBytes(m_dir / "mine.json").find("\"version\": 1003"), std::string::npos);

  ActionOf(window, "New")->trigger();
  EXPECT_EQ(Title(window), "Untitled[*] - Vastra") << "the name of the former document stays";
  EXPECT_TRUE(window.Trendings().GetOptions()->m_extraVars.IsEmpty());
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
    CTestWindow window;
    ASSERT_TRUE(window.Open(m_dir / "old.json"));
    window.boxes.answer = answer;
    window.chooser.path = m_dir / file;
    ActionOf(window, "Save As...")->trigger();
    const Texts asked = window.boxes.Take();
    ASSERT_EQ(asked.size(), boxCount) << more;
    for (const std::string& box : asked) EXPECT_NE(box.find("outputs[0].prefix: "), std::string::npos) << box;
    const std::string bytes = ReadBytes(window.chooser.path);
    EXPECT_EQ(version ? bytes.at(4) == version : bytes.find("\"version\": 1002") != bytes.npos, true) << more;
  }
}

TEST_F(Desktop, WhoIsNewHereIsOfferedTheDemoOnce) {
  ::setenv("HOME", m_dir.Path(), 1);
  const CString demo = m_dir / "vastra-demo/demo.json";
  for (const int answer : {IDNO, IDYES}) {
    CSettings().Set("DemoOffered", "");
    CTestWindow window;
    window.boxes.answer = answer;
    EXPECT_EQ(window.findChild<QTreeWidget*>()->topLevelItem(0)->text(0), "Nothing is open");
    window.OfferDemo();
    window.OfferDemo();
    ASSERT_EQ(window.boxes.asked.size(), 1u);
    EXPECT_TRUE(window.boxes.Take()[0].ends_with((m_dir / "vastra-demo").Std() + "|24"));
    EXPECT_EQ(Title(window), answer == IDYES ? (demo + "[*] - Vastra").Std() : "Vastra");
    EXPECT_EQ(std::filesystem::exists(demo.Std()), answer == IDYES);
  }
  CSettings().Set("DemoOffered", "");
  CTestWindow().OfferDemo();  // does not ask: the program has been used before
}

TEST_F(Desktop, AWrongEquationIsShownBeforeAnythingOpens) {
  WriteBytes(m_demo, Configuration(kSimulator, R"(, "preprocess": 1, "preEquationText": "x = a; y = ;")"));
  CTestWindow window;
  ASSERT_TRUE(window.Open(m_demo));
  window.Start();
  ASSERT_EQ(window.boxes.asked.size(), 1u);
  EXPECT_NE(window.boxes.Take()[0].find("input.preEquationText: statement 2, offset 5: "), std::string::npos);
  EXPECT_TRUE(HasStatus(window, "Stopped"));
}

TEST_F(Desktop, TheReportIsShownCopiedAndSaved) {
  CTestWindow window;
  ASSERT_TRUE(window.Open(m_demo));
  ActionOf(window, "Report")->trigger();
  auto* report = window.findChild<QDialog*>();
  ASSERT_TRUE(report);
  const QString shown = Find<QPlainTextEdit>(report, "Report")->toPlainText();
  EXPECT_FALSE(shown.isEmpty());
  window.chooser.path = m_dir / "report.txt";
  for (const char* button : {"&Copy", "&Save..."}) Find<QAbstractButton>(report, button)->click();
  EXPECT_EQ(QGuiApplication::clipboard()->text(), shown);
  EXPECT_EQ(ToScreenLines(CString(ReadBytes(m_dir / "report.txt"))), shown);
}

// The first letters of the messages that pass the filters.
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
    EXPECT_EQ(Shown(), "EWNB");
    Configure(messages, {"Warning Messages", "Always on Top"});
    EXPECT_EQ(Shown(), "W");
  }
  CMessages messages(settings);
  EXPECT_EQ(Shown(), "W");
  EXPECT_EQ(CConsole::Instance()->IsOnTop(0), 1);
}

}  // namespace
}  // namespace vastra
