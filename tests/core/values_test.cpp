// What each link of core does to the values and the time of a sample.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/core/picture.h"
#include "tests/support/recorder.h"

namespace vastra {
namespace {

using CValues = std::vector<float>;
constexpr _timeb kTime = {100, 200, 300, 1, 0xABCD};
constexpr _timeb kOther = {1, 1, 1, 1, 1};
constexpr float kInf = std::numeric_limits<float>::infinity();
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

void Set(CLogSample& sample, const CValues& values, const _timeb& time = kTime) {
  sample.m_time = time;
  sample.m_values.RemoveAll();
  for (const float value : values) sample.m_values.Add(value);
}
CValues Values(const CLogSample& sample) { return {sample.m_values.begin(), sample.m_values.end()}; }

struct CTransferCase {
  const char* configs;
  CValues inner, read;      // the values of the component, and of the sample after a read
  CValues outer, written;   // the values of the sample, and of the component after a write
  const char* faults = "";  // of both directions
};

void Check(const char* chain, const CTransferCase& c) {
  SCOPED_TRACE(c.configs);
  CRecorder recorder;
  CLogSample sample;
  const CPicture reader(chain), writer(chain);
  ASSERT_EQ(Open(*reader.m_head, c.configs, CLink::modeRead), 1);
  Set(reader.m_leaves[0]->m_sample, c.inner);
  Set(sample, {9, 9, 9, 9, 9, 9, 9}, kOther);
  EXPECT_EQ(reader.m_head->Read(sample), *c.faults == 0);
  EXPECT_EQ(Values(sample), c.read);
  EXPECT_EQ(sample.m_time, kTime);

  CLogSample& stored = writer.m_leaves[0]->m_sample;
  ASSERT_EQ(Open(*writer.m_head, c.configs, CLink::modeWrite), 1);
  Set(stored, {}, kOther);
  Set(sample, c.outer);
  EXPECT_EQ(writer.m_head->Write(sample), *c.faults == 0);
  EXPECT_EQ(Values(stored), c.written);
  EXPECT_EQ(Values(sample), c.outer);
  EXPECT_EQ(stored.m_time, *c.faults ? kOther : kTime);
  EXPECT_EQ(recorder.TakeFaults(), c.faults);
}

TEST(MapperLink, UsesNamesAndTheFirstPlaceOfAName) {
  const CTransferCase cases[] = {
      {"NCXAC TABC", {1, 2, 3}, {3, 0, 1, 3}, {5, 6, 7, 8}, {7, 0, 5}},
      {"NAB TABAB", {1, 2, 3, 4}, {1, 2}, {5, 6}, {5, 6, 5, 6}},
      {"Nab TAB", {1, 2}, {0, 0}, {5, 6}, {0, 0}},
      {"N TAB", {1, 2}, {}, {}, {0, 0}},
      {"NAB T", {}, {0, 0}, {5, 6}, {}},
      {"NBA TAB", {1}, {0, 1}, {5}, {0, 5}},      // shorter samples than the names say
      {"NA TA", {1, 2, 3}, {1}, {5, 6, 7}, {5}},  // and longer ones
  };
  for (const CTransferCase& c : cases) Check("M(T)", c);
}

TEST(NamerLink, PassesOneValueForEachNameAndRefusesOtherSamples) {
  const char* const kFaults = "Read Error N Sample is not valid.\nWrite Error N Sample is not valid.\n";
  const CTransferCase cases[] = {
      {"Nab Txyz", {1, 2}, {1, 2}, {5, 6}, {5, 6}},  // names may differ from those of the component
      {"N T", {}, {}, {}, {}},
      {"Nabc T", {1, 2}, {1, 2}, {5, 6}, {}, kFaults},
      {"N T", {1}, {1}, {5}, {}, kFaults},
  };
  for (const CTransferCase& c : cases) Check("N(T)", c);
}

TEST(Names, AreThoseOfTheOuterSide) {
  const char* cases[][3] = {{"N(T)", "Nab Txyz", "ab"},
                            {"M(T)", "NCXAC TABC", "CXAC"},
                            {"S(T)", "S Tab", "ab"},
                            {"C(T,C(T,T))", "C1 Tcc C1 Tb Ta", "ccba"}};
  for (const auto& [chain, configs, expected] : cases) {
    CRecorder recorder;
    CPicture picture(chain);
    ASSERT_EQ(Open(*picture.m_head, configs), 1);
    CStringArray names = Names("old");
    EXPECT_EQ(picture.m_head->GetVarNames(names), 1);
    EXPECT_EQ(names, Names(expected)) << chain;
  }
}

std::uint32_t Bits(float value) { return std::bit_cast<std::uint32_t>(value); }

TEST(ScalerLink, ScalesThenLimits) {
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
      {"Sa,3,1,6,9", 2, 6},
      {"Sa,1,1,5,2", 3, 2},  // the high limit first, and no second test
      {"Sa,1,1,5,2", 1, 5},
      {"Sa,2,1,1,9", kNan, 1},
      {"Sa,0,1,1,9", kInf, 1},
      {"Sa,2,1,1,nan", 7, 14},
      {"Sa,2,1,nan,9", 3, kNan},
      {"Sa,2,0,1,9", kInf, kInf},
      {"Sa,2,1,-inf,inf", 3e38f, kInf},
      {"Sa,1e-30,0,0,0", 1e-10f, 1e-40f},
      {"Sa,1e-30,1,0,9", -1e-30f, 0.0f},  // below 0 until it is rounded to -0.0
      {"SA,5,0,0,0;z,5,0,0,0", 1, 1},     // no such variable
      {"Sa,2,0,0,0;a,3,1,0,10", 1.5f, 9},
      {"Sa,3,1,0,10;a,2,0,0,0", 4, 20},
      {"Sa,1.7,0,0,0;a,1.7,0,0,0", 1.7f, 1.7f * 1.7f * 1.7f},  // rounds after each rule
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.rules);
    CRecorder recorder;
    CLogSample sample;
    const CPicture reader("S(T)"), writer("S(T)");
    ASSERT_EQ(Open(*reader.m_head, c.rules + std::string(" Tab"), CLink::modeRead), 1);
    Set(reader.m_leaves[0]->m_sample, {c.value, 7});
    EXPECT_EQ(reader.m_head->Read(sample), 1);
    EXPECT_EQ(Bits(sample.m_values[0]), Bits(c.scaled)) << c.value << " becomes " << sample.m_values[0];
    EXPECT_EQ(sample.m_values[1], 7);
    EXPECT_EQ(sample.m_time, kTime);

    ASSERT_EQ(Open(*writer.m_head, c.rules + std::string(" Tab"), CLink::modeWrite), 1);
    Set(sample, {c.value, 7});
    EXPECT_EQ(writer.m_head->Write(sample), 1);
    EXPECT_EQ(Bits(writer.m_leaves[0]->m_sample.m_values[0]), Bits(c.scaled));
    EXPECT_EQ(Bits(sample.m_values[0]), Bits(c.scaled)) << "Write scales the caller's sample";
  }
}

TEST(ScalerLink, AcceptsAShortSampleAndScalesBeforeAWriteThatFails) {
  CRecorder recorder;
  CLogSample sample;
  const CPicture writer("S(T)");
  ASSERT_EQ(Open(*writer.m_head, "Sb,2,0,0,0;a,3,0,0,0 Tab", CLink::modeWrite), 1);
  Set(sample, {1});
  writer.m_leaves[0]->m_fails = true;
  EXPECT_EQ(writer.m_head->Write(sample), 0);
  EXPECT_EQ(Values(sample), CValues{3});
}

TEST(ConcatLink, JoinsTheValuesThatTheComponentsHaveAndUsesTheTimeOfTheFirst) {
  CRecorder recorder;
  CPicture picture("C(T,C(T,T))");
  ASSERT_EQ(Open(*picture.m_head, "C1 Tabfghi C1 Tc Tde"), 1);
  CLogSample sample;
  Set(picture.m_leaves[0]->m_sample, {1, 2});
  Set(picture.m_leaves[1]->m_sample, {}, kOther);
  Set(picture.m_leaves[2]->m_sample, {4, 5, 6}, kOther);
  for (int i = 0; i < 2; ++i) {  // the second read does not see the first
    Set(sample, {9, 9, 9, 9, 9, 9, 9, 9}, kOther);
    EXPECT_EQ(picture.m_head->Read(sample), 1);
    EXPECT_EQ(Values(sample), (CValues{1, 2, 4, 5, 6}));
    EXPECT_EQ(sample.m_time, kTime);
  }
  picture.m_leaves[2]->m_fails = true;
  EXPECT_EQ(picture.m_head->Read(sample), 0);
  EXPECT_EQ(Values(sample), (CValues{1, 2}));
  picture.m_leaves[0]->m_fails = true;
  recorder.Take();
  EXPECT_EQ(picture.m_head->Read(sample), 0);
  EXPECT_EQ(recorder.Take().find("T2"), std::string::npos) << "read the second after the first failed";
}

}  // namespace
}  // namespace vastra
