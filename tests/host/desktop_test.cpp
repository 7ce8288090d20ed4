// The desktop host: real windows, real stages, the simulator and a slow driver.
#include <QAbstractButton>
#include <QClipboard>
#include <QDialog>
#include <QElapsedTimer>
#include <QPlainTextEdit>
#include <QScreen>
#include <QTableView>

#include <map>

#include "host/common/configuration_file.h"
#include "host/run/feed.h"
#include "tests/host/desktop_window.h"
#include "tests/screens/sheet_user.h"
#include "tests/support/recorder.h"
#include "vastra/console/console.h"
#include "vastra/core/link.h"

namespace vastra {
namespace {

struct CRunning {
  CRunning(const std::string& driver, const CString& folder, UINT period = 10, int patience = 60000) {
    EXPECT_EQ(ParseConfiguration(Configuration(driver), folder, configuration), "");
    configuration.m_input.m_scanPeriod = period;
    CLoopOptions options;
    options.trend = &configuration.m_trend;
    options.patience = std::chrono::milliseconds(patience);
    runner.SetConfiguration(configuration, options);
  }
  bool Reaches(CRunner::EState state) {
    return QTest::qWaitFor([&] { return runner.State() == state; }, 20000);
  }
  std::uint64_t Samples() { return runner.Run().Counts().scans.read; }

  CRecorder recorder;
  CConfiguration configuration;
  int failed = 0, refreshed = 0, ticks = 0;
  CRunMessenger messenger;
  CRunner runner{{[] {}, [this] { ++failed; }, [this] { ++refreshed; }, [this] { ++ticks; }, {}}, messenger};
};

TEST(DesktopRunner, ViewsAreRefreshedWithTheScansButNotOftenerThanTheyCanDraw) {
  const std::pair<UINT, UINT> cases[] = {{5000, 5000}, {50, 50}, {49, 98}, {25, 50},
                                         {20, 60},     {1, 50},  {0, 100}};
  for (const auto& [scan, refresh] : cases) EXPECT_EQ(CRunner::RefreshPeriodOf(scan), refresh) << scan;
}

TEST_F(Desktop, ARunWritesWhatItReadAndStopsWhereverItIs) {
  CRunning run(kSimulator, m_dir.Path());
  run.runner.Start();
  ASSERT_TRUE(run.Reaches(CRunner::EState::running));
  QElapsedTimer time;
  time.start();
  const int before = run.refreshed;
  ASSERT_TRUE(Wait([&] { return run.Samples() >= 100; }));
  EXPECT_GT(run.refreshed, 2);
  EXPECT_LE(run.refreshed - before, time.elapsed() / run.runner.RefreshPeriod() + 4) << "each scan draws";
  EXPECT_GT(run.ticks, 0);
  run.runner.Stop();
  ASSERT_TRUE(run.Reaches(CRunner::EState::stopped));
  EXPECT_EQ(Rows(m_dir.Path()), run.Samples());

  run.runner.Start();
  run.runner.Stop();  // before the stages are open
  EXPECT_TRUE(run.Reaches(CRunner::EState::stopped));
  EXPECT_EQ(run.failed, 0);
}

TEST_F(Desktop, TheViewsAreRefreshedAfterAFailedReadToo) {
  CRunning run(R"({"plcType": 9001, "text1": "counter", "value4": 2})", m_dir.Path(), 50);
  run.runner.Start();
  ASSERT_TRUE(Wait([&] { return run.Samples() == 8; }));
  EXPECT_GT(run.refreshed, 10);
}

TEST_F(Desktop, TheWindowNeverWaitsForAPlc) {
  CRunning run(R"({"plcType": 9077})", m_dir.Path());
  std::map<CRunner::EState, int> beats;  // running: while a read is pending
  QTimer beat;
  QObject::connect(&beat, &QTimer::timeout, [&] {
    const auto state = run.runner.State();
    beats[state] += state != CRunner::EState::running || run.runner.Run().IsPending();
  });
  beat.start(10);
  run.runner.Start();
  ASSERT_TRUE(run.Reaches(CRunner::EState::running));
  ASSERT_TRUE(Wait([&] { return run.Samples() > 0; }));
  run.runner.Stop();
  ASSERT_TRUE(run.Reaches(CRunner::EState::stopped));
  for (const auto state : {CRunner::EState::starting, CRunner::EState::running, CRunner::EState::stopping})
    EXPECT_GT(beats[state], 5) << static_cast<int>(state);
}

TEST_F(Desktop, ADriverThatHangsKeepsNeitherAStopNorTheEnd) {
  ::setenv("FAULT", "hangs", 1);
  for (const bool isStopped : {true, false}) {
    CRunning run(R"({"plcType": 9077})", m_dir.Path(), 10, 500);
    run.runner.Start();
    ASSERT_TRUE(run.Reaches(CRunner::EState::running));
    ASSERT_TRUE(Wait([&] { return run.runner.Run().IsPending(); }));
    if (!isStopped) continue;  // it is destroyed while the driver hangs
    run.runner.Stop();
    ASSERT_TRUE(run.Reaches(CRunner::EState::stopped));
  }
  ::unsetenv("FAULT");
}

TEST_F(Desktop, AWindowMayBeDestroyedWhileTheLoggerRuns) {
  {
    CTestWindow window(m_demo);
    EXPECT_TRUE(Runs(window, 1));
  }
  QCoreApplication::processEvents();
  EXPECT_GT(Rows(m_dir.Path()), 0u) << "the samples in memory are lost";
}

TEST_F(Desktop, ADocumentIsSavedInEitherFormAndAFaultChangesNothing) {
  for (const bool isJson : {true, false}) {
    const CString path = m_dir / (isJson ? "saved.json" : "saved.vst");
    CDocument document, again;
    ASSERT_EQ(document.Open(m_demo), "");
    EXPECT_EQ(document.Open(m_dir / "none.json").Find(m_dir / "none.json: "), 0);
    EXPECT_EQ(document.Path(), m_demo);
    document.Configuration().m_trend.m_baseVars.Add("a");  // as the host does
    document.TakeBaseVars(Names({"a"}));                   // the file has none
    document.Configuration().m_trend.m_extraVars.Add("d");
    document.Configuration().m_plcWrite.m_disableWriting = 1;
    document.TrendChanged();
    EXPECT_NE(document.Save(m_dir / "no/such/folder.json"), "");
    EXPECT_TRUE(document.IsChanged());
    ASSERT_EQ(document.Save(path), "");
    EXPECT_FALSE(document.IsChanged());
    EXPECT_EQ(document.Lost().GetSize(), !isJson);
    ASSERT_EQ(again.Open(path), "");
    EXPECT_EQ(again.Configuration().m_trend.m_extraVars, Names({"c", "d"}));
    EXPECT_EQ(again.Configuration().m_trend.m_baseVars, Names({})) << "names of the input are not a setting";
  }
}

TEST_F(Desktop, ARelativeLogFolderBelongsToTheFolderOfTheFile) {
  ASSERT_TRUE(std::filesystem::create_directory((m_dir / "plant").Std()));
  CDocument document;
  document.New();
  CConfiguration edited;
  edited.m_outputs.m_outputs.AddTail(new COutputConfig);
  edited.m_outputs.m_outputs.GetHead()->m_directory = "logs";
  document.Take(edited);
  const auto folder = [](const CConfiguration& configuration) {
    return configuration.m_outputs.m_outputs.GetHead()->m_directory;
  };
  EXPECT_EQ(folder(document.Stored()), "logs");
  EXPECT_EQ(folder(document.ForRun()), m_dir / "logs");
  ASSERT_EQ(document.Save("plant/p.json"), "");
  EXPECT_EQ(document.Folder(), m_dir / "plant");
  EXPECT_EQ(folder(document.Configuration()), m_dir / "plant/logs");
  EXPECT_FALSE(document.IsChanged());
  CDocument again;
  ASSERT_EQ(again.Open(m_dir / "plant/p.json"), "");
  EXPECT_EQ(folder(again.Stored()), m_dir / "plant/logs");
}

TEST_F(Desktop, SettingsKeepTheNewestFilesOnceAndNoBadPlace) {
  CSettings settings;
  for (const char* path : {"a", "b", "c", "d", "e", "f", "g", "h", "i", "c"}) settings.AddRecent(path);
  EXPECT_EQ(CSettings().Recent(), Names({"c", "i", "h", "g", "f", "e", "d", "b"}));
  for (const char* value : {"", "1,2,3", "1,2,0,40", "x", "1,2,30,40"}) {
    settings.Set("Place", value);
    CRect place{9, 9, 9, 9};
    const bool isPlace = CString(value) == "1,2,30,40";
    EXPECT_EQ(settings.GetPlace("Place", place), isPlace) << value;
    EXPECT_EQ(place, isPlace ? CRect({1, 2, 31, 42}) : CRect({9, 9, 9, 9})) << value;
  }
}

// Closes the window, answers its question, and returns whether that ends the program.
bool Quits(CTestWindow& window, int answer) {
  window.boxes.answer = answer;
  QTimer stays;
  QObject::connect(&stays, &QTimer::timeout, [] { QApplication::exit(1); });
  QTimer::singleShot(0, [&] { window.close(), stays.start(answer == IDYES ? 20000 : 200); });
  return QApplication::exec() == 0;
}

TEST_F(Desktop, TheWindowRunsAConfigurationAndAsksBeforeItStopsAndQuits) {
  CTestWindow window;
  EXPECT_FALSE(ActionOf(window, "Start")->isEnabled());
  EXPECT_FALSE(window.Open(m_dir / "missing.json"));
  EXPECT_EQ(window.boxes.Take(),
            Texts{"|" + (m_dir / "missing.json").Std() + ": No such file or directory|30"});
  ASSERT_TRUE(window.Open(m_demo));
  ASSERT_TRUE(Runs(window));
  EXPECT_FALSE(ActionOf(window, "Open...")->isEnabled());
  ASSERT_TRUE(Stops(window));
  EXPECT_GT(Rows(m_dir.Path()), 0u);
  EXPECT_TRUE(Says(window, " samples, 0 failed reads, "));

  ASSERT_TRUE(Runs(window));
  for (const char* view : {"Trend", "Scan Grid", "Messages", "Report"}) ActionOf(window, view)->trigger();
  for (const int answer : {IDNO, IDYES}) {
    EXPECT_EQ(Quits(window, answer), answer == IDYES);
    EXPECT_EQ(window.boxes.Take(), Texts{"|The logger is running. Stop it and quit?|124"});
    EXPECT_TRUE(Says(window, answer == IDYES ? "Stopped" : "Running"));
  }
}

// The second run continues the log of the first one; a plain run replaces it.
TEST_F(Desktop, ANewRunKeepsTheLogsUnlessTheUserTurnsThatOff) {
  const auto run = [](CTestWindow& window) {
    EXPECT_TRUE(Runs(window, 2));
    EXPECT_TRUE(Stops(window));
    return static_cast<std::uint64_t>(Samples(window));
  };
  {
    CTestWindow window(m_demo);
    const std::uint64_t first = run(window), second = run(window);
    EXPECT_EQ(Rows(m_dir.Path()), first + second);
    ActionOf(window, "Keep Logs After Faults")->trigger();
    EXPECT_FALSE(Says(window, "lost"));
  }
  CTestWindow window(m_demo);
  EXPECT_FALSE(ActionOf(window, "Keep Logs After Faults")->isChecked());
  const std::uint64_t plain = run(window);
  EXPECT_EQ(plain, Rows(m_dir.Path()));
}

TEST_F(Desktop, ViewsOpenOnTheScreenAndCloseOneByOne) {
  CSettings().SetPlace("TrendPlace", {5000, -3000, 5500, -2600});
  CTestWindow window(m_demo);
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

TEST(AttachedLogger, ALogIsSavedAlsoIfTheLineAboutItWasMissed) {
  CAttachedLogger logger;
  CStateLine state;
  state.unsaved = {{.log = "outputs[0]", .path = "/a.rph", .reason = "full"}};
  for (const std::size_t count : {1, 0}) {
    logger.Take(state);
    CLiveNewest newest;
    logger.Live()->CopyNewest(newest);
    EXPECT_EQ(newest.unsaved.size(), count);
    state.unsaved.clear();
  }
}

// Its hello is the same one.
TEST(AttachedLogger, ALoggerRunsAgainAfterTheConnectionWasLost) {
  CAttachedLogger logger;
  CHelloLine hello;
  hello.feed = 1;
  hello.variables = {"x"};
  CStateLine state;
  state.state = "running";
  for (int i = 0; i < 2; ++i) {
    logger.Take(hello);
    logger.Take(state);
    CValueStatistics::CResults results;
    logger.Statistics().Copy(results);
    EXPECT_TRUE(results.isRunning) << i;
    logger.Lost();
  }
}

TEST_F(Desktop, AnAttachedLoggerIsShownAndWaitedFor) {
  CSettings settings;
  const CString socket = m_dir / "feed";
  const QPointer<CAttachedWindow> window = new CAttachedWindow(settings, socket);
  window->show();
  CLogTrendings& trend = window->Trendings();
  const auto shows = [&](const char* words) { return Wait([&] { return Says(*window, words); }); };
  const auto logged = [&] { return Logged(window, nullptr, "a new message"); };
  EXPECT_TRUE(shows("Not connected: no logger runs here"));
  EXPECT_FALSE(Find<QTreeWidget>(window, "Plant")->topLevelItem(0)->text(0).contains("File"))
      << "a menu that the window does not have";
  CRunMessenger messenger;
  CLink::SetMessenger(&messenger);
  for (const char* view : {"&Trend", "Scan &Grid", "&Values"}) Click(window, view);
  auto feed = std::make_unique<CFeed>(CFeedPlace{socket, m_demo});
  ASSERT_EQ(feed->Open(), "");
  int said = 1;
  for (const char* variable : {"x", "y"}) {
    const QString form =
        R"({"input": {"asFastAsPossible": 1, "plcNodes": [{"nodeName": "K", "absent": "hold",
"driver": {"plcType": 9001, "text1": "counter", "value4": 2}, "varNames": ["%1"]}]}, "variables": {"%1": {"unit": "bar"}}})";
    CConfiguration configuration;
    ASSERT_EQ(ParseConfiguration(form.arg(variable).toStdString(), m_dir.Path(), configuration), "");
    CRun run(configuration, messenger, {});
    feed->Attach(run);
    ASSERT_TRUE(run.Start());
    run.Step();
    ASSERT_TRUE(Wait([&] {
      return trend.GetOptions()->m_baseVars == Names({variable}) && trend.Newest()->m_values.GetSize();
    }));
    EXPECT_EQ(window->windowTitle(), "demo (attached)");
    EXPECT_EQ(RepeatedKeys(*window), "");
    EXPECT_EQ(trend.Newest()->m_values[0], 1.0F);
    QTreeWidgetItem* const node = Part(*window, "K");
    ASSERT_TRUE(node);
    EXPECT_TRUE(Wait([&] { return node->text(1) == "good"; }));
    const QAbstractItemModel* values = Find<QTableView>(TopLevel("Values of demo"), "Values")->model();
    EXPECT_TRUE(Wait([&] { return values->index(0, 2).data() == "1"; }));
    for (const auto& [column, text] : {std::pair(0, variable), std::pair(1, "K"), std::pair(3, "bar")})
      EXPECT_EQ(values->index(0, column).data(), text);
    for (const char* view : {"Trending", "Scan Screen"})
      EXPECT_FALSE(Find<QAbstractButton>(TopLevel(view), "Config")->isEnabled());
    run.Step();
    EXPECT_TRUE(Wait([&] { return node->text(1).startsWith("away since "); }));
    messenger.Send("CPlcLink", "K", functionRead, severityError, "a new message");
    EXPECT_TRUE(Wait([&] { return logged() == said; }));
    ++said;
  }
  feed.reset();
  EXPECT_TRUE(shows("Not connected: the logger has closed the connection"));
  EXPECT_EQ(logged(), 2);
  EXPECT_TRUE(Wait([&] { return Part(*window, "K")->text(1) == "not connected"; }));
  window->close();
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  CLink::SetMessenger(nullptr);
  EXPECT_FALSE(window || TopLevel("Trending") || TopLevel("Scan Screen") || TopLevel("Values of demo"));
}

// Does what the dialog of a view does.
void AddExtraVariable(CMainWindow& window) {
  window.Trendings().GetOptions()->m_extraVars.Add("d");
  window.Trendings().OptionsChanged();
}

TEST_F(Desktop, ChangesAreNotLostWithoutAQuestion) {
  for (const int answer : {IDCANCEL, IDNO, IDYES}) {
    CTestWindow window(m_demo);
    AddExtraVariable(window);
    EXPECT_EQ(Quits(window, answer), answer != IDCANCEL);
    EXPECT_EQ(window.boxes.Take(), Texts{"|Save the changes to " + m_demo.Std() + "?|23"});
    CConfiguration saved;
    ASSERT_EQ(LoadConfiguration(m_demo, saved), "");
    EXPECT_EQ(saved.m_trend.m_extraVars.GetSize(), answer == IDYES ? 2 : 1) << answer;
  }
}

TEST_F(Desktop, AConfigurationIsOpenedByDroppingIt) {
  CTestWindow window;
  EXPECT_FALSE(ActionOf(window, "Open Recent")->isEnabled()) << "there is none yet";
  const QUrl demo = UrlOf(m_demo);
  const QList<QUrl> refused[] = {
      {demo, demo}, {demo, UrlOf(m_dir.Path())}, {QUrl("https://a.org/demo.json")}};
  for (const QList<QUrl>& files : refused) EXPECT_FALSE(Drop(window, files));
  EXPECT_TRUE(Drop(window, {demo}));
  EXPECT_TRUE(Wait([&] { return Title(window).starts_with(m_demo.Std()); })) << Title(window);
  EXPECT_TRUE(ActionOf(window, "Open Recent")->isEnabled());
  ASSERT_TRUE(Runs(window));
  EXPECT_FALSE(Drop(window, {demo})) << "while the logger runs";
}

TEST_F(Desktop, ANewDocumentIsNamedWhenItIsSaved) {
  CTestWindow window;
  EXPECT_FALSE(ActionOf(window, "Save")->isEnabled());
  ActionOf(window, "New")->trigger();
  EXPECT_TRUE(Part(window, "Input")->text(5).contains("File > Configuration"));

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
  EXPECT_EQ(window.chooser.start, m_dir.Path());
  EXPECT_FALSE(window.isWindowModified());
  EXPECT_NE(ReadBytes(m_dir / "mine.json").find("\"version\": 1003"), std::string::npos);

  ActionOf(window, "New")->trigger();
  EXPECT_EQ(Title(window), "Untitled[*] - Vastra") << "the name of the former document stays";
  EXPECT_TRUE(window.Trendings().GetOptions()->m_extraVars.IsEmpty());
}

TEST_F(Desktop, AFileKeepsItsVersionUnlessThatLosesSettings) {
  const std::tuple<std::string, const char*, int, std::size_t, const char*> cases[] = {
      {"", "x.vst", IDYES, 0, "VSTR\xEA"},
      {"P", "x.vst", IDYES, 1, "VSTR\xEB"},
      {"P", "x.vst", IDNO, 2, "VSTR\xEA"},
      {"P", "x.json", IDNO, 0, "{\n  \"version\": 1002,"}};
  for (const auto& [prefix, file, answer, boxCount, start] : cases) {
    WriteBytes(m_dir / "old.json", R"({"version": 1002, "outputs": [{"prefix": ")" + prefix + "\"}]}");
    CTestWindow window(m_dir / "old.json");
    window.boxes.answer = answer;
    window.chooser.path = m_dir / file;
    ActionOf(window, "Save As...")->trigger();
    const Texts asked = window.boxes.Take();
    ASSERT_EQ(asked.size(), boxCount) << start;
    for (const std::string& box : asked) EXPECT_NE(box.find("outputs[0].prefix: "), std::string::npos) << box;
    EXPECT_TRUE(ReadBytes(window.chooser.path).starts_with(start)) << start;
  }
}

TEST_F(Desktop, WhoIsNewHereIsOfferedTheDemoOnce) {
  ::setenv("HOME", m_dir.Path(), 1);
  for (const int answer : {IDNO, IDYES}) {
    CSettings().Set("DemoOffered", "");
    CTestWindow window;
    window.boxes.answer = answer;
    EXPECT_EQ(Find<QTreeWidget>(&window, "Plant")->topLevelItem(0)->text(0).left(16), "Nothing is open:");
    window.OfferDemo();
    window.OfferDemo();
    ASSERT_EQ(window.boxes.asked.size(), 1u);
    EXPECT_TRUE(window.boxes.Take()[0].ends_with((m_dir / "vastra-demo").Std() + "|24"));
    EXPECT_EQ(Title(window),
              answer == IDYES ? (m_dir / "vastra-demo/demo.json[*] - Vastra").Std() : "Vastra");
  }
  CSettings().Set("DemoOffered", "");
  CTestWindow().OfferDemo();  // does not ask: the program has been used before
}

TEST_F(Desktop, TheReportIsShownCopiedAndSaved) {
  CTestWindow window(m_demo);
  ActionOf(window, "Report")->trigger();
  auto* report = window.findChild<QDialog*>();
  ASSERT_TRUE(report);
  const QString shown = Find<QPlainTextEdit>(report, "Report")->toPlainText();
  EXPECT_TRUE(shown.startsWith("[*** Input ***]"));
  window.chooser.path = m_dir / "report.txt";
  for (const char* button : {"&Copy", "&Save..."}) Find<QAbstractButton>(report, button)->click();
  EXPECT_EQ(QGuiApplication::clipboard()->text(), shown);
  EXPECT_EQ(ToScreenLines(CString(ReadBytes(m_dir / "report.txt"))), shown);
}

TEST_F(Desktop, TheKindsOfMessagesAreRememberedAndAllMeansAll) {
  struct CProbe : CLink {
    using CLink::m_pMessenger;
  };
  const std::pair<std::string, std::vector<int>> cases[] = {
      // The steps, and what is shown before them: fatal, error, warning, notice, debug.
      {"All Messages / OK", {1, 1, 1, 1, 0}},
      {"Warning Messages / Always on Top / OK", {1, 1, 1, 1, 1}},
      {"OK", {0, 0, 1, 0, 0}}};
  CSettings settings;
  CSheetUser user;
  for (const auto& [steps, shown] : cases) {
    CMessages messages(settings);
    std::vector<int> f(5);
    CProbe::m_pMessenger->GetFilters(f[0], f[1], f[2], f[3], f[4]);
    EXPECT_EQ(f, shown);
    EXPECT_EQ(CConsole::Instance()->IsOnTop(0), steps == "OK");
    user.Run([&] { return messages.Configure(), 1; }, {steps});
  }
}

}  // namespace
}  // namespace vastra
