// What all links have in common: opening, closing, and the lines that they send.
#include "vastra/core/link.h"

#include <gtest/gtest.h>

#include "tests/core/picture.h"
#include "tests/support/recorder.h"
#include "vastra/core/console_sink.h"

namespace vastra {
namespace {

TEST(Link, CreateRefusesAMissingComponent) {
  CRecorder recorder;
  EXPECT_EQ(nullptr, CNamerLink::Create(nullptr));
  EXPECT_EQ(nullptr, CMapperLink::Create(nullptr));
  EXPECT_EQ(nullptr, CScalerLink::Create(nullptr));
  CTestLink only;
  EXPECT_EQ(nullptr, CConcatLink::Create(&only, nullptr));
  EXPECT_EQ(nullptr, CConcatLink::Create(nullptr, &only));
}

struct COpenCase {
  const char *chain, *configs;
  int left;  // configurations on the list behind Open
  const char* faults;
  UINT mode = CLink::modeRead;
};
const COpenCase kOpens[] = {
    {"N(T)", "Na Ta", 0, ""},
    {"N(T)", "Na Ta X", 1, ""},
    {"S(M(N(T)))", "S Nb Na T", 0, ""},
    {"N(T)", "", 0, "Open Fatal N Invalid configuration list.\n"},
    {"N(T)", "Na", 0,
     "Open Fatal T1 Invalid configuration list.\n"
     "Open Error N Could not open component.\n"},
    {"N(T)", "0 Ta", 1, "Open Fatal N Invalid configuration.\n"},
    {"N(T)", "S Ta", 1, "Open Fatal N Invalid configuration.\n"},
    {"M(T)", "S Ta", 1, "Open Fatal M Invalid configuration.\n"},
    {"S(T)", "Na Ta", 1, "Open Fatal S Invalid configuration.\n"},
    {"S(N(T))", "S Na X Ta", 1,
     "Open Fatal T1 Invalid configuration.\n"
     "Open Error N Could not open component.\n"
     "Open Error S Could not open component.\n"},
    {"M(t)", "Na Ta", 0,
     "Get Variable Names Error T1 Timeout error.\n"
     "Open Error M Could not get variable name list from component.\n"},
    {"S(t)", "S Ta", 0,
     "Get Variable Names Error T1 Timeout error.\n"
     "Open Error S Could not get variable names from component.\n"},
    {"C(T,T)", "C1 Ta Tb X", 1, ""},
    {"C(T,T)", "C3 Taa X S Tbb", 0, ""},
    {"C(T,T)", "C0 Ta Tb", 2,
     "Open Fatal T1 Invalid configuration list.\n"
     "Open Error C Could not open component.\n"},
    {"C(T,T)", "C2 Ta Tb", 0,
     "Open Fatal T2 Invalid configuration list.\n"
     "Open Error C Could not open component.\n"},
    {"C(T,T)", "C2 X Ta Tb S", 2,
     "Open Fatal T1 Invalid configuration.\n"
     "Open Error C Could not open component.\n"},
    {"C(T,T)", "C1 Ta X Tb", 1,
     "Open Fatal T2 Invalid configuration.\n"
     "Open Error C Could not open component.\n"},
    {"C(T,T)", "C3 Ta Tb", 2, "Open Fatal C Invalid configuration list.\n"},
    {"C(T,T)", "C-1 Ta Tb", 2,
     "Open Fatal T1 Invalid configuration list.\n"
     "Open Error C Could not open component.\n"},
    {"C(T,T)", "", 0, "Open Fatal C Invalid configuration list.\n"},
    {"C(T,T)", "0 Ta", 1, "Open Fatal C Invalid configuration.\n"},
    {"C(T,T)", "Na Ta", 1, "Open Fatal C Invalid configuration.\n"},
    {"C(T,T)", "", 0, "Open Fatal C Cannot open CConcatLink on write mode.\n", CLink::modeWrite},
    {"C(t,T)", "C1 Ta Tb", 0,
     "Get Variable Names Error T1 Timeout error.\n"
     "Open Error C Could not get variable name list from component.\n"},
    {"C(T,t)", "C1 Ta Tb", 0,
     "Get Variable Names Error T2 Timeout error.\n"
     "Open Error C Could not get variable name list from component.\n"},
    {"C(T,T)", "C1 Tab Tcb", 0, "Open Fatal C Variable names were duplicated.\n"},
    {"C(T,C(T,T))", "C1 Ta C1 Tb Ta", 0, "Open Fatal C Variable names were duplicated.\n"},
};

TEST(Link, OpenTakesTheRightConfigurationsAndSaysWhatIsWrong) {
  for (const COpenCase& c : kOpens) {
    CRecorder recorder;
    CPicture picture(c.chain);
    CLinkConfigList configs;
    Fill(configs, c.configs);
    EXPECT_EQ(*c.faults == 0, picture.m_head->Open(configs, c.mode)) << c.chain << " " << c.configs;
    EXPECT_EQ(c.faults, recorder.TakeFaults()) << c.chain << " " << c.configs;
    EXPECT_EQ(c.left, configs.GetCount()) << c.chain << " " << c.configs;
    CStringArray names = Names("x");
    if (*c.faults) {
      EXPECT_EQ(0, picture.m_head->GetVarNames(names)) << "open behind a failure: " << c.configs;
      EXPECT_EQ(1, names.GetSize());
    }
  }
}

constexpr const char* kOpened =  // C(N(T),T)
    "Open Begin N\nOpen Begin T1\nOpen End T1\nOpen End N\nOpen Begin T2\nOpen End T2\n"
    "Get Variable Names Begin N\nGet Variable Names End N\n"
    "Get Variable Names Begin T2\nGet Variable Names End T2\nOpen End C\n";
constexpr const char* kTailClosed = "Close Begin T1\nClose End T1\n";
const std::string kClosed = "Close Begin C\nClose Begin N\n" + std::string(kTailClosed) +
                            "Close End N\nClose Begin T2\nClose End T2\nClose End C\n";

TEST(Link, TheTraceOfALifeIsComplete) {
  CRecorder recorder;
  CPicture picture("C(N(T),T)");
  EXPECT_EQ(1, Open(*picture.m_head, "C2 Na T Tb"));
  EXPECT_EQ(std::string("Open Begin C\n") + kOpened, recorder.Take());
  EXPECT_EQ(1, Open(*picture.m_head, "C2 Na T Tb"));
  EXPECT_EQ("Open Begin C\n" + kClosed + kOpened, recorder.Take());
  picture.m_head->Close();
  EXPECT_EQ(kClosed, recorder.Take());
  picture.m_head->Close();
  EXPECT_EQ(kClosed, recorder.Take());
  EXPECT_EQ(1, Open(*picture.m_head, "C2 Na T Tb"));
  recorder.Take();
  picture.m_head.reset();
  EXPECT_EQ(kClosed + "Close Begin N\n" + kTailClosed + "Close End N\n" + kTailClosed +
                "Close Begin T2\nClose End T2\n",
            recorder.Take());
}

TEST(Link, EveryTransferIsTracedAndSaysWhoFailed) {
  struct CCase {
    const char *chain, *configs, *read, *write;
  };
  const CCase cases[] = {
      {"N(T)", "Na Ta",
       "Read Begin N\nRead Begin T1\nRead Error T1 Timeout error.\nRead Error N Could not read component.\n",
       "Write Begin N\nWrite Begin T1\nWrite Error T1 Timeout error.\n"
       "Write Error N Could not write to component.\n"},
      {"M(T)", "Na Ta",
       "Read Begin M\nRead Begin T1\nRead Error T1 Timeout error.\nRead Error M Could not read component.\n",
       "Write Begin M\nWrite Begin T1\nWrite Error T1 Timeout error.\n"
       "Write Error M Could not write to component.\n"},
      {"S(T)", "S Ta",
       "Read Begin S\nRead Begin T1\nRead Error T1 Timeout error.\nRead Error S Could not read component.\n",
       "Write Begin S\nWrite Begin T1\nWrite Error T1 Timeout error.\n"
       "Write Error S Could not write to component.\n"},
      {"C(T,T)", "C1 Ta Tb",
       "Read Begin C\nRead Begin T1\nRead Error T1 Timeout error.\nRead Error C Could not read component.\n",
       "Write Error C CConcatLink cannot be used in write mode.\n"},
  };
  for (const CCase& c : cases) {
    CRecorder recorder;
    CPicture picture(c.chain);
    CLogSample sample;
    sample.m_values.Add(1);
    EXPECT_EQ(1, Open(*picture.m_head, c.configs));
    recorder.Take();
    picture.m_leaves[0]->m_fails = true;
    EXPECT_EQ(0, picture.m_head->Read(sample));
    EXPECT_EQ(c.read, recorder.Take());
    sample.m_values.SetSize(1);
    EXPECT_EQ(0, picture.m_head->Write(sample));
    EXPECT_EQ(c.write, recorder.Take());
    picture.m_leaves[0]->m_fails = false;  // the link is still open and tries again
    picture.m_leaves[0]->m_sample.m_values.SetSize(1);
    EXPECT_EQ(1, picture.m_head->Read(sample)) << c.chain;
    EXPECT_EQ("", recorder.TakeFaults());
  }
}

TEST(Link, AClosedLinkAnswersWithOneFatalLine) {
  struct CCase {
    const char *chain, *names, *write;
  };
  const CCase cases[] = {
      {"N(T)", "Get Variable Names Begin N\nGet Variable Names Fatal N Linker is not opened.\n",
       "Write Begin N\nWrite Fatal N Linker is not opened.\n"},
      {"M(T)", "Get Variable Names Begin M\nGet Variable Names Fatal M Linker is not opened.\n",
       "Write Begin M\nWrite Fatal M Linker is not opened.\n"},
      {"S(N(T))",
       "Get Variable Names Begin S\nGet Variable Names Begin N\n"
       "Get Variable Names Fatal N Linker is not opened.\nGet Variable Names End S\n",
       "Write Begin S\nWrite Fatal S Linker is not opened.\n"},
      {"C(T,T)", "Get Variable Names Begin C\nGet Variable Names Fatal C Linker is not opened.\n",
       "Write Error C CConcatLink cannot be used in write mode.\n"},
  };
  for (const CCase& c : cases) {
    CRecorder recorder;
    CPicture picture(c.chain);
    CLogSample sample;
    CStringArray names = Names("x");
    const std::string name(1, c.chain[0]);
    EXPECT_EQ(0, picture.m_head->GetVarNames(names));
    EXPECT_EQ(c.names, recorder.Take());
    EXPECT_EQ(1, names.GetSize());
    EXPECT_EQ(0, picture.m_head->Read(sample));
    EXPECT_EQ("Read Begin " + name + "\nRead Fatal " + name + " Linker is not opened.\n", recorder.Take());
    EXPECT_EQ(0, picture.m_head->Write(sample));
    EXPECT_EQ(c.write, recorder.Take());
    EXPECT_EQ(0, picture.m_head->Comm(sample));
    EXPECT_EQ("", recorder.Take());
  }
}

TEST(Link, CommGoesTheWayThatTheChainWasOpenedFor) {
  CRecorder recorder;
  CPicture picture("N(T)");
  CLogSample sample;
  EXPECT_EQ(1, Open(*picture.m_head, "N T", CLink::modeWrite));
  recorder.Take();
  EXPECT_EQ(1, picture.m_head->Comm(sample));
  EXPECT_EQ("Write Begin N\nWrite Begin T1\nWrite End T1\nWrite End N\n", recorder.Take());
  EXPECT_EQ(1, Open(*picture.m_head, "N T", CLink::modeRead));
  recorder.Take();
  EXPECT_EQ(1, picture.m_head->Comm(sample));
  EXPECT_EQ("Read Begin N\nRead Begin T1\nRead End T1\nRead End N\n", recorder.Take());
  EXPECT_EQ(0, picture.m_leaves[0]->Comm(sample));  // a leaf has no component
}

struct CSink : CConsoleSink {
  CSink() { SetConsoleSink(this); }
  ~CSink() override { SetConsoleSink(nullptr); }
  int Write(UINT, const CString& text, COLORREF, DWORD) override { return lines += text.Std() + "\n", 1; }
  std::string lines;
};

// The trace that a console shows, with its indent.
TEST(Link, AnOperationClosesAtTheIndentOfItsBegin) {
  CMessenger messenger;
  messenger.SetFilters(1, 1, 1, 1, 1);
  CLink::SetMessenger(&messenger);
  {
    CPicture picture("N(T)");
    EXPECT_EQ(1, Open(*picture.m_head, "Na Ta"));
    CLogSample sample;
    picture.m_leaves[0]->m_fails = true;
    const CSink sink;
    EXPECT_EQ(0, picture.m_head->Read(sample));
    EXPECT_EQ(
        "Begin - N( CNamerLink,Read)\n"
        "   Begin - T1( CTestLink,Read)\n"
        "   Error - T1 : Timeout error.( CTestLink,Read)\n"
        "Error - N : Could not read component.( CNamerLink,Read)\n",
        sink.lines);
  }
  CLink::SetMessenger(nullptr);
}

// A filter may change between a Begin and its End: each End that is dropped still goes one level up.
TEST(Link, ADroppedEndLowersTheDepthAndADroppedBeginDoesNotRaiseIt) {
  CMessenger messenger;
  CLink::SetMessenger(&messenger);
  {
    CTestLink link;
    messenger.SetFilters(1, 1, 1, 1, 1);
    for (int i = 0; i < 2; ++i) messenger.Send("", "", functionOpen, severityBegin, nullptr);
    messenger.SetFilters(1, 1, 1, 1, 0);
    const CSink sink;
    for (int i = 0; i < 4; ++i) {
      messenger.Send("", "", functionOpen, severityNotice, nullptr);
      link.Close();
    }
    EXPECT_EQ("      Notice - ( ,Open)\n   Notice - ( ,Open)\nNotice - ( ,Open)\nNotice - ( ,Open)\n",
              sink.lines);
  }
  CLink::SetMessenger(nullptr);
}

}  // namespace
}  // namespace vastra
