// The message log of the desktop: its lines in memory and on the disk, and its window.
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QLineEdit>
#include <QScrollBar>
#include <QTableView>

#include <atomic>
#include <thread>

#include "host/desktop/configuration_sheet.h"
#include "host/desktop/message_window.h"
#include "tests/host/desktop_window.h"
#include "vastra/platform/file_system.h"

namespace vastra {
namespace {

constexpr const char* kConfiguration = "/plant/kiln.json";

CLoggedMessage Said(const std::string& text, std::int64_t time = 1000, char severity = severityNotice) {
  return {time, time, 1, severity, kSaidByRun, "Kiln", text};
}

class MessageStore : public testing::Test {
 protected:
  std::unique_ptr<CMessageStore> Open(CMessageStore::CLimits limits = {}) {
    auto store = std::make_unique<CMessageStore>([this] { ++m_wakes; }, limits);
    store->Open(kConfiguration);
    return store;
  }
  // The texts of the lines once there are so many, each with its count if that is not 1.
  static Texts TextsOf(CMessageStore& store, std::size_t count) {
    for (int i = 0; i < 500 && (store.Take(), store.Size() < count); ++i) QTest::qSleep(10);
    Texts texts;
    for (std::size_t i = 0; i < store.Size(); ++i) {
      const CLoggedMessage& line = store.Line(i);
      texts.push_back(line.text + (line.count == 1 ? "" : " x" + std::to_string(line.count)));
    }
    return texts;
  }

  CTempDir m_dir;
  const int m_isHome = ::setenv("XDG_STATE_HOME", m_dir.Path(), 1);
  const CMessageFiles m_files{kConfiguration};
  std::atomic<int> m_wakes{0};
};

TEST_F(MessageStore, ALineOfAFileIsReadBackAndNothingElseIs) {
  const CLoggedMessage line = {1, 2, 3, severityError, "run", "outputs[1] \"A\tll\"", "d:\\x \xE9 \xC3\xA9"};
  const std::string form = FileForm(line), bytes = form.substr(0, form.size() - 1);
  CLoggedMessage read;
  ASSERT_TRUE(ReadFileForm(bytes, read));
  EXPECT_EQ(read, line);
  EXPECT_EQ(std::count(form.begin(), form.end(), '\n'), 1);
  for (std::size_t size = 0; size <= bytes.rfind('\t') - 1; ++size)
    EXPECT_FALSE(ReadFileForm(bytes.substr(0, size), read)) << size;
  for (const char* bad : {"1\t2\t3\terror\ta\tb\tc\td", "1\t2\t0\terror\ta\tb\tc", "-1\t2\t3\terror\ta\tb\tc",
                          "1\t2\t3\tloud\ta\tb\tc", "1\t2x\t3\terror\ta\tb\tc", "1\t2\t3\terror\ta\tb\tc\\",
                          "1\t999999999999999999\t3\terror\ta\tb\tc", "1\t2\t3\terror\ta\tb\t\\q"})
    EXPECT_FALSE(ReadFileForm(bad, read)) << bad;
}

TEST_F(MessageStore, APlaceAtTheStartOfATextIsThePart) {
  const char* const cases[][3] = {
      {"outputs[1].maxLogs: is 0", "outputs[1].maxLogs", "is 0"},
      {"outputs[1] \"All: 2\": 2 variables: more", "outputs[1] \"All: 2\"", "2 variables: more"},
      {"input: replay of 1 log", "input", "replay of 1 log"},
      {"/logs/a.rph: No such file", "", "/logs/a.rph: No such file"},
      {"input of a: b", "", "input of a: b"},
      {"outputs[0] \"All", "", "outputs[0] \"All"},
      {"saved /logs/a.rph", "", "saved /logs/a.rph"}};
  for (const auto& [text, part, rest] : cases) {
    const CLoggedMessage line = DesktopLine(severityWarning, text);
    EXPECT_EQ(std::pair(line.part, line.text), std::pair(std::string(part), std::string(rest)));
  }
}

TEST_F(MessageStore, TheNewestMessagesAreThereAfterARestartWithinTheBounds) {
  constexpr CMessageStore::CLimits kSmall = {.lines = 20, .fileBytes = 2000};
  for (int start = 0; start < 3; ++start) {
    const auto store = Open(kSmall);
    for (int i = 0; i < 100; ++i) {
      store->Add(Said("message " + std::to_string(100 * start + i)));
      if (i % 7 == 0) store->Take();
      EXPECT_LE(store->Size(), 20u);
    }
  }
  for (const CString& path : {m_files.Path(), m_files.OlderPath()}) {
    EXPECT_LE(std::filesystem::file_size(path.Std()), 2000u);
    EXPECT_TRUE(ReadBytes(path).starts_with("# /plant/kiln.json\n"));
  }
  const auto store = Open(kSmall);
  Texts expected;
  for (int i = 280; i < 300; ++i) expected.push_back("message " + std::to_string(i));
  EXPECT_EQ(TextsOf(*store, 20), expected);
  store->Open("/plant/other.json");
  EXPECT_EQ(TextsOf(*store, 0), Texts());
}

TEST_F(MessageStore, LinesAreThereOnceAfterTheConfigurationHadAnotherName) {
  const Texts expected = {"a", "b x2", "/plant/copy.json", kConfiguration};
  {
    const auto store = Open();
    for (const char* text : {"a", "b", "b"}) store->Add(Said(text));
    for (const char* path : {"/plant/copy.json", kConfiguration}) {
      store->MoveTo(path);
      store->Add(Said(path));
    }
    EXPECT_EQ(TextsOf(*store, 4), expected);
  }
  EXPECT_EQ(TextsOf(*Open(), 4), expected);
}

TEST_F(MessageStore, RepeatsAreOneLineInMemoryAndFewOnTheDisk) {
  for (int start = 0; start < 2; ++start) {
    const auto store = Open();
    for (int i = 0; i < 1000; ++i) {
      store->Add(Said("again", 1000 * start + i));
      if (i % 100 == 0) store->Take();
    }
    EXPECT_EQ(TextsOf(*store, 1).back().substr(0, 7), "again x");
  }
  const std::string bytes = ReadBytes(m_files.Path());
  EXPECT_LE(std::count(bytes.begin(), bytes.end(), '\n'), 5);
  const auto store = Open();
  EXPECT_EQ(TextsOf(*store, 1), Texts{"again x2000"});
  EXPECT_EQ(store->Line(0).first, 0);
  EXPECT_EQ(store->Line(0).last, 1999);
  for (const CLoggedMessage& other : {Said("more"), Said("more", 1, severityError)}) store->Add(other);
  EXPECT_EQ(TextsOf(*store, 3), (Texts{"again x2000", "more", "more"}));
}

TEST_F(MessageStore, TornAndForeignLinesAreCountedAndLoseNoOther) {
  std::filesystem::create_directories(DirectoryOf(m_files.Path()).Std());
  WriteBytes(m_files.OlderPath(), std::string("\0\xFF\x80 no message\n", 15) + FileForm(Said("old")));
  const std::string torn = FileForm(Said("torn"));
  WriteBytes(m_files.Path(), FileForm(Said("good")) + "\n" + torn.substr(0, 12));
  {
    const auto store = Open();
    EXPECT_EQ(TextsOf(*store, 3),
              (Texts{"old", "good", "2 lines of the kept messages cannot be read: " + m_files.Path().Std()}));
    store->Add(Said("new"));
  }
  const auto store = Open();
  const Texts texts = TextsOf(*store, 4);
  EXPECT_NE(std::ranges::find(texts, "new"), texts.end());
}

TEST_F(MessageStore, AFullDiskIsToldOnceAndLosesNothingOnceItHasRoom) {
  {
    const auto store = Open();
    store->Add(Said("before"));
    TextsOf(*store, 1);
    ASSERT_TRUE(QTest::qWaitFor([&] { return FileExists(m_files.Path()); }, 5000));
    {
      const CFileSizeLimit full(std::filesystem::file_size(m_files.Path().Std()) + 20);
      for (int i = 0; i < 5; ++i) {
        store->Add(Said("full " + std::to_string(i)));
        store->Take();
        QTest::qSleep(20);
      }
      const Texts texts = TextsOf(*store, 7);
      ASSERT_EQ(texts.size(), 7u);
      EXPECT_EQ(std::ranges::count(texts, "The messages are not kept on the disk: " + m_files.Path().Std() +
                                              ": File too large"),
                1);
    }
  }
  EXPECT_EQ(TextsOf(*Open(), 6), (Texts{"before", "full 0", "full 1", "full 2", "full 3", "full 4"}));
  std::filesystem::remove(m_files.Path().Std());
  std::filesystem::create_directory(m_files.Path().Std());
  EXPECT_EQ(CMessageFiles(kConfiguration).Append("a\n"), m_files.Path() + ": Is a directory");
}

TEST_F(MessageStore, SeveralThreadsAndDesktopsLoseNothing) {
  constexpr int kThreads = 3, kEach = 500;
  {
    std::unique_ptr<CMessageStore> stores[] = {Open({.fileBytes = 100000}), Open({.fileBytes = 100000})};
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread)
      threads.emplace_back([&, thread] {
        for (int i = 0; i < kEach; ++i)
          for (const auto& store : stores) store->Add(Said(std::to_string(thread) + "/" + std::to_string(i)));
      });
    for (std::thread& thread : threads) thread.join();
    for (const auto& store : stores) EXPECT_EQ(TextsOf(*store, kThreads * kEach).size(), kThreads * kEach);
  }
  std::uint64_t count = 0;  // the same message of both can be folded
  for (const CLoggedMessage& line : CMessageFiles(kConfiguration, 100000).Read(100000).lines)
    count += line.count;
  EXPECT_EQ(count, 2u * kThreads * kEach);
  EXPECT_GT(m_wakes, 0);
  EXPECT_LT(m_wakes, 2 * kThreads * kEach) << "the window is called for each message";
}

TEST_F(MessageStore, TwoDesktopsDoNotMoveTheSameFileAwayTwice) {
  constexpr std::size_t kMost = 2000;
  const std::string line = FileForm(Said("one line of many"));
  const auto append = [&] {
    for (int i = 0; i < 2000; ++i) {
      EXPECT_EQ(CMessageFiles(kConfiguration, kMost).Append(line), "");
      std::error_code none;
      EXPECT_GT(std::filesystem::file_size(m_files.OlderPath().Std(), none), kMost / 2);  // or there is none
    }
  };
  std::thread other(append);
  append();
  other.join();
}

TEST_F(MessageStore, APlaceOpensItsPageOfTheSheet) {
  using Sheet = CConfigurationSheet;
  const std::tuple<const char*, Sheet::EPage, int> cases[] = {
      {"outputs[1] \"All [7]\"", Sheet::pageOutputs, 1},
      {"summaries[10].enableText", Sheet::pageSummaries, 10},
      {"outputs", Sheet::pageOutputs, -1},
      {"smart", Sheet::pageSmart, -1},
      {"plcWrite.nodes[2].driver", Sheet::pagePlcWrite, 2},
      {"input.plcNodes[3]", Sheet::pageInput, 3},
      {"input.inputFiles[3]", Sheet::pageInput, -1},
      {"Kiln", Sheet::pageInput, -1}};
  for (const auto& [part, page, entry] : cases) {
    EXPECT_EQ(Sheet::PlaceOf(part).page, page) << part;
    EXPECT_EQ(Sheet::PlaceOf(part).entry, entry) << part;
  }
}

class MessageLog : public Desktop {
 protected:
  void Show() {
    m_pWindow = std::make_unique<CMessageWindow>(m_settings, "MessageLog", m_model,
                                                 [this](const CString& part) { m_opened += part; });
    m_pWindow->show();
    m_table = Find<QTableView>(m_pWindow.get(), "Messages");
  }
  void Say(int count, char severity = severityNotice) {
    for (int i = 0; i < count; ++i) m_model.AddMessage(Said("line " + std::to_string(m_said++), 0, severity));
  }
  bool HasRows(int count) {
    return Wait([&] { return m_model.rowCount() == count; });
  }
  std::string Top() { return m_model.Line(m_table->rowAt(1)).text; }
  bool Follows() { return Find<QCheckBox>(m_pWindow.get(), "&Follow")->isChecked(); }

  CSettings m_settings;
  CMessageModel m_model;
  std::unique_ptr<CMessageWindow> m_pWindow;
  QTableView* m_table = nullptr;
  CString m_opened;
  int m_said = 0;
};

TEST_F(MessageLog, FollowsTheNewestUntilTheUserReadsEarlierOnes) {
  Show();
  Say(19990);
  ASSERT_TRUE(HasRows(19990));
  QScrollBar* bar = m_table->verticalScrollBar();
  ASSERT_TRUE(Wait([&] { return bar->maximum() > 0 && bar->value() == bar->maximum(); }));
  bar->setValue(15000);
  EXPECT_FALSE(Follows());
  const std::string top = Top();
  Say(1000);  // the oldest go
  ASSERT_TRUE(HasRows(20000));
  QCoreApplication::processEvents();
  EXPECT_EQ(Top(), top) << "the lines that are read move away";
  m_table->selectRow(15005);
  QTest::keyClick(m_table, Qt::Key_End, Qt::ControlModifier);
  EXPECT_TRUE(Follows());
  for (int i = 0; i < 2; ++i) {
    Say(1000);
    const std::string newest = "line " + std::to_string(m_said - 1);
    ASSERT_TRUE(Wait([&] { return m_model.Line(19999).text == newest; }));
    EXPECT_TRUE(Wait([&] { return bar->value() == bar->maximum(); })) << "the newest is not in sight";
    EXPECT_TRUE(Follows());
  }
}

TEST_F(MessageLog, IsFilteredSearchedCopiedAndCleared) {
  Show();
  for (const char severity : {severityNotice, severityWarning, severityError}) Say(3, severity);
  m_model.AddMessage(Said("is AWAY: \xC3\x84rger", 0, severityFatal));
  ASSERT_TRUE(HasRows(10));
  Find<QComboBox>(m_pWindow.get(), "Severity")->setCurrentText("Warnings and errors");
  EXPECT_EQ(m_model.rowCount(), 7);
  Say(1);
  Say(1, severityError);
  EXPECT_TRUE(HasRows(8)) << "new lines pass the filter";
  auto* words = Find<QLineEdit>(m_pWindow.get(), "Search");
  QTest::keyClick(m_table, Qt::Key_F, Qt::ControlModifier);
  QTest::keyClicks(words, "line kiln warn");
  for (const int row : {0, 1, 2, 0}) {
    QTest::keyClick(words, row == 1 ? Qt::Key_F3 : Qt::Key_Return);
    EXPECT_EQ(m_table->currentIndex().row(), row);
  }
  Click(m_pWindow.get(), "&Previous");
  EXPECT_EQ(m_table->currentIndex().row(), 2);
  QTest::keyClick(words, Qt::Key_Escape);
  EXPECT_TRUE(words->text().isEmpty() && m_pWindow->isVisible()) << "Esc closes before it empties the search";
  words->setText("line away");
  Click(m_pWindow.get(), "&Next");
  EXPECT_TRUE(Says(*m_pWindow, "No message shown has these words"));
  words->setText(QString::fromUtf8("away \xC3\xA4rger"));
  Click(m_pWindow.get(), "&Next");
  m_table->setFocus();
  QTest::keyClick(m_table, Qt::Key_Up, Qt::ShiftModifier);
  QTest::keyClick(m_table, Qt::Key_C, Qt::ControlModifier);
  const QStringList copied = QGuiApplication::clipboard()->text().split('\n');
  ASSERT_EQ(copied.size(), 2);
  EXPECT_TRUE(copied[0].endsWith("\tError\tKiln\tline 8\t")) << copied[0].toStdString();
  EXPECT_TRUE(copied[1].contains("\tFatal\tKiln\tis AWAY: "));
  QTest::keyClick(m_table, Qt::Key_Return);
  EXPECT_EQ(m_opened, "Kiln");
  Click(m_pWindow.get(), "C&lear");
  EXPECT_EQ(m_model.rowCount(), 0);
  m_pWindow.reset();
  Show();
  EXPECT_EQ(Find<QComboBox>(m_pWindow.get(), "Severity")->currentText(), "Warnings and errors");
}

TEST_F(MessageLog, ShowsWhatARunAndTheDesktopSayAlsoAfterTheNextStart) {
  const auto shows = [](const char* part, const char* text) {
    return Wait([&] { return Logged(TopLevel("Message Log"), part, text) > 0; });
  };
  for (const bool isFirst : {true, false}) {
    CTestWindow window(m_demo);
    ActionOf(window, "Message Log")->trigger();
    if (isFirst) {
      EXPECT_TRUE(Runs(window));
      EXPECT_TRUE(Stops(window));
    }
    EXPECT_TRUE(shows("output \"All\"", "2 variables to "));
    EXPECT_TRUE(shows("", "saved ")) << "the last words of a run";
  }
  WriteBytes(m_demo, "{}");
  CTestWindow window(m_demo);
  window.Start();
  ActionOf(window, "Message Log")->trigger();
  EXPECT_TRUE(shows("input, Net nodes", "there is no PLC node"));
}

}  // namespace
}  // namespace vastra
