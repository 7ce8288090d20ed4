// What all links have in common: opening, closing, and the lines that they send.
#include "vastra/core/link.h"

#include <gtest/gtest.h>

#include "tests/support/recorder.h"
#include "tests/support/test_link.h"

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

const std::string kNameless = "Get Variable Names Error T1 Timeout error.\n";

const struct {
  const char *chain, *configs;
  int left;  // configurations on the list after Open
  std::string faults;
  const char* names = "z";  // of the outer side, or the caller's own
} kOpens[] = {
    {"N(T)", "Nab Txyz X", 1, "", "ab"},
    {"S(M(N(T)))", "S NCXAC NAB T", 0, "", "CXAC"},
    {"C(T,C(T,T))", "C1 Tcc C1 Tb Ta X", 1, "", "ccba"},
    {"C(T,T)", "C3 Taa X S Tbb", 0, "", "aabb"},
    {"N(T)", "", 0, "Open Fatal N Invalid configuration list.\n"},
    {"N(T)", "Na", 0, "Open Fatal T1 Invalid configuration list.\nOpen Error N Could not open component.\n"},
    {"N(T)", "0 Ta", 1, "Open Fatal N Invalid configuration.\n"},
    {"N(T)", "S Ta", 1, "Open Fatal N Invalid configuration.\n"},
    {"M(T)", "S Ta", 1, "Open Fatal M Invalid configuration.\n"},
    {"S(T)", "Na Ta", 1, "Open Fatal S Invalid configuration.\n"},
    {"C(T,T)", "Na Ta", 1, "Open Fatal C Invalid configuration.\n"},
    {"M(t)", "Na Ta", 0, kNameless + "Open Error M Could not get variable name list from component.\n"},
    {"S(t)", "S Ta", 0, kNameless + "Open Error S Could not get variable names from component.\n"},
    {"C(t,T)", "C1 Ta Tb", 0, kNameless + "Open Error C Could not get variable name list from component.\n"},
    {"C(T,t)", "C1 Ta Tb", 0,
     "Get Variable Names Error T2 Timeout error.\n"
     "Open Error C Could not get variable name list from component.\n"},
    {"C(T,T)", "C2 Ta Tb", 0,
     "Open Fatal T2 Invalid configuration list.\nOpen Error C Could not open component.\n"},
    {"C(T,T)", "C-1 Ta Tb", 2,
     "Open Fatal T1 Invalid configuration list.\nOpen Error C Could not open component.\n"},
    {"C(T,T)", "C3 Ta Tb", 2, "Open Fatal C Invalid configuration list.\n"},
    {"C(T,T)", "C1 Tab Tbc", 0, "Open Fatal C Variable names were duplicated.\n"},
};

TEST(Link, OpenConsumesItsConfigurationsAndReportsFaults) {
  for (const auto& c : kOpens) {
    SCOPED_TRACE(c.configs);
    CRecorder recorder;
    CPicture picture(c.chain);
    CStringArray names = Names("z");
    int left = 0;
    EXPECT_EQ(Open(*picture.m_head, c.configs, CLink::modeRead, &left), c.faults.empty());
    EXPECT_EQ(recorder.TakeFaults(), c.faults);
    EXPECT_EQ(left, c.left);
    EXPECT_EQ(picture.m_head->GetVarNames(names), c.faults.empty());
    EXPECT_EQ(names, Names(c.names));
  }
}

TEST(Link, OpenCloseAndDeleteAreTraced) {
  const std::string tail = "Close Begin T1\nClose End T1\n", second = "Close Begin T2\nClose End T2\n";
  const std::string namer = "Close Begin N\n" + tail + "Close End N\n";
  const std::string closed = "Close Begin C\n" + namer + second + "Close End C\n";
  CRecorder recorder;
  CPicture picture("C(N(T),T)");
  for (const std::string& before : {std::string(), closed}) {
    EXPECT_EQ(Open(*picture.m_head, "C2 Na T Tb"), 1);
    EXPECT_EQ(recorder.Take(), "Open Begin C\n" + before +
                                   "Open Begin N\nOpen Begin T1\nOpen End T1\nOpen End N\n"
                                   "Open Begin T2\nOpen End T2\n"
                                   "Get Variable Names Begin N\nGet Variable Names End N\n"
                                   "Get Variable Names Begin T2\nGet Variable Names End T2\nOpen End C\n");
  }
  for (int i = 0; i < 2; ++i) {
    picture.m_head->Close();
    EXPECT_EQ(recorder.Take(), closed);
  }
  picture.m_head.reset();
  EXPECT_EQ(recorder.Take(), closed + namer + tail + second);
}

TEST(Link, ATransferIsTracedWithItsFailureAndCommGoesByTheMode) {
  const char* const chains[][2] = {{"N(T)", "Na Ta"}, {"M(T)", "Na Ta"}, {"S(T)", "S Ta"}};
  for (const auto& [chain, configs] : chains)
    for (const bool reads : {true, false}) {
      const std::string name(1, *chain), verb = reads ? "Read" : "Write";
      const std::string begin = verb + " Begin " + name + "\n";
      CRecorder recorder;
      CPicture picture(chain);
      CLink& head = *picture.m_head;
      CTestLink& leaf = *picture.m_leaves[0];
      CLogSample sample;
      EXPECT_EQ(head.Comm(sample), 0);
      EXPECT_EQ(reads ? head.Read(sample) : head.Write(sample), 0);
      EXPECT_EQ(recorder.Take(), begin + verb + " Fatal " + name + " Linker is not opened.\n");

      EXPECT_EQ(Open(head, configs, reads ? CLink::modeRead : CLink::modeWrite), 1);
      EXPECT_EQ(leaf.Comm(sample), 0) << "a leaf has no component";
      recorder.Take();
      (reads ? leaf.m_sample : sample).m_values.SetSize(1);
      leaf.m_fails = true;
      EXPECT_EQ(head.Comm(sample), 0);
      EXPECT_EQ(recorder.Take(),
                begin + verb + " Begin T1\n" + verb + " Error T1 Timeout error.\n" + verb + " Error " + name +
                    (reads ? " Could not read component.\n" : " Could not write to component.\n"));
      leaf.m_fails = false;
      EXPECT_EQ(head.Comm(sample), 1) << "a failure closed the link";
      EXPECT_EQ(recorder.Take(),
                begin + verb + " Begin T1\n" + verb + " End T1\n" + verb + " End " + name + "\n");
    }
}

}  // namespace
}  // namespace vastra
