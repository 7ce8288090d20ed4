// What each link of this room does to the values and the time of a sample.
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

// A chain that is open both ways would be misuse: each direction opens anew.
struct CTransferCase {
  const char* configs;
  CValues inner, read;      // what the component gives, and what comes out
  CValues outer, written;   // what goes in, and what the component gets
  const char* faults = "";  // of both directions
};

void Check(const char* chain, const CTransferCase& c) {
  CRecorder recorder;
  CPicture picture(chain);
  CTestLink& leaf = *picture.m_leaves[0];
  CLogSample sample;
  ASSERT_EQ(1, Open(*picture.m_head, c.configs, CLink::modeRead));
  Set(leaf.m_sample, c.inner);
  Set(sample, {9, 9, 9, 9, 9, 9, 9}, kOther);
  EXPECT_EQ(*c.faults == 0, picture.m_head->Read(sample)) << c.configs;
  EXPECT_EQ(c.read, Values(sample)) << c.configs;
  EXPECT_EQ(kTime, sample.m_time);

  ASSERT_EQ(1, Open(*picture.m_head, c.configs, CLink::modeWrite));
  Set(leaf.m_sample, {}, kOther);
  Set(sample, c.outer);
  EXPECT_EQ(*c.faults == 0, picture.m_head->Write(sample)) << c.configs;
  EXPECT_EQ(c.written, Values(leaf.m_sample)) << c.configs;
  EXPECT_EQ(c.outer, Values(sample)) << "the caller's sample changed";
  EXPECT_EQ(*c.faults ? kOther : kTime, leaf.m_sample.m_time);
  EXPECT_EQ(c.faults, recorder.TakeFaults());
}

TEST(MapperLink, GoesByNameAndByTheFirstPlaceOfAName) {
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

TEST(NamerLink, LetsOneValueForEachNamePassAndStopsTheRest) {
  const char* const kFaults = "Read Error N Sample is not valid.\nWrite Error N Sample is not valid.\n";
  const CTransferCase cases[] = {
      {"Nab Txyz", {1, 2}, {1, 2}, {5, 6}, {5, 6}},  // the names need not be those of the component
      {"N T", {}, {}, {}, {}},
      {"Nabc T", {1, 2}, {1, 2}, {5, 6}, {}, kFaults},
      {"N T", {1}, {1}, {5}, {}, kFaults},
  };
  for (const CTransferCase& c : cases) Check("N(T)", c);
}

TEST(Names, AreThoseOfTheOuterSide) {
  struct CCase {
    const char *chain, *configs, *names;
  };
  for (const CCase& c : {CCase{"N(T)", "Nab Txyz", "ab"}, CCase{"M(T)", "NCXAC TABC", "CXAC"},
                         CCase{"S(T)", "S Tab", "ab"}, CCase{"C(T,C(T,T))", "C1 Tcc C1 Tb Ta", "ccba"}}) {
    CRecorder recorder;
    CPicture picture(c.chain);
    ASSERT_EQ(1, Open(*picture.m_head, c.configs));
    CStringArray names = Names("old");
    EXPECT_EQ(1, picture.m_head->GetVarNames(names));
    EXPECT_EQ(Names(c.names), names) << c.chain;
  }
}

struct CRule {
  const char* name;
  float scale;
  int clamping;
  float low, high;
};

// Opens a scaler with rules over a leaf with the names a and b.
std::unique_ptr<CPicture> Scaler(const std::vector<CRule>& rules, UINT mode) {
  auto picture = std::make_unique<CPicture>("S(T)");
  CLinkConfigList configs;
  auto* config = new CScalerConfig;
  for (const CRule& rule : rules) {
    CScalerConfigNode node;
    node.m_varName = rule.name;
    node.m_scale = rule.scale;
    node.m_clamping = rule.clamping;
    node.m_lowLimit = rule.low;
    node.m_highLimit = rule.high;
    config->m_nodes.Add(node);
  }
  configs.AddTail(config);
  configs.AddTail(Config("Tab"));
  EXPECT_EQ(1, picture->m_head->Open(configs, mode));
  return picture;
}

std::uint32_t Bits(float value) { return std::bit_cast<std::uint32_t>(value); }

TEST(ScalerLink, ScalesThenHolds) {
  struct CCase {
    std::vector<CRule> rules;
    float value, scaled;
  };
  const float kOdd = 1.7f;
  const CCase cases[] = {
      {{}, 1.5f, 1.5f},
      {{{"a", 1, 0, 0, 0}}, -0.0f, -0.0f},
      {{{"a", 2, 0, 5, 5}}, 3, 6},  // limits without clamping
      {{{"a", 1, 1, 0, 0}}, 3, 0},
      {{{"a", 1, 1, 0, 0}}, -3, 0},
      {{{"a", 1, 1, 0, 0}}, -0.0f, -0.0f},
      {{{"a", 3, -1, 0, 6}}, 2, 6},  // any clamping but 0
      {{{"a", 3, 1, 6, 9}}, 2, 6},
      {{{"a", 1, 1, 5, 2}}, 3, 2},  // the high limit first, and no second test
      {{{"a", 1, 1, 5, 2}}, 1, 5},
      {{{"a", 1, 1, 5, 2}}, 2, 5},
      {{{"a", 2, 1, 1, 9}}, kNan, 1},
      {{{"a", 0, 1, 1, 9}}, kInf, 1},
      {{{"a", 2, 1, 1, kNan}}, 7, 14},
      {{{"a", 2, 1, kNan, 9}}, 3, kNan},
      {{{"a", 2, 0, 1, 9}}, kInf, kInf},
      {{{"a", 2, 1, -kInf, kInf}}, 3e38f, kInf},
      {{{"a", 1e-30f, 0, 0, 0}}, 1e-10f, 1e-40f},
      {{{"A", 5, 0, 0, 0}, {"z", 5, 0, 0, 0}}, 1, 1},  // no such variable
      {{{"a", 2, 0, 0, 0}, {"a", 3, 1, 0, 10}}, 1.5f, 9},
      {{{"a", 3, 1, 0, 10}, {"a", 2, 0, 0, 0}}, 4, 20},
      // Between two rules the value is a float.
      {{{"a", kOdd, 0, 0, 0}, {"a", kOdd, 0, 0, 0}}, kOdd, kOdd * kOdd * kOdd},
  };
  static_assert(static_cast<float>(1.7f * 1.7f) * 1.7f !=
                static_cast<float>(double{1.7f} * double{1.7f} * double{1.7f}));
  for (const CCase& c : cases) {
    CRecorder recorder;
    CLogSample sample;
    const auto reader = Scaler(c.rules, CLink::modeRead);
    Set(reader->m_leaves[0]->m_sample, {c.value, 7});
    EXPECT_EQ(1, reader->m_head->Read(sample));
    EXPECT_EQ(Bits(c.scaled), Bits(sample.m_values[0])) << c.value << " gives " << sample.m_values[0];
    EXPECT_EQ(7, sample.m_values[1]);
    EXPECT_EQ(kTime, sample.m_time);

    const auto writer = Scaler(c.rules, CLink::modeWrite);
    Set(sample, {c.value, 7});
    EXPECT_EQ(1, writer->m_head->Write(sample));
    EXPECT_EQ(Bits(c.scaled), Bits(writer->m_leaves[0]->m_sample.m_values[0]));
    EXPECT_EQ(Bits(c.scaled), Bits(sample.m_values[0])) << "the caller's sample is scaled in place";
  }
}

TEST(ScalerLink, StaysWithinAShortSampleAndScalesBeforeAFailedWrite) {
  CRecorder recorder;
  CLogSample sample;
  const auto writer = Scaler({{"b", 2, 0, 0, 0}, {"a", 3, 0, 0, 0}}, CLink::modeWrite);
  Set(sample, {1});
  writer->m_leaves[0]->m_fails = true;
  EXPECT_EQ(0, writer->m_head->Write(sample));
  EXPECT_EQ(CValues{3}, Values(sample));
}

TEST(ConcatLink, JoinsValuesAndTakesTheTimeOfTheFirst) {
  CRecorder recorder;
  CPicture picture("C(T,C(T,T))");
  ASSERT_EQ(1, Open(*picture.m_head, "C1 Tab C1 Tc Tde"));
  CLogSample sample;
  Set(picture.m_leaves[0]->m_sample, {1, 2});
  Set(picture.m_leaves[1]->m_sample, {}, kOther);
  Set(picture.m_leaves[2]->m_sample, {4, 5, 6}, kOther);
  for (int i = 0; i < 2; ++i) {  // nothing is left over from the first read
    Set(sample, {9, 9, 9, 9, 9, 9, 9, 9}, kOther);
    EXPECT_EQ(1, picture.m_head->Read(sample));
    EXPECT_EQ((CValues{1, 2, 4, 5, 6}), Values(sample));
    EXPECT_EQ(kTime, sample.m_time);
  }
  picture.m_leaves[2]->m_fails = true;
  EXPECT_EQ(0, picture.m_head->Read(sample));
  EXPECT_EQ((CValues{1, 2}), Values(sample));
  picture.m_leaves[0]->m_fails = true;
  recorder.Take();
  EXPECT_EQ(0, picture.m_head->Read(sample));
  EXPECT_EQ(std::string::npos, recorder.Take().find("T2"))
      << "the second was read behind a failure of the first";
}

}  // namespace
}  // namespace vastra
