#include "tests/stages/samples.h"
#include "vastra/stages/log_trendings.h"

namespace vastra {
namespace {

class Trending : public CStageFixture<CLogTrendings> {
 protected:
  // Extra variables are computed if there are equations.
  int Open(const char* names, const char* base, const char* extra = "", const char* equations = "") {
    Options().m_baseVars = Split(base);
    Options().m_extraVars = Split(extra);
    Options().m_equations = Split(equations, ';');
    Options().m_calculateExtra = *equations != 0;
    return CStageFixture::Open(names);
  }
  std::string Read() { return m_stage.Read(&m_sample) ? Values(m_sample.m_values) : "failed"; }
};

TEST_F(Trending, ExtraVariablesFollowTheBaseVariablesWhereTheyAreComputed) {
  constexpr struct {
    const char *base, *extra, *equations, *stored;  // of the sample 1, 2
  } kCases[] = {
      {"a", "sum", "", "1 2"},  // all values without a mapper
      {"a b", "sum nothing", "sum = a + b", "1 2 3 0"},
      {"a b", "a", "a = 9", "1 2 1"},
      {"b a", "sum", "sum = a + b", "2 1 3"},
      {"", "sum", "sum = a + b", "3"},
  };
  for (const auto& row : kCases) {
    ASSERT_EQ(Open("a b", row.base, row.extra, row.equations), 1);
    EXPECT_EQ(Write({1, 2}), 1);
    EXPECT_EQ(Read(), row.stored);
  }
}

TEST_F(Trending, EachReaderGetsTheNewestSampleAndAClosedStageDoesNotChangeTheirs) {
  EXPECT_EQ(Read(), "failed");
  EXPECT_EQ(Write({1}), 0);
  for (const float x : {5.0f, 6.0f}) {
    ASSERT_EQ(Open("x", "x", "n", "n = n + 1"), 1);
    EXPECT_EQ(Read(), "");
    for (const int n : {1, 2}) {
      EXPECT_EQ(Write({x}, kStart + n), 1);
      for (int reader = 0; reader < 2; ++reader)
        EXPECT_EQ(Read(), std::to_string(int(x)) + " " + std::to_string(n));
      EXPECT_EQ(m_sample.m_time.time, kStart + n);
    }
  }
  EXPECT_EQ(m_recorder.TakeFaults(), "");
  EXPECT_EQ(Open("x", "x", "n", "n = b"), 0);
  EXPECT_EQ(m_recorder.TakeFaults(), "Open Fatal TrendingsEquatorLink Linker could not configure itself.\n");
  EXPECT_EQ(Read(), "failed");
  EXPECT_EQ(Values(m_sample.m_values), "6 2");
  EXPECT_EQ(m_stage.IsOpen() + Write({1}), 0);
}

}  // namespace
}  // namespace vastra
