// What all links have in common: opening, closing, and the lines that they send.
#include "vastra/core/link.h"

#include <gtest/gtest.h>

#include "tests/core/picture.h"
#include "tests/support/recorder.h"

namespace vastra {
namespace {

TEST(Link, CreateRefusesAMissingComponent) {
  CRecorder recorder;
  CTestLink only;
  EXPECT_EQ(CNamerLink::Create(nullptr), nullptr);
  EXPECT_EQ(CMapperLink::Create(nullptr), nullptr);
  EXPECT_EQ(CScalerLink::Create(nullptr), nullptr);
  EXPECT_EQ(CConcatLink::Create(&only, nullptr), nullptr);
  EXPECT_EQ(CConcatLink::Create(nullptr, &only), nullptr);
}

const struct {
  const char *chain, *configs;
  int left;  // configurations on the list after Open
  const char* faults;
} kOpens[] = {
    {"N(T)", "Na Ta X", 1, ""},
    {"S(M(N(T)))", "S Nb Na T", 0, ""},
    {"N(T)", "", 0, "Open Fatal N Invalid configuration list.\n"},
    {"N(T)", "Na", 0, "Open Fatal T1 Invalid configuration list.\nOpen Error N Could not open component.\n"},
    {"N(T)", "0 Ta", 1, "Open Fatal N Invalid configuration.\n"},
    {"N(T)", "S Ta", 1, "Open Fatal N Invalid configuration.\n"},
    {"M(T)", "S Ta", 1, "Open Fatal M Invalid configuration.\n"},
    {"S(T)", "Na Ta", 1, "Open Fatal S Invalid configuration.\n"},
    {"M(t)", "Na Ta", 0,
     "Get Variable Names Error T1 Timeout error.\n"
     "Open Error M Could not get variable name list from component.\n"},
    {"S(t)", "S Ta", 0,
     "Get Variable Names Error T1 Timeout error.\n"
     "Open Error S Could not get variable names from component.\n"},
    {"C(T,T)", "C1 Ta Tb X", 1, ""},
    {"C(T,T)", "C3 Taa X S Tbb", 0, ""},
    {"C(T,T)", "C2 Ta Tb", 0,
     "Open Fatal T2 Invalid configuration list.\nOpen Error C Could not open component.\n"},
    {"C(T,T)", "C1 Ta X Tb", 1,
     "Open Fatal T2 Invalid configuration.\nOpen Error C Could not open component.\n"},
    {"C(T,T)", "C3 Ta Tb", 2, "Open Fatal C Invalid configuration list.\n"},
    {"C(T,T)", "C-1 Ta Tb", 2,
     "Open Fatal T1 Invalid configuration list.\nOpen Error C Could not open component.\n"},
    {"C(T,T)", "Na Ta", 1, "Open Fatal C Invalid configuration.\n"},
    {"C(t,T)", "C1 Ta Tb", 0,
     "Get Variable Names Error T1 Timeout error.\n"
     "Open Error C Could not get variable name list from component.\n"},
    {"C(T,t)", "C1 Ta Tb", 0,
     "Get Variable Names Error T2 Timeout error.\n"
     "Open Error C Could not get variable name list from component.\n"},
    {"C(T,T)", "C1 Tab Tbc", 0, "Open Fatal C Variable names were duplicated.\n"},
    {"C(T,C(T,T))", "C1 Ta C1 Tb Ta", 0, "Open Fatal C Variable names were duplicated.\n"},
};

TEST(Link, OpenConsumesItsConfigurationsAndReportsFaults) {
  for (const auto& c : kOpens) {
    SCOPED_TRACE(c.configs);
    CRecorder recorder;
    CPicture picture(c.chain);
    CLinkConfigList configs;
    Fill(configs, c.configs);
    EXPECT_EQ(picture.m_head->Open(configs, CLink::modeRead), *c.faults == 0);
    EXPECT_EQ(recorder.TakeFaults(), c.faults);
    EXPECT_EQ(configs.GetCount(), c.left);
    CStringArray names;
    EXPECT_EQ(picture.m_head->GetVarNames(names), *c.faults == 0);
  }
}

constexpr const char* kOpened =  // C(N(T),T)
    "Open Begin N\nOpen Begin T1\nOpen End T1\nOpen End N\nOpen Begin T2\nOpen End T2\n"
    "Get Variable Names Begin N\nGet Variable Names End N\n"
    "Get Variable Names Begin T2\nGet Variable Names End T2\nOpen End C\n";
constexpr const char* kTailClosed = "Close Begin T1\nClose End T1\n";
const std::string kClosed = "Close Begin C\nClose Begin N\n" + std::string(kTailClosed) +
                            "Close End N\nClose Begin T2\nClose End T2\nClose End C\n";

TEST(Link, OpenCloseAndDeleteAreTraced) {
  CRecorder recorder;
  CPicture picture("C(N(T),T)");
  EXPECT_EQ(Open(*picture.m_head, "C2 Na T Tb"), 1);
  EXPECT_EQ(recorder.Take(), std::string("Open Begin C\n") + kOpened);
  EXPECT_EQ(Open(*picture.m_head, "C2 Na T Tb"), 1);
  EXPECT_EQ(recorder.Take(), "Open Begin C\n" + kClosed + kOpened);
  for (int i = 0; i < 2; ++i) {
    picture.m_head->Close();
    EXPECT_EQ(recorder.Take(), kClosed);
  }
  picture.m_head.reset();
  EXPECT_EQ(recorder.Take(), kClosed + "Close Begin N\n" + kTailClosed + "Close End N\n" + kTailClosed +
                                 "Close Begin T2\nClose End T2\n");
}

const char* const kChains[][2] = {
    {"N(T)", "Na Ta"}, {"M(T)", "Na Ta"}, {"S(T)", "S Ta"}, {"C(T,T)", "C1 Ta Tb"}};
constexpr const char* kReadOnly = "Write Error C CConcatLink cannot be used in write mode.\n";

TEST(Link, EveryTransferIsTracedWithItsFailure) {
  for (const auto& [chain, configs] : kChains) {
    const std::string name(1, *chain);
    CRecorder recorder;
    CPicture picture(chain);
    CTestLink& leaf = *picture.m_leaves[0];
    CLogSample sample;
    sample.m_values.Add(1);
    EXPECT_EQ(Open(*picture.m_head, configs), 1);
    recorder.Take();
    leaf.m_fails = true;
    EXPECT_EQ(picture.m_head->Read(sample), 0);
    EXPECT_EQ(recorder.Take(), "Read Begin " + name +
                                   "\nRead Begin T1\nRead Error T1 Timeout error.\nRead Error " + name +
                                   " Could not read component.\n");
    sample.m_values.SetSize(1);
    EXPECT_EQ(picture.m_head->Write(sample), 0);
    EXPECT_EQ(recorder.Take(), name == "C"
                                   ? kReadOnly
                                   : "Write Begin " + name +
                                         "\nWrite Begin T1\nWrite Error T1 Timeout error.\nWrite Error " +
                                         name + " Could not write to component.\n");
    leaf.m_fails = false;
    leaf.m_sample.m_values.SetSize(1);
    EXPECT_EQ(picture.m_head->Read(sample), 1) << "after a failure the link is still open: " << chain;
    EXPECT_EQ(recorder.TakeFaults(), "");
  }
}

TEST(Link, AClosedLinkAnswersWithOneFatalLine) {
  for (const auto& row : kChains) {
    const std::string name(1, *row[0]), fatal = " Fatal " + name + " Linker is not opened.\n";
    CRecorder recorder;
    CPicture picture(row[0]);
    CLogSample sample;
    CStringArray names;
    if (name != "S") {  // a scaler asks its component
      EXPECT_EQ(picture.m_head->GetVarNames(names), 0);
      EXPECT_EQ(recorder.Take(), "Get Variable Names Begin " + name + "\nGet Variable Names" + fatal);
    }
    EXPECT_EQ(picture.m_head->Read(sample), 0);
    EXPECT_EQ(recorder.Take(), "Read Begin " + name + "\nRead" + fatal);
    EXPECT_EQ(picture.m_head->Write(sample), 0);
    EXPECT_EQ(recorder.Take(), name == "C" ? kReadOnly : "Write Begin " + name + "\nWrite" + fatal);
    EXPECT_EQ(picture.m_head->Comm(sample), 0);
    EXPECT_EQ(recorder.Take(), "");
  }
}

TEST(Link, CommReadsOrWritesByTheModeOfTheOpen) {
  CRecorder recorder;
  CPicture picture("N(T)");
  CLogSample sample;
  for (const auto& [mode, verb] :
       {std::pair{CLink::modeWrite, std::string("Write")}, std::pair{CLink::modeRead, std::string("Read")}}) {
    EXPECT_EQ(Open(*picture.m_head, "N T", mode), 1);
    recorder.Take();
    EXPECT_EQ(picture.m_head->Comm(sample), 1);
    EXPECT_EQ(recorder.Take(),
              verb + " Begin N\n" + verb + " Begin T1\n" + verb + " End T1\n" + verb + " End N\n");
  }
  EXPECT_EQ(picture.m_leaves[0]->Comm(sample), 0) << "a leaf has no component";
  CPicture concat("C(T,T)");
  EXPECT_EQ(Open(*concat.m_head, "C1 Ta Tb", CLink::modeWrite), 0);
  EXPECT_EQ(recorder.TakeFaults(), "Open Fatal C Cannot open CConcatLink on write mode.\n");
}

}  // namespace
}  // namespace vastra
