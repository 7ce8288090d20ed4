#include "vastra/core/messenger.h"

#include <gtest/gtest.h>

#include <thread>

#include "tests/support/test_link.h"
#include "vastra/core/console_sink.h"
#include "vastra/platform/prompt.h"

namespace vastra {
namespace {

// A messenger, also that of the links, and what it shows: lines as "window colour text", boxes as "box type
// text".
class CScreen : public CConsoleSink, public CPrompter {
 public:
  CScreen() { SetConsoleSink(this), SetPrompter(this), CLink::SetMessenger(&m_messenger); }
  ~CScreen() override { SetConsoleSink(nullptr), SetPrompter(nullptr), CLink::SetMessenger(nullptr); }

  int Write(UINT id, const CString& text, COLORREF colour, DWORD reserved) override {
    CString line;
    line.Format("%u %06X %s\n", id, colour, text.Std().c_str());
    EXPECT_EQ(reserved, 0u);
    return m_shown += line.Std(), 1;
  }
  int Show(const CString& text, const CString&, UINT type) override {
    CString box;
    box.Format("box %02X %s\n", type, text.Std().c_str());
    return m_shown += box.Std(), IDOK;
  }
  std::string Take() { return std::exchange(m_shown, {}); }

  // Shows all kinds of line, the next one at depth levels.
  void Deepen(int levels) {
    m_messenger.SetFilters(1, 1, 1, 1, 1);
    for (int i = 0; i < levels; ++i) m_messenger.Send("", "", functionOpen, severityBegin, nullptr);
    m_shown.clear();
  }
  // From the indent of a kind of line that no filter drops.
  int Depth() {
    m_messenger.Send("", "", functionOpen, 42, nullptr);
    return static_cast<int>(Take().find('(') - std::size("0 000000")) / 3;
  }

  CMessenger m_messenger;

 private:
  std::string m_shown;
};

const struct {
  char severity;
  const char* shown;  // for a line at depth 2
  int depth;          // after the line
} kCases[] = {
    {severityFatal,
     "0 0000B4    Fatal error - pump : No.( CPump,Flush)\n"
     "box 10 Fatal error\n\n    pump\n    No.\n\nLinker type : CPump\nFunction :Flush\n",
     1},
    {severityError, "0 0000B4    Error - pump : No.( CPump,Flush)\n", 1},
    {severityWarning, "0 0082FF    Warning - pump : No.( CPump,Flush)\n", 1},
    {severityNotice, "0 960000       Notice - pump : No.( CPump,Flush)\n", 2},
    {severityBegin, "0 000000       Begin - pump : No.( CPump,Flush)\n", 3},
    {severityEnd, "0 000000    End - pump : No.( CPump,Flush)\n", 1},
    {6, "0 000000       pump : No.( CPump,Flush)\n", 2},
    {-1, "0 000000       pump : No.( CPump,Flush)\n", 2},
};

TEST(Messenger, EachKindHasItsWordsColourDepthAndFilter) {
  for (int off = 0; off < 6; ++off)  // 5: no filter drops
    for (const auto& c : kCases) {
      CScreen screen;
      screen.Deepen(2);
      screen.m_messenger.SetFilters(off != 0, off != 1, off != 2, off != 3, off != 4);
      screen.m_messenger.Send("CPump", "pump", functionFlush, c.severity, "No.");
      const bool drops = off < 5 && (off == c.severity || (off == 4 && c.severity == severityEnd));
      EXPECT_EQ(screen.Take(), drops ? "" : c.shown);
      EXPECT_EQ(screen.Depth(), drops && c.severity == severityBegin ? 2 : c.depth) << c.shown << off;
    }
}

TEST(Messenger, ShowsFailuresAndNoticesAtFirstAndNoTextAsAnEmptyLineInTheBox) {
  CScreen screen;
  for (char severity = severityFatal; severity <= severityEnd; ++severity)
    screen.m_messenger.Send("CPump", "pump", functionOpen, severity, nullptr);
  EXPECT_EQ(screen.Take(),
            "0 0000B4 Fatal error - pump( CPump,Open)\n"
            "box 10 Fatal error\n\n    pump\n    \n\nLinker type : CPump\nFunction :Open\n"
            "0 0000B4 Error - pump( CPump,Open)\n0 0082FF Warning - pump( CPump,Open)\n"
            "0 960000 Notice - pump( CPump,Open)\n");
  EXPECT_EQ(screen.Depth(), 0) << "negative";
  int filters[5] = {};
  screen.m_messenger.SetFilters(5, 4, 3, 2, 1);
  screen.m_messenger.GetFilters(filters[0], filters[1], filters[2], filters[3], filters[4]);
  EXPECT_EQ(std::vector<int>(filters, filters + 5), (std::vector<int>{5, 4, 3, 2, 1}));
}

// Also for the thread sanitizer: chains on two threads share one messenger.
TEST(Messenger, AcceptsLinesOfTwoThreads) {
  CScreen screen;
  const auto send = [&](const char severity) {
    for (int i = 0; i < 1000; ++i) screen.m_messenger.Send("", "", functionRead, severity, nullptr);
  };
  screen.m_messenger.SetFilters(0, 0, 0, 0, 0);
  std::thread other(send, severityEnd);
  send(severityError);
  other.join();
  EXPECT_EQ(screen.Depth(), 0);
}

// A filter may change between a Begin and its End.
TEST(Messenger, ALinkEndsAtTheIndentOfItsBeginAndADroppedEndLowersTheDepth) {
  CScreen screen;
  CPicture picture("N(T)");
  CLogSample sample;
  EXPECT_EQ(Open(*picture.m_head, "Na Ta"), 1);
  screen.Deepen(0);
  picture.m_leaves[0]->m_fails = true;
  EXPECT_EQ(picture.m_head->Read(sample), 0);
  EXPECT_EQ(screen.Take(),
            "0 000000 Begin - N( CNamerLink,Read)\n0 000000    Begin - T1( CTestLink,Read)\n"
            "0 0000B4    Error - T1 : Timeout error.( CTestLink,Read)\n"
            "0 0000B4 Error - N : Could not read component.( CNamerLink,Read)\n");
  screen.Deepen(2);
  screen.m_messenger.SetFilters(1, 1, 1, 1, 0);
  for (const int depth : {2, 1, 0, 0}) {
    EXPECT_EQ(screen.Depth(), depth);
    picture.m_leaves[0]->Close();
  }
}

}  // namespace
}  // namespace vastra
