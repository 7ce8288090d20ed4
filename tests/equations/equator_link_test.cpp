// Equations between a caller and a component.
#include "vastra/equations/equator_link.h"

#include <gtest/gtest.h>

#include <limits>

#include "tests/support/names.h"
#include "tests/support/recorder.h"
#include "tests/support/test_link.h"

namespace vastra {
namespace {

using CValues = std::vector<float>;
constexpr _timeb kTime = {1234567, 89, 60, 1, 0};
constexpr float kInf = std::numeric_limits<float>::infinity();

CStringArray Split(const char* text, char mark) {
  CStringArray parts;
  std::istringstream stream(text);
  for (std::string part; std::getline(stream, part, mark);) parts.Add(CString(part));
  return parts;
}

// An equator link E on a test link F.
struct CChain {
  CChain() { m_leaf->m_name = "F", m_link->m_name = "E"; }

  // Names have a blank between them, equations a semicolon.
  int Open(const char* inputs, const char* equations, const char* outputs, bool reads, const char* held) {
    const auto config = new CEquatorConfig;
    for (const CString& name : Split(inputs, ' ')) config->m_inputVariables.AddTail(name);
    for (const CString& text : Split(equations, ';')) config->m_equations.AddTail(text);
    for (const CString& name : Split(outputs, ' ')) config->m_outputVariables.AddTail(name);
    const auto leaf = new CTestConfig;
    leaf->m_names = Split(held, ' ');
    CLinkConfigList configs;
    configs.AddTail(config);
    configs.AddTail(leaf);
    m_reads = reads;
    return m_link->Open(configs, reads ? CLink::modeRead : CLink::modeWrite);
  }
  // The values on the other side, which is the caller or the leaf.
  CValues Pass(const CValues& values) {
    CLogSample sample, &from = m_reads ? m_leaf->m_sample : sample, &to = m_reads ? sample : m_leaf->m_sample;
    Set(from, values, kTime);
    Set(to, {9, 9, 9, 9, 9}, {});
    EXPECT_EQ(m_link->Comm(sample), 1);
    EXPECT_EQ(Values(from), values);
    EXPECT_EQ(to.m_time, kTime);
    return Values(to);
  }

  CRecorder m_recorder;
  CTestLink* m_leaf = new CTestLink;  // of m_link
  std::unique_ptr<CEquatorLink> m_link{CEquatorLink::Create(m_leaf)};
  bool m_reads = false;
};

const struct {
  const char *inputs, *equations, *outputs;
  std::vector<CValues> in, out;
  const char* undefined = "";
} kPasses[] = {
    {"a b c", "", "c a", {{1, 2, 3}}, {{3, 1}}},
    {"a", "", "", {{1}}, {{}}},
    {"x", "a = 1;b = a + 1", "b a x", {{5}, {6}}, {{2, 1, 5}, {2, 1, 6}}},
    {"x", "b = a + 1;a = 1", "b", {{0}, {0}, {0}}, {{1}, {2}, {2}}},
    {"x", "s = s + x;m = s / n;n = n + 1", "m", {{4}, {6}, {8}}, {{kInf}, {10}, {9}}, "m "},
    {"x", "y = x * 0.1;z = y == x * 0.1", "z", {{3}}, {{0}}},  // y is a float
    {"x", "s = x;t = s;s = 2", "s t", {{5}, {6}}, {{2, 5}, {2, 6}}},
    {"x", "x = x + 1;y = x", "x y", {{5}, {6}}, {{5, 5}, {6, 6}}},
    {"x", "n = 1", "nowhere n", {{7}}, {{0, 1}}},
    {"x", "/* the count */ n = n + x", "n", {{1}, {2}}, {{1}, {3}}},
    {"x x", "", "x", {{1, 2}}, {{1}}},
    {"x y", "n = x + y;m = m + 1", "n m y", {{4}, {1, 2, 3}, {}}, {{4, 1, 0}, {3, 2, 2}, {0, 3, 0}}},
    {"a b c d e", "y = a + b + c + d + e", "y", {{1, 2, 3, 4, 5}, {1, 2}, {1, 2, 3, 4}}, {{15}, {3}, {10}}},
    {"x", "y = 1 / x", "y", {{0}, {2}, {0}}, {{kInf}, {0.5}, {kInf}}, "y y "},
    {"x", "y = y + 1 / x;z = sqrt(x - 1);w = y", "w z", {{0}, {2}}, {{kInf, kInf}, {kInf, 1}}, "y z "},
};

TEST(EquatorLink, EquationsRunAlikeInBothDirections) {
  for (const bool reads : {false, true})
    for (const auto& c : kPasses) {
      SCOPED_TRACE(c.equations + std::string(reads ? ", read" : ", written"));
      CChain chain;  // for a read, the component has the names of the inputs
      ASSERT_EQ(chain.Open(reads ? "" : c.inputs, c.equations, c.outputs, reads, c.inputs), 1);
      for (std::size_t i = 0; i < c.in.size(); ++i) EXPECT_EQ(chain.Pass(c.in[i]), c.out[i]) << i;
      std::string notices;
      for (const CString& name : Split(c.undefined, ' '))
        notices +=
            (reads ? "Read" : "Write") + (" Notice E Result undefined for variable " + name.Std()) + "\n";
      EXPECT_EQ(chain.m_recorder.TakeFaults(), notices);
    }
}

TEST(EquatorLink, OpenNeedsNamesAndAListThatCompiles) {
  EXPECT_EQ(CEquatorLink::Create(nullptr), nullptr);
  const std::string failed = "Open Fatal E Linker could not configure itself.\n";
  const struct {
    const char *inputs, *equations;
    bool nameless;
    std::string faults;
  } cases[] = {{"", "a = held", false, ""},
               {"x", "a = held", false, failed},
               {"x", "a = 1", true, ""},
               {"", "a = 1", true, "Get Variable Names Error F Timeout error.\n" + failed}};
  for (const auto& c : cases) {
    CChain chain;
    chain.m_leaf->m_nameless = c.nameless;
    EXPECT_EQ(chain.Open(c.inputs, c.equations, "a", false, "held"), c.faults.empty());
    EXPECT_EQ(chain.m_recorder.TakeFaults(), c.faults);
  }
}

TEST(EquatorLink, APassIsTraced) {
  CChain chain;
  CLink& link = *chain.m_link;
  CRecorder& recorder = chain.m_recorder;
  CLogSample sample;
  CStringArray names;
  EXPECT_EQ(link.GetVarNames(names) + link.Write(sample) + link.Read(sample), 0);
  EXPECT_EQ(recorder.TakeFaults(),
            "Get Variable Names Fatal E Linker is not opened.\n"
            "Write Fatal E Linker is not opened.\nRead Fatal E Linker is not opened.\n");
  ASSERT_EQ(chain.Open("x", "y = 1 / x", "y x", false, ""), 1);
  recorder.Take();
  EXPECT_EQ(link.Write(sample), 1);
  EXPECT_EQ(recorder.Take(),
            "Write Begin E\nWrite Notice E Result undefined for variable y\n"
            "Write Begin F\nWrite End F\nWrite End E\n");
  EXPECT_EQ(link.Read(sample), 1);
  EXPECT_EQ(recorder.Take(), "Read Begin E\nRead Begin F\nRead End F\nRead End E\n");
  EXPECT_EQ(link.GetVarNames(names), 1);
  EXPECT_EQ(names, Names({"y", "x"}));
}

TEST(EquatorLink, VariablesKeepTheirValuesWhileTheLinkExists) {
  CChain chain;
  const auto open = [&](const char* equations) { return chain.Open("x", equations, "n", false, "n"); };
  ASSERT_EQ(open("n = n + 1"), 1);
  EXPECT_EQ(chain.Pass({0}), CValues{1});
  chain.m_link->Close();
  ASSERT_EQ(open("n = n + 1"), 1);
  EXPECT_EQ(chain.Pass({0}), CValues{2});
  ASSERT_EQ(open("n = 5;m = nope"), 0);
  ASSERT_EQ(open("n = n + 1"), 1);
  EXPECT_EQ(chain.Pass({0}), CValues{3}) << "after an Open that failed, or one without Close";

  CLogSample sample;
  chain.m_recorder.Take();
  chain.m_leaf->m_fails = true;
  EXPECT_EQ(chain.m_link->Write(sample) + chain.m_link->Read(sample), 0);
  EXPECT_EQ(chain.m_recorder.TakeFaults(),
            "Write Error F Timeout error.\nWrite Error E Could not write to component.\n"
            "Read Error F Timeout error.\nRead Error E Could not read component.\n");
  chain.m_leaf->m_fails = false;
  EXPECT_EQ(chain.Pass({0}), CValues{5}) << "the write that failed counts, the read does not";
}

TEST(Equator, RefusesAFaultyListAndNamesTheFault) {
  const struct {
    const char* equations;
    int statement, offset;
  } cases[] = {{"a = 1", 0, 0},
               {"a = b;b = x", 0, 0},
               {"a = nope", 1, 4},
               {"a = ;b = nope", 1, 4},
               {"a = 1;b = nope", 2, 4},
               {"a = 1;b = X", 2, 4},
               {"a = 1;b", 2, 1},
               {"a = 1;  ", 2, 2},
               {"a = 1; /* end */", 2, 10},
               {"/* note\nor two */ a = 1", 0, 0},
               {"/* b = 2 */ a = 1", 1, 5},        // the assigned name is hidden
               {"/* x = 2 */ a = 1", 1, 5},        // even if the word is a known name
               {"/* a = 2 */ a = 1;y = a", 0, 0},  // both rules find the same name
               {"a /* note */ = 1", 1, 13}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.equations);
    CEquator equator;
    equator.Compile({}, Names({"n = 1", "m = 2", "k = 3"}));
    const CEquationFault fault = equator.Compile(Names({"x"}), Split(c.equations, ';'));
    EXPECT_EQ(fault.statement, c.statement);
    EXPECT_EQ(fault.offset, c.offset);
    EXPECT_EQ(equator.GetCount() == 3, c.statement > 0) << "the list before was lost";
  }
}

}  // namespace
}  // namespace vastra
