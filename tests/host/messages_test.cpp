// What a run says: the words of a message, which ones are shown, and the lines of a healthy run.
#include "host/common/message_text.h"
#include "host/common/shown_text.h"
#include "host/run/repeated_messages.h"
#include "host/run/run.h"
#include "tests/host/logger.h"
#include "vastra/core/console_sink.h"

namespace vastra {
namespace {

using std::chrono::seconds;

CRunMessage Failure(const char* text) {
  return {{}, severityError, functionRead, "CPlcLink", "Simulator (Kiln)", text};
}

class Messages : public CLoggerTest, private CConsoleSink {
 protected:
  Messages() { SetConsoleSink(this); }
  ~Messages() override { SetConsoleSink(nullptr); }
  int Write(UINT, const CString& text, COLORREF, DWORD) override { return m_shown += text.Std() + "\n", 1; }

  // Makes a scan each second, in which message comes if fails says so.
  void Scan(int count, const CRunMessage& message, const std::function<bool(int)>& fails) {
    for (int i = 0; i < count; ++i, m_now += seconds(1)) {
      if (fails(i) && m_repeated.Take(message, m_now)) m_shown += MessageText(message) + "\n";
      m_repeated.Report(m_now, true,
                        [this](const CRunMessage& said) { m_shown += MessageText(said) + "\n"; });
    }
  }
  std::string Take() { return std::exchange(m_shown, {}); }

  CRepeatedMessages m_repeated;
  CRepeatedMessages::Time m_now{seconds(1000)};
  std::string m_shown;
};

TEST_F(Messages, SayWhereAndWhatFailedWithoutClasses) {
  const std::pair<CRunMessage, const char*> kCases[] = {
      {Failure("Timeout error."), "Error: Kiln: read: Timeout error."},
      {{{}, severityFatal, functionOpen, "CPlcLink", "Modbus ()", "a\nb\x1b\n"},
       "Fatal error: Modbus: open: a b?"},
      {{{}, severityError, functionRead, "CNodeLink", "Kiln", "is away: no"}, "Error: Kiln is away: no"},
      {{{}, severityNotice, functionRead, "CNodeLink", "Kiln", "the stop waits"}, "Kiln: the stop waits"},
      {{{}, severityNotice, functionOpen, "CLogKeeper", "Journals", "recovered 1"}, "recovered 1"},
      {{{}, severityWarning, functionRead, "CFileLink", "InputFileLink", "End."},
       "Warning: input.inputFiles: End."}};
  for (const auto& [message, text] : kCases) EXPECT_EQ(MessageText(message), text);
}

TEST_F(Messages, AFailureIsShownOnceThenCountedOnceAMinuteAndWhenItEnds) {
  const CRunMessage failure = Failure("No.");
  const std::string line = "Error: Kiln: read: No.";
  Scan(150, failure, [](int) { return true; });
  EXPECT_EQ(Take(), line + "\n" + line + " (again 60 times in the last minute)\n" + line +
                        " (again 60 times in the last minute)\n");
  Scan(20, failure, [](int i) { return i % 4 == 0; });
  Scan(30, failure, [](int) { return false; });
  EXPECT_EQ(Take(), "Kiln: read: No. (ended after 155 times, 0:02:46)\n");
  Scan(200, failure, [](int i) { return i % 100 == 0; });
  EXPECT_EQ(Take(), line + "\n" + line + "\n");
  Scan(3, failure, [](int) { return true; });
  m_repeated.End([this](const CRunMessage& said) { m_shown += said.text; });
  EXPECT_EQ(Take(), line + "\nNo. (again 2 times until the end)");
  Scan(60, {{}, severityError, functionRead, "CNodeLink", "Kiln", "is away: no"},
       [](int i) { return i % 20 == 0; });
  EXPECT_EQ(Take(), "Error: Kiln is away: no\nError: Kiln is away: no\nError: Kiln is away: no\n");
}

TEST_F(Messages, TextsThatAlwaysChangeAreCountedTogether) {
  for (int i = 0; i < 10000; ++i) {
    const std::string text = std::to_string(i);
    CRunMessage message = Failure(text.c_str());
    message.link = "CFileLink";
    Scan(1, message, [](int) { return true; });
  }
  const auto lines = std::count(m_shown.begin(), m_shown.end(), '\n');
  EXPECT_LT(lines, 1000);
  EXPECT_NE(m_shown.find("more messages (again 60 times in the last minute)"), std::string::npos);
}

TEST_F(Messages, FailuresThatDifferInNumbersAloneAreOne) {
  for (const char* text : {"Refused; again in 0.5 s", "Refused; again in 10 s", "Lost"})
    Scan(1, Failure(text), [](int) { return true; });
  EXPECT_EQ(Take(), "Error: Kiln: read: Refused; again in 0.5 s\nError: Kiln: read: Lost\n");
  Scan(3, {{}, severityError, functionRead, "CNodeLink", "Kiln", "No node answers."},
       [](int) { return true; });
  EXPECT_EQ(Take(), "Error: Kiln: No node answers.\n");
}

TEST_F(Messages, ARunShowsTheInnermostFailureOnceAndCutsLongTexts) {
  m_messenger.SpeakToPeople(true);
  CRun run(Logger(R"({"outputs": []})", R"({"value4": 1, "value5": 109})"), m_messenger, {{.scans = 5}});
  m_messenger.SetFilters(1, 1, 1, 1, 0);
  ASSERT_EQ(run.Start(), 1);
  while (run.IsRunning()) run.Step();
  EXPECT_EQ(Take(),
            "Error: Simulator: read: Timeout error.\n"
            "Error: Simulator: read: Timeout error. (again 4 times until the end)\n");
  m_messenger.Send("CPlcLink", "S (K)", functionRead, severityError,
                   (std::string(1996, 'x') + "\u00fcyyyy").c_str());
  EXPECT_EQ(Take(), "Error: K: read: " + std::string(1996, 'x') + "...\n");
}

TEST_F(Messages, AHealthyRunSaysWhatItLogsAndOnceAnHourTheCounts) {
  CRunReport report(Logger("{}", "{}", R"({"saveRp": 1, "name": "All"})"), {},
                    [this](const std::string& line) { m_shown += line + "\n"; });
  report.Started({});
  EXPECT_EQ(Take(), "input: 1 node as fast as possible: Simulator\noutputs[0] \"All\": 1 variable to " +
                        m_dir.Path().Std() + ", binary and CSV, as fast as possible\n");
  for (const char* name : {"/a.rph", "/ah.csv"}) {
    CSavedLog log;
    log.path = name;
    report.LogClosed({"outputs[0]", "All"}, log);
  }
  EXPECT_EQ(Take(), "saved /a.rph, 0 samples\n");
  const auto now = std::chrono::steady_clock::now();
  for (const int minutes : {1, 59, 61, 62, 122}) report.Count({}, now + std::chrono::minutes(minutes));
  const std::string counts =
      "0 samples read so far, 0 failed reads, 0 late, 0 failed writes; 0 rows on disk, 0 in a journal, 0 "
      "lost\n";
  EXPECT_EQ(Take(), counts + counts);
}

}  // namespace
}  // namespace vastra
