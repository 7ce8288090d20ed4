// The trending stage: the newest sample, with the variables that the live views add.
#include "tests/stages/samples.h"
#include "vastra/stages/log_trendings.h"

namespace vastra {
namespace {

class Trending : public CStageFixture {
 protected:
  // Extra variables are computed if there are equations.
  int Open(std::initializer_list<const char*> names, std::initializer_list<const char*> base,
           std::initializer_list<const char*> extra = {}, const char* equations = "") {
    CTrendConfig& options = *m_stage.GetOptions();
    options.m_baseVars = Names(base);
    options.m_extraVars = Names(extra);
    options.m_equations = Equations(equations);
    options.m_calculateExtra = *equations != 0;
    CStringArray given = Names(names);
    const int opened = m_stage.Open(given);
    EXPECT_EQ(m_stage.IsOpen(), opened);
    return opened;
  }
  int Write(std::initializer_list<float> values, std::int32_t time = kStart) {
    CLogSample sample = Sample(values, time);
    return m_stage.Write(sample);
  }
  std::string Read() { return m_stage.Read(&m_sample) ? Values(m_sample) : "failed"; }

  CLogSample m_sample = Sample({-7});
  CLogTrendings m_stage;
};

TEST_F(Trending, ExtraVariablesFollowTheBaseVariablesWhereTheyAreComputed) {
  const struct {
    std::initializer_list<const char*> base, extra;
    const char *equations, *stored;  // of the sample 1, 2
  } kCases[] = {
      {{"a", "b"}, {}, "", "1 2"},
      {{"a"}, {"sum"}, "", "1 2"},
      {{"a", "b"}, {"sum", "nothing"}, "sum = a + b", "1 2 3 0"},
      {{"a", "b"}, {"a"}, "a = 9", "1 2 1"},
      {{"b"}, {"sum"}, "sum = a + b", "2 3"},
      {{"b", "a"}, {"sum"}, "sum = a + b", "2 1 3"},
      {{}, {"sum"}, "sum = a + b", "3"},
  };
  for (const auto& row : kCases) {
    ASSERT_EQ(Open({"a", "b"}, row.base, row.extra, row.equations), 1);
    m_recorder.Take();
    EXPECT_EQ(Write({1, 2}), 1);
    EXPECT_EQ(m_recorder.Take().starts_with("Write Begin TrendingsFileLink\n"), *row.equations == 0);
    EXPECT_EQ(Read(), row.stored);
  }
}

TEST_F(Trending, EachReaderGetsTheNewestSample) {
  EXPECT_EQ(Read(), "failed");
  EXPECT_EQ(Values(m_sample), "-7") << "a closed stage does not change the sample";
  EXPECT_EQ(Write({1, 2}), 0);
  ASSERT_EQ(Open({"a", "b"}, {"a", "b"}, {"n"}, "n = n + 1"), 1);
  EXPECT_EQ(Read(), "");
  for (const int n : {1, 2}) {
    EXPECT_EQ(Write({3, 4}, kStart + n), 1);
    for (int reader = 0; reader < 2; ++reader) {
      EXPECT_EQ(Read(), "3 4 " + std::to_string(n));
      EXPECT_EQ(m_sample.m_time.time, kStart + n);
    }
  }
  ASSERT_EQ(Open({"x"}, {"x"}, {"n"}, "n = n + 1"), 1);
  EXPECT_EQ(Read(), "");
  EXPECT_EQ(Write({5}), 1);
  EXPECT_EQ(Read(), "5 1");
  m_stage.Close();
  EXPECT_EQ(m_stage.IsOpen(), 0);
  EXPECT_EQ(Read(), "failed");
  EXPECT_EQ(Values(m_sample), "5 1");
  EXPECT_EQ(m_recorder.TakeFaults(), "");
}

TEST_F(Trending, ExtrasThatDoNotCompileLeaveTheStageClosed) {
  ASSERT_EQ(Open({"a"}, {"a"}), 1);
  EXPECT_EQ(Write({1}), 1);
  EXPECT_EQ(Open({"a"}, {"a"}, {"n"}, "n = b"), 0);
  EXPECT_EQ(m_recorder.TakeFaults(), "Open Fatal TrendingsEquatorLink Linker could not configure itself.\n");
  EXPECT_EQ(Read(), "failed");
  EXPECT_EQ(Write({1}), 0);
}

}  // namespace
}  // namespace vastra
