#include "vastra/core/messenger.h"

#include <gtest/gtest.h>

#include <thread>

#include "tests/core/picture.h"
#include "vastra/core/console_sink.h"
#include "vastra/platform/prompt.h"

namespace vastra {
namespace {

constexpr char kProbe = 42;  // an unknown kind: always shown, so that its indent is the depth

// Everything that a message shows: console lines as "window colour line", boxes as "box type text".
class CScreen : public CConsoleSink, public CPrompter {
 public:
  CScreen() : m_sink(SetConsoleSink(this)), m_prompter(SetPrompter(this)) {}
  ~CScreen() override { SetConsoleSink(m_sink), SetPrompter(m_prompter); }

  int Write(UINT id, const CString& text, COLORREF colour, DWORD reserved) override {
    CString line;
    line.Format("%u %06X ", id, colour);
    m_shown.push_back((line + text).Std());
    EXPECT_EQ(reserved, 0u);
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

const struct {
  char severity;
  std::vector<std::string> shown;  // for a line at depth 2
  int depth;                       // after the line
  int dropped;                     // after a line that its filter drops
} kCases[] = {
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

TEST(Messenger, EachKindHasItsWordsColourDepthAndFilter) {
  for (int off = 0; off < 6; ++off)  // 5: no filter drops
    for (const auto& c : kCases) {
      CScreen screen;
      CMessenger messenger;
      Deepen(messenger, screen, 2);
      messenger.SetFilters(off != 0, off != 1, off != 2, off != 3, off != 4);
      messenger.Send("CPump", "pump", functionFlush, c.severity, "No.");
      const bool drops = off < 5 && (off == c.severity || (off == 4 && c.severity == severityEnd));
      EXPECT_EQ(screen.Take(), drops ? std::vector<std::string>() : c.shown);
      EXPECT_EQ(Depth(messenger, screen), drops ? c.dropped : c.depth) << off << " " << int(c.severity);
    }
}

TEST(Messenger, FiltersShowFailuresAndNoticesUntilTheyAreSet) {
  CScreen screen;
  CMessenger messenger;
  for (char severity = severityFatal; severity <= severityEnd; ++severity)
    messenger.Send("CPump", "pump", functionOpen, severity, nullptr);
  EXPECT_EQ(screen.Take().size(), 5u);  // four lines and a box
  messenger.SetFilters(5, 4, 3, 2, 1);
  int filters[5] = {};
  messenger.GetFilters(filters[0], filters[1], filters[2], filters[3], filters[4]);
  EXPECT_EQ(std::vector<int>(filters, filters + 5), (std::vector<int>{5, 4, 3, 2, 1}));
}

TEST(Messenger, DepthIsNeverNegativeAndMissingTextIsAnEmptyLineInTheBox) {
  CScreen screen;
  CMessenger messenger;
  for (const char severity : {severityEnd, severityError}) messenger.Send("", "", functionOpen, severity, "");
  screen.Take();
  messenger.Send("CPump", "pump", functionGetVarNames, severityFatal, nullptr);
  EXPECT_EQ(
      screen.Take(),
      (std::vector<std::string>{
          "0 0000B4 Fatal error - pump( CPump,Get Variable Names)",
          "box 10 Fatal error\n\n    pump\n    \n\nLinker type : CPump\nFunction :Get Variable Names"}));
  EXPECT_EQ(Depth(messenger, screen), 0);
}

// Also for the thread sanitizer: chains on two threads share one messenger.
TEST(Messenger, AcceptsLinesOfTwoThreads) {
  CScreen screen;
  CMessenger messenger;
  const auto send = [&](const char severity) {
    for (int i = 0; i < 1000; ++i) messenger.Send("", "", functionRead, severity, nullptr);
  };
  messenger.SetFilters(0, 0, 0, 0, 0);
  std::thread other(send, severityEnd);
  send(severityError);
  other.join();
  EXPECT_EQ(Depth(messenger, screen), 0);
}

// Links send to messenger while the object exists.
struct CInstalled {
  explicit CInstalled(CMessenger& messenger) { CLink::SetMessenger(&messenger); }
  ~CInstalled() { CLink::SetMessenger(nullptr); }
};

TEST(Messenger, AnOperationOfALinkEndsAtTheIndentOfItsBegin) {
  CMessenger messenger;
  messenger.SetFilters(1, 1, 1, 1, 1);
  const CInstalled installed(messenger);
  CScreen screen;
  CPicture picture("N(T)");
  EXPECT_EQ(Open(*picture.m_head, "Na Ta"), 1);
  screen.Take();
  CLogSample sample;
  picture.m_leaves[0]->m_fails = true;
  EXPECT_EQ(picture.m_head->Read(sample), 0);
  EXPECT_EQ(screen.Take(),
            (std::vector<std::string>{"0 000000 Begin - N( CNamerLink,Read)",
                                      "0 000000    Begin - T1( CTestLink,Read)",
                                      "0 0000B4    Error - T1 : Timeout error.( CTestLink,Read)",
                                      "0 0000B4 Error - N : Could not read component.( CNamerLink,Read)"}));
}

// A filter may change between a Begin and its End: each End that is dropped still goes one level up.
TEST(Messenger, ADroppedEndOfALinkLowersTheDepthAndADroppedBeginDoesNotRaiseIt) {
  CMessenger messenger;
  const CInstalled installed(messenger);
  CScreen screen;
  CTestLink link;
  Deepen(messenger, screen, 2);
  messenger.SetFilters(1, 1, 1, 1, 0);
  for (const int depth : {2, 1, 0, 0}) {
    EXPECT_EQ(Depth(messenger, screen), depth);
    link.Close();
  }
}

}  // namespace
}  // namespace vastra
