// Equations between a caller and a component.
#include "vastra/equations/equator_link.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <memory>
#include <sstream>

#include "tests/support/names.h"
#include "tests/support/recorder.h"
#include "tests/support/test_link.h"

namespace vastra {
namespace {

// The parts of text between marks; none if text is empty.
std::vector<std::string> Split(const std::string& text, char mark) {
  std::vector<std::string> parts;
  std::istringstream stream(text);
  for (std::string part; std::getline(stream, part, mark);) parts.push_back(part);
  return parts;
}

CLogSample Sample(const std::string& values) {
  CLogSample sample;
  sample.m_time.time = 1234567;
  sample.m_time.millitm = 89;
  for (const std::string& value : Split(values, ' ')) sample.m_values.Add(std::stof(value));
  return sample;
}

// "1 2", or "late 1 2" if the time is not that of Sample.
std::string Show(const CLogSample& sample) {
  std::string all = sample.m_time.time == 1234567 && sample.m_time.millitm == 89 ? "" : "late";
  for (const float value : sample.m_values) {
    char text[32];
    std::snprintf(text, sizeof text, "%s%g", all.empty() ? "" : " ", static_cast<double>(value));
    all += text;
  }
  return all;
}

// An equator link E on a test link F.
struct CChain {
  CChain() { m_leaf->m_name = "F", m_link->m_name = "E"; }

  int Open(const char* inputs, const char* equations, const char* outputs, UINT mode, const char* held) {
    const auto config = new CEquatorConfig;
    for (const std::string& name : Split(inputs, ' ')) config->m_inputVariables.AddTail(CString(name));
    for (const std::string& text : Split(equations, ';')) config->m_equations.AddTail(CString(text));
    for (const std::string& name : Split(outputs, ' ')) config->m_outputVariables.AddTail(CString(name));
    const auto leaf = new CTestConfig;
    for (const std::string& name : Split(held, ' ')) leaf->m_names.Add(CString(name));
    CLinkConfigList configs;
    configs.AddTail(config);
    configs.AddTail(leaf);
    return m_link->Open(configs, mode);
  }
  // The sample on the other side: in write mode that of the leaf, in read mode that of the caller.
  std::string Pass(const std::string& values, UINT mode) {
    CLogSample sample = Sample(values);
    if (mode == CLink::modeWrite) {
      const int written = m_link->Write(sample);
      EXPECT_EQ(Show(sample), Show(Sample(values))) << "the caller's sample changed";
      return written ? Show(m_leaf->m_sample) : "failed";
    }
    m_leaf->m_sample = sample;
    sample = CLogSample();
    sample.m_values.SetSize(9);
    return m_link->Read(sample) ? Show(sample) : "failed";
  }

  CRecorder m_recorder;
  CTestLink* m_leaf = new CTestLink;  // of m_link
  std::unique_ptr<CEquatorLink> m_link{CEquatorLink::Create(m_leaf)};
};

const struct {
  const char *inputs, *equations, *outputs, *in, *out, *undefined;
} kPasses[] = {
    {"a b c", "", "c a", "1 2 3", "3 1", ""},
    {"a", "", "", "1", "", ""},
    {"x", "a = 1;b = a + 1", "b a x", "5|6", "2 1 5|2 1 6", ""},
    {"x", "b = a + 1;a = 1", "b", "0|0|0", "1|2|2", ""},
    {"x", "n = n + 1", "n", "0|0|0", "1|2|3", ""},
    {"x", "sum = sum + x;mean = sum / n;n = n + 1", "mean", "4|6|8", "inf|10|9", "mean "},
    {"x", "y = x * 0.1;z = y == x * 0.1", "z", "3", "0", ""},  // y is a float
    {"x", "s = x;t = s;s = 2", "s t", "5|6", "2 5|2 6", ""},
    {"x", "x = x + 1;y = x", "x y", "5|6", "5 5|6 6", ""},
    {"x", "n = 1", "nowhere n", "7", "0 1", ""},
    {"x", "/* the count */ n = n + x", "n", "1|2", "1|3", ""},
    {"x x", "", "x", "1 2", "1", ""},
    {"x y", "n = x + y;m = m + 1", "n x m y", "4|1 2 3|", "4 4 1 0|3 1 2 2|0 0 3 0", ""},
    {"x", "y = 1 / x", "y", "0|2|0", "inf|0.5|inf", "y y "},
    {"a b c d e", "y = a + b + c + d + e", "y", "1 2 3 4 5|1 2||1 2 3 4", "15|3|0|10", ""},
    {"x", "y = y + 1 / x;z = sqrt(x - 1);w = y", "y w z", "0|2", "inf inf inf|inf inf 1", "y z "},
};

TEST(EquatorLink, EquationsRunAlikeInBothDirections) {
  for (const UINT mode : {CLink::modeWrite, CLink::modeRead})
    for (const auto& c : kPasses) {
      const std::string what = std::string(c.equations) + (mode == CLink::modeRead ? ", read" : ", written");
      CChain chain;
      const bool asks = mode == CLink::modeRead;  // the component for the names of the inputs
      ASSERT_EQ(chain.Open(asks ? "" : c.inputs, c.equations, c.outputs, mode, c.inputs), 1) << what;
      std::string out;
      std::vector<std::string> samples = Split(c.in, '|');
      if (c.in[std::strlen(c.in) - 1] == '|') samples.emplace_back();
      for (const std::string& sample : samples)
        out += (&sample == &samples.front() ? "" : "|") + chain.Pass(sample, mode);
      EXPECT_EQ(out, c.out) << what;

      std::string notices;
      for (const std::string& name : Split(c.undefined, ' '))
        notices +=
            (asks ? "Read" : "Write") + std::string(" Notice E Result undefined for variable ") + name + "\n";
      EXPECT_EQ(chain.m_recorder.TakeFaults(), notices) << what;
    }
}

const struct {
  const char *inputs, *equations;
  bool opens;
} kOpens[] = {
    {"x", "a = b;b = x", true},
    {"x", "a = nope", false},
    {"x", "a = 1;b = X", false},
    {"x", "a = 1; /* end */", false},
    {"x", "a", false},
    {"x", "a = 1 +;b = 1", false},
    {"", "a = held", true},
    {"x", "a = held", false},
    {"x", "/* note\nor two */ a = 1", true},
    {"x", "/* b = 2 */ a = 1", false},       // the assigned name is hidden
    {"b", "/* b = 2 */ a = 1", false},       // even if the word is a known name
    {"x", "/* a = 2 */ a = 1;y = a", true},  // both rules find the same name
    {"x", "a /* note */ = 1", false},
};

TEST(EquatorLink, OpenAcceptsListsThatCompile) {
  for (const auto& c : kOpens) {
    SCOPED_TRACE(c.equations);
    CChain chain;
    EXPECT_EQ(chain.Open(c.inputs, c.equations, "a", CLink::modeWrite, "held"), c.opens);
    EXPECT_EQ(chain.m_recorder.TakeFaults(),
              c.opens ? "" : "Open Fatal E Linker could not configure itself.\n");
    EXPECT_EQ(chain.Pass("1", CLink::modeWrite) != "failed", c.opens);
    EXPECT_EQ(chain.m_recorder.TakeFaults(), c.opens ? "" : "Write Fatal E Linker is not opened.\n");
  }
}

TEST(EquatorLink, AComponentWithoutNamesFailsAnOpenThatAsksForThem) {
  CChain chain;
  chain.m_leaf->m_nameless = true;
  for (const char* inputs : {"", "x"})
    EXPECT_EQ(chain.Open(inputs, "a = 1", "a", CLink::modeRead, ""), *inputs != 0) << inputs;
  EXPECT_EQ(chain.m_recorder.TakeFaults(),
            "Get Variable Names Error F Timeout error.\nOpen Fatal E Linker could not configure itself.\n");
  EXPECT_EQ(CEquatorLink::Create(nullptr), nullptr);
}

TEST(EquatorLink, APassIsTraced) {
  CChain chain;
  CRecorder& recorder = chain.m_recorder;
  CLogSample sample = Sample("0");
  CStringArray names;
  ASSERT_EQ(chain.Open("x", "y = 1 / x", "y x", CLink::modeWrite, ""), 1);
  recorder.Take();
  EXPECT_EQ(chain.m_link->Write(sample), 1);
  EXPECT_EQ(recorder.Take(),
            "Write Begin E\nWrite Notice E Result undefined for variable y\n"
            "Write Begin F\nWrite End F\nWrite End E\n");
  EXPECT_EQ(chain.m_link->Read(sample), 1);
  EXPECT_EQ(recorder.Take(), "Read Begin E\nRead Begin F\nRead End F\nRead End E\n");
  EXPECT_EQ(chain.m_link->GetVarNames(names), 1);
  EXPECT_EQ(names, Names({"y", "x"}));
  chain.m_link->Close();
  recorder.Take();
  EXPECT_EQ(chain.m_link->GetVarNames(names), 0);
  EXPECT_EQ(chain.m_link->Write(sample), 0);
  EXPECT_EQ(chain.m_link->Read(sample), 0);
  EXPECT_EQ(recorder.TakeFaults(),
            "Get Variable Names Fatal E Linker is not opened.\n"
            "Write Fatal E Linker is not opened.\nRead Fatal E Linker is not opened.\n");
}

TEST(EquatorLink, VariablesKeepTheirValuesWhileTheLinkExists) {
  CChain chain;
  const auto open = [&](const char* equations) {
    return chain.Open("x", equations, "n", CLink::modeWrite, "n");
  };
  ASSERT_EQ(open("n = n + 1"), 1);
  EXPECT_EQ(chain.Pass("0", CLink::modeWrite), "1");
  chain.m_link->Close();
  ASSERT_EQ(open("n = n + 1"), 1);
  EXPECT_EQ(chain.Pass("0", CLink::modeWrite), "2");
  ASSERT_EQ(open("n = 5;m = nope"), 0);
  ASSERT_EQ(open("n = n + 1"), 1);
  EXPECT_EQ(chain.Pass("0", CLink::modeWrite), "3") << "after an Open that failed, or one without Close";

  chain.m_recorder.Take();
  chain.m_leaf->m_fails = true;
  CLogSample sample = Sample("0");
  EXPECT_EQ(chain.m_link->Write(sample), 0);
  EXPECT_EQ(chain.m_link->Read(sample), 0);
  EXPECT_EQ(chain.m_recorder.TakeFaults(),
            "Write Error F Timeout error.\nWrite Error E Could not write to component.\n"
            "Read Error F Timeout error.\nRead Error E Could not read component.\n");
  chain.m_leaf->m_fails = false;
  EXPECT_EQ(chain.Pass("0", CLink::modeWrite), "5") << "the write that failed counts, the read does not";
}

TEST(Equator, RefusesAFaultyListAndNamesTheFault) {
  const struct {
    const char* equations;
    int statement, offset;
  } cases[] = {{"a = 1", 0, 0},
               {"a = 1;b = nope", 2, 4},
               {"a = ;b = nope", 1, 4},
               {"a = 1;/* c = 1 */ b = 1", 2, 5},
               {"a = 1;  ", 2, 2}};
  CEquator equator;
  for (const auto& c : cases) {
    CStringArray equations;
    for (const std::string& text : Split(c.equations, ';')) equations.Add(CString(text));
    const CEquationFault fault = equator.Compile({}, equations);
    EXPECT_EQ(fault.statement, c.statement) << c.equations;
    EXPECT_EQ(fault.offset, c.offset) << c.equations;
    EXPECT_EQ(equator.GetCount(), 1) << "the list before was lost: " << c.equations;
  }
}

}  // namespace
}  // namespace vastra
