// What all links have in common: opening, closing, and the lines that they send. And what each link of core
// does to the values and the time of a sample.
#include "vastra/core/link.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>

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

using CValues = std::vector<float>;
constexpr _timeb kTime = {100, 200, 300, 1, 0xABCD};
constexpr _timeb kOther = {1, 1, 1, 1, 1};

// Compares signs of zero, too.
std::vector<std::uint32_t> Bits(const CValues& values) {
  std::vector<std::uint32_t> bits;
  for (const float value : values) bits.push_back(std::bit_cast<std::uint32_t>(value));
  return bits;
}

// Reads, or writes, before: from the component, or from the caller, to the other.
void Check(const char* chain, const std::string& configs, bool reads, const CValues& before,
           const CValues& after, const std::string& fault = "") {
  SCOPED_TRACE(configs + (reads ? ", read" : ", written"));
  CRecorder recorder;
  const CPicture picture(chain);
  CLogSample sample;
  CLogSample& inner = picture.m_leaves[0]->m_sample;
  CLogSample &source = reads ? inner : sample, &target = reads ? sample : inner;
  ASSERT_EQ(Open(*picture.m_head, configs, reads ? CLink::modeRead : CLink::modeWrite), 1);
  Set(source, before, kTime);
  Set(target, {9, 9, 9, 9, 9, 9, 9}, kOther);
  EXPECT_EQ(picture.m_head->Comm(sample), fault.empty());
  EXPECT_EQ(Bits(Values(target)), Bits(after));
  EXPECT_EQ(target.m_time, reads || fault.empty() ? kTime : kOther);
  EXPECT_EQ(Bits(Values(source)), Bits(*chain == 'S' && !reads ? after : before));
  EXPECT_EQ(recorder.TakeFaults(), fault);
}

TEST(MapperLink, UsesNamesAndTheFirstPlaceOfAName) {
  const struct {
    const char* configs;
    CValues inner, read, outer, written;
  } cases[] = {
      {"NCXAC TABC", {1, 2, 3}, {3, 0, 1, 3}, {5, 6, 7, 8}, {7, 0, 5}},
      {"NAB TABAB", {1, 2, 3, 4}, {1, 2}, {5, 6}, {5, 6, 5, 6}},
      {"Nab TAB", {1, 2}, {0, 0}, {5, 6}, {0, 0}},
      {"NBA TAB", {1}, {0, 1}, {5}, {0, 5}},      // shorter samples than the names say
      {"NA TA", {1, 2, 3}, {1}, {5, 6, 7}, {5}},  // and longer ones
  };
  for (const auto& c : cases) {
    Check("M(T)", c.configs, true, c.inner, c.read);
    Check("M(T)", c.configs, false, c.outer, c.written);
  }
}

TEST(NamerLink, PassesOneValueForEachNameAndRefusesOtherSamples) {
  const CValues empty, one = {1}, two = {1, 2}, nines = {9, 9, 9, 9, 9, 9, 9};
  for (const bool reads : {true, false}) {
    const std::string fault = std::string(reads ? "Read" : "Write") + " Error N Sample is not valid.\n";
    Check("N(T)", "Nab Txyz", reads, two, two);
    Check("N(T)", "N T", reads, empty, empty);
    Check("N(T)", "Nabc T", reads, two, reads ? two : nines, fault);
    Check("N(T)", "N T", reads, one, reads ? one : nines, fault);
  }
}

TEST(ScalerLink, ScalesThenLimitsAlsoTheSampleOfTheCaller) {
  const struct {
    const char* rules;
    float value, scaled;
  } cases[] = {
      {"S", 1.5f, 1.5f},
      {"Sa,1,0,0,0", -0.0f, -0.0f},
      {"Sa,2,0,5,5", 3, 6},  // no clamping
      {"Sa,1,1,0,0", 3, 0},
      {"Sa,1,1,0,0", -3, 0},
      {"Sa,1,1,0,0", -0.0f, -0.0f},
      {"Sa,3,-1,0,6", 3, 6},  // clamping is any value except 0
      {"Sa,1,1,5,2", 3, 2},   // the high limit first, and no second test
      {"Sa,1,1,5,2", 1, 5},
      {"Sa,2,1,1,9", NAN, 1},
      {"Sa,2,1,1,nan", 7, 14},
      {"Sa,2,1,nan,9", 3, NAN},
      {"Sa,2,1,-inf,inf", 3e38f, INFINITY},
      {"Sa,1e-30,0,0,0", 1e-10f, 1e-40f},
      {"Sa,1e-30,1,0,9", -1e-30f, 0.0f},  // below 0 until it is rounded to -0.0
      {"SA,5,0,0,0;z,5,0,0,0", 1, 1},     // no such variable
      {"Sa,2,0,0,0;a,3,1,0,10", 1.5f, 9},
      {"Sa,3,1,0,10;a,2,0,0,0", 4, 20},
      {"Sa,1.7,0,0,0;a,1.7,0,0,0", 1.7f, 1.7f * 1.7f * 1.7f},  // rounds after each rule
  };
  for (const auto& c : cases)
    for (const bool reads : {true, false})
      Check("S(T)", c.rules + std::string(" Tab"), reads, {c.value, 7}, {c.scaled, 7});
  Check("S(T)", "Sb,2,0,0,0;a,3,0,0,0 Tab", true, {1}, {3});  // a short sample
}

TEST(ConcatLink, ReadsTheValuesThatTheComponentsHaveAndTheTimeOfTheFirst) {
  CRecorder recorder;
  CPicture picture("C(T,C(T,T))");
  CLink& head = *picture.m_head;
  CLogSample sample;
  CStringArray names;
  EXPECT_EQ(Open(head, "C1 Ta C1 Tb Tc", CLink::modeWrite), 0);
  EXPECT_EQ(head.GetVarNames(names) + head.Read(sample) + head.Comm(sample) + head.Write(sample), 0);
  EXPECT_EQ(recorder.Take(),
            "Open Begin C\nOpen Fatal C Cannot open CConcatLink on write mode.\n"
            "Get Variable Names Begin C\nGet Variable Names Fatal C Linker is not opened.\n"
            "Read Begin C\nRead Fatal C Linker is not opened.\n"
            "Write Error C CConcatLink cannot be used in write mode.\n");

  ASSERT_EQ(Open(head, "C1 Tabfghi C1 Tc Tde"), 1);
  Set(picture.m_leaves[0]->m_sample, {1, 2}, kTime);
  Set(picture.m_leaves[1]->m_sample, {}, kOther);
  Set(picture.m_leaves[2]->m_sample, {4, 5, 6}, kOther);
  for (int i = 0; i < 2; ++i) {  // the second read does not see the first
    Set(sample, {9, 9, 9, 9, 9, 9, 9, 9}, kOther);
    EXPECT_EQ(head.Read(sample), 1);
    EXPECT_EQ(Values(sample), (CValues{1, 2, 4, 5, 6}));
    EXPECT_EQ(sample.m_time, kTime);
  }
  for (const int failing : {2, 0}) {
    recorder.Take();
    picture.m_leaves[static_cast<std::size_t>(failing)]->m_fails = true;
    EXPECT_EQ(head.Comm(sample), 0);
  }
  EXPECT_EQ(recorder.Take(),
            "Read Begin C\nRead Begin T1\nRead Error T1 Timeout error.\n"
            "Read Error C Could not read component.\n");
}

}  // namespace
}  // namespace vastra
