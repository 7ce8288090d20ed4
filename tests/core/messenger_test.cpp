#include "vastra/core/messenger.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "vastra/core/console_sink.h"
#include "vastra/platform/prompt.h"

namespace vastra {
namespace {

constexpr char kProbe = 42;  // a kind without a row: always shown, so that its indent tells the depth

// Everything that a message shows: console lines as "window colour line", boxes as "box type text".
class CScreen : public CConsoleSink, public CPrompter {
 public:
  CScreen() : m_sink(SetConsoleSink(this)), m_prompter(SetPrompter(this)) {}
  ~CScreen() override { SetConsoleSink(m_sink), SetPrompter(m_prompter); }

  int Write(UINT id, const CString& text, COLORREF colour, DWORD reserved) override {
    CString line;
    line.Format("%u %06X ", id, colour);
    m_shown.push_back((line + text).Std());
    EXPECT_EQ(0u, reserved);
    return 1;
  }
  int Show(const CString& text, const CString&, UINT type) override {
    CString box;
    box.Format("box %02X ", type);
    m_shown.push_back((box + text).Std());
    return IDOK;
  }
  std::vector<std::string> Take() { return std::exchange(m_shown, {}); }

 private:
  CConsoleSink* m_sink;
  CPrompter* m_prompter;
  std::vector<std::string> m_shown;
};

int Depth(CMessenger& messenger, CScreen& screen) {
  messenger.Send("", "", functionOpen, kProbe, nullptr);
  const std::string line = screen.Take().back().substr(std::size("0 000000"));
  return static_cast<int>(line.find('(')) / 3;
}

void Deepen(CMessenger& messenger, CScreen& screen, int levels) {
  messenger.SetFilters(1, 1, 1, 1, 1);
  for (int i = 0; i < levels; ++i) messenger.Send("", "", functionOpen, severityBegin, nullptr);
  screen.Take();
}

struct CKindCase {
  char severity;
  std::vector<std::string> shown;  // for a line at depth 2
  int depth;                       // behind it, and behind one that its filter drops
  int dropped;
};
const CKindCase kCases[] = {
    {severityFatal,
     {"0 0000B4    Fatal error - pump : No.( CPump,Flush)",
      "box 10 Fatal error\n\n    pump\n    No.\n\nLinker type : CPump\nFunction :Flush"},
     1,
     1},
    {severityError, {"0 0000B4    Error - pump : No.( CPump,Flush)"}, 1, 1},
    {severityWarning, {"0 0082FF    Warning - pump : No.( CPump,Flush)"}, 1, 1},
    {severityNotice, {"0 960000       Notice - pump : No.( CPump,Flush)"}, 2, 2},
    {severityBegin, {"0 000000       Begin - pump : No.( CPump,Flush)"}, 3, 2},
    {severityEnd, {"0 000000    End - pump : No.( CPump,Flush)"}, 1, 1},
    {6, {"0 000000       pump : No.( CPump,Flush)"}, 2, 2},
    {-1, {"0 000000       pump : No.( CPump,Flush)"}, 2, 2},
};

TEST(Messenger, EachKindHasItsWordsItsColourAndItsPlaceInTheTrace) {
  for (const CKindCase& c : kCases) {
    CScreen screen;
    CMessenger messenger;
    Deepen(messenger, screen, 2);
    messenger.Send("CPump", "pump", functionFlush, c.severity, "No.");
    EXPECT_EQ(c.shown, screen.Take());
    EXPECT_EQ(c.depth, Depth(messenger, screen)) << int(c.severity);
  }
}

TEST(Messenger, AFilterDropsItsKindAloneAndLeavesTheDepthInStep) {
  for (int off = 0; off < 5; ++off)
    for (const CKindCase& c : kCases) {
      CScreen screen;
      CMessenger messenger;
      Deepen(messenger, screen, 2);
      messenger.SetFilters(off != 0, off != 1, off != 2, off != 3, off != 4);
      messenger.Send("CPump", "pump", functionFlush, c.severity, "No.");
      const bool drops = off == c.severity || (off == 4 && c.severity == severityEnd);
      EXPECT_EQ(drops ? std::vector<std::string>() : c.shown, screen.Take());
      EXPECT_EQ(drops ? c.dropped : c.depth, Depth(messenger, screen)) << off << " " << int(c.severity);
    }
}

TEST(Messenger, ShowsFailuresAndNoticesUntilItIsToldOtherwise) {
  CScreen screen;
  CMessenger messenger;
  std::size_t shown = 0;
  for (char severity = severityFatal; severity <= severityEnd; ++severity)
    messenger.Send("CPump", "pump", functionOpen, severity, nullptr);
  for (const std::string& line : screen.Take()) shown += line.find("pump") != std::string::npos;
  EXPECT_EQ(5u, shown);  // four lines and a box
}

TEST(Messenger, DepthNeverFallsBelowTheFirstColumn) {
  CScreen screen;
  CMessenger messenger;
  for (const char severity : {severityEnd, severityError, severityFatal})
    messenger.Send("", "", functionOpen, severity, "");
  EXPECT_EQ(0, Depth(messenger, screen));
}

TEST(Messenger, NoTextIsAnEmptyLineInTheBoxAndNothingInTheTrace) {
  CScreen screen;
  CMessenger messenger;
  messenger.Send("CPump", "pump", functionGetVarNames, severityFatal, nullptr);
  EXPECT_EQ((std::vector<std::string>{
                "0 0000B4 Fatal error - pump( CPump,Get Variable Names)",
                "box 10 Fatal error\n\n    pump\n    \n\nLinker type : CPump\nFunction :Get Variable Names"}),
            screen.Take());
}

TEST(Messenger, ACopyTakesFiltersAndDepth) {
  CScreen screen;
  CMessenger messenger;
  Deepen(messenger, screen, 2);
  messenger.SetFilters(5, 4, 3, 2, 1);
  CMessenger copy(messenger), assigned;
  assigned = copy;
  int filters[5] = {};
  assigned.GetFilters(filters[0], filters[1], filters[2], filters[3], filters[4]);
  EXPECT_EQ((std::vector<int>{5, 4, 3, 2, 1}), std::vector<int>(filters, filters + 5));
  EXPECT_EQ(2, Depth(assigned, screen));
}

// For the thread sanitizer: chains on two threads share one messenger.
TEST(Messenger, TakesLinesOfTwoThreads) {
  CMessenger messenger;
  messenger.SetFilters(0, 1, 1, 1, 1);
  const auto send = [&] {
    for (int i = 0; i < 1000; ++i) {
      messenger.Send("CPump", "pump", functionRead, severityBegin, nullptr);
      messenger.Send("CPump", "pump", functionRead, i % 2 ? severityEnd : severityFatal, nullptr);
      messenger.SetFilters(0, 1, 1, 1, i % 3);
    }
  };
  std::thread other(send);
  send();
  other.join();
}

}  // namespace
}  // namespace vastra
