// The trending stage: the newest sample, with the variables that the live views add.
#include <gtest/gtest.h>

#include "tests/stages/samples.h"
#include "tests/support/recorder.h"
#include "vastra/stages/log_trendings.h"

namespace vastra {
namespace {

class Trending : public testing::Test {
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
    EXPECT_EQ(opened, m_stage.IsOpen());
    return opened;
  }
  int Write(std::initializer_list<float> values, std::int32_t time = kStart) {
    CLogSample sample = Sample(values, time);
    return m_stage.Write(sample);
  }
  std::string Read() { return m_stage.Read(&m_sample) ? Values(m_sample) : "failed"; }

  CRecorder m_recorder;
  CLogSample m_sample = Sample({-7});
  CLogTrendings m_stage;
};

TEST_F(Trending, BaseVariablesAreFollowedByTheExtrasOnlyWhereTheseAreComputed) {
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
    ASSERT_EQ(1, Open({"a", "b"}, row.base, row.extra, row.equations));
    m_recorder.Take();
    EXPECT_EQ(1, Write({1, 2}));
    EXPECT_EQ(*row.equations == 0, m_recorder.Take().starts_with("Write Begin TrendingsFileLink\n"));
    EXPECT_EQ(row.stored, Read());
  }
}

TEST_F(Trending, EachReaderGetsTheNewestSampleAndNoneBeforeTheFirst) {
  EXPECT_EQ("failed", Read());
  EXPECT_EQ("-7", Values(m_sample)) << "a closed stage leaves the sample alone";
  EXPECT_EQ(0, Write({1, 2}));
  ASSERT_EQ(1, Open({"a", "b"}, {"a", "b"}, {"n"}, "n = n + 1"));
  EXPECT_EQ("", Read());
  for (const int n : {1, 2}) {
    EXPECT_EQ(1, Write({3, 4}, kStart + n));
    for (int reader = 0; reader < 2; ++reader) {
      EXPECT_EQ("3 4 " + std::to_string(n), Read());
      EXPECT_EQ(kStart + n, m_sample.m_time.time);
    }
  }
  ASSERT_EQ(1, Open({"x"}, {"x"}, {"n"}, "n = n + 1"));
  EXPECT_EQ("", Read());
  EXPECT_EQ(1, Write({5}));
  EXPECT_EQ("5 1", Read());
  m_stage.Close();
  EXPECT_EQ(0, m_stage.IsOpen());
  EXPECT_EQ("failed", Read());
  EXPECT_EQ("5 1", Values(m_sample));
  EXPECT_EQ("", m_recorder.TakeFaults());
}

TEST_F(Trending, ExtrasThatDoNotCompileLeaveTheStageClosed) {
  ASSERT_EQ(1, Open({"a"}, {"a"}));
  EXPECT_EQ(1, Write({1}));
  EXPECT_EQ(0, Open({"a"}, {"a"}, {"n"}, "n = b"));
  EXPECT_EQ("Open Fatal TrendingsEquatorLink Linker could not configure itself.\n", m_recorder.TakeFaults());
  EXPECT_EQ("failed", Read());
  EXPECT_EQ(0, Write({1}));
}

}  // namespace
}  // namespace vastra
