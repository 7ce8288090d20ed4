// Equations between a caller and a component that holds one sample.
#include "vastra/equations/equator_link.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <memory>
#include <sstream>

#include "tests/support/recorder.h"
#include "tests/support/test_link.h"
#include "vastra/logfiles/file_link.h"

namespace vastra {
namespace {

// The parts of text between marks; an empty text has none.
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

// "1 2", behind another time "late".
std::string Show(const CLogSample& sample) {
  std::string all = sample.m_time.time == 1234567 && sample.m_time.millitm == 89 ? "" : "late";
  for (const float value : sample.m_values) {
    char text[32];
    std::snprintf(text, sizeof text, "%s%g", all.empty() ? "" : " ", static_cast<double>(value));
    all += text;
  }
  return all;
}

// An equator link E on a file link F that keeps one sample.
struct CChain {
  CChain() : m_file(CFileLink::Create(nullptr)), m_link(CEquatorLink::Create(m_file)) {
    m_file->m_name = "F";
    m_link->m_name = "E";
  }

  static CEquatorConfig* Config(const char* inputs, const char* equations, const char* outputs) {
    const auto config = new CEquatorConfig;
    for (const std::string& name : Split(inputs, ' ')) config->m_inputVariables.AddTail(CString(name));
    for (const std::string& text : Split(equations, ';')) config->m_equations.AddTail(CString(text));
    for (const std::string& name : Split(outputs, ' ')) config->m_outputVariables.AddTail(CString(name));
    return config;
  }
  int OpenFile(const char* names, UINT mode) {
    CLinkConfigList configs;
    AddFile(configs, names);
    return m_file->Open(configs, mode);
  }
  int Open(const char* inputs, const char* equations, const char* outputs, UINT mode, const char* held) {
    CLinkConfigList configs;
    configs.AddTail(Config(inputs, equations, outputs));
    AddFile(configs, held);
    const int result = m_link->Open(configs, mode);
    EXPECT_EQ(0, configs.GetCount());
    return result;
  }
  // What arrives at the other side: in write mode in the file link, in read mode at the caller.
  std::string Pass(const std::string& values, UINT mode) {
    CLogSample in = Sample(values), out;
    CLink& inner = *m_file;
    CLink& from = mode == CLink::modeWrite ? *m_link : inner;
    CLink& to = mode == CLink::modeWrite ? inner : *m_link;
    out.m_values.SetSize(9);
    if (!from.Write(in) || !to.Read(out)) return "failed";
    EXPECT_EQ(Show(Sample(values)), Show(in)) << "the caller's sample changed";
    return Show(out);
  }

  CRecorder m_recorder;
  CFileLink* m_file;  // of m_link
  std::unique_ptr<CEquatorLink> m_link;

 private:
  static void AddFile(CLinkConfigList& configs, const char* names) {
    const auto file = new CFileConfig;
    file->m_bufferOnly = 1;
    for (const std::string& name : Split(names, ' ')) file->m_varNames.Add(CString(name));
    configs.AddTail(file);
  }
};

struct CPassCase {
  const char *inputs, *equations, *outputs, *in, *out, *undefined;
};
const CPassCase kPasses[] = {
    {"a b c", "", "c a", "1 2 3", "3 1", ""},
    {"a", "", "", "1", "", ""},
    {"x", "a = 1;b = a + 1", "b a x", "5|6", "2 1 5|2 1 6", ""},
    {"x", "b = a + 1;a = 1", "b", "0|0|0", "1|2|2", ""},
    {"x", "n = n + 1", "n", "0|0|0", "1|2|3", ""},
    {"x", "sum = sum + x;mean = sum / n;n = n + 1", "mean", "4|6|8", "inf|10|9", "mean "},
    {"x", "s = x;t = s;s = 2", "s t", "5|6", "2 5|2 6", ""},
    {"x", "x = x + 1;y = x", "x y", "5|6", "5 5|6 6", ""},
    {"x", "n = 1", "nowhere n", "7", "0 1", ""},
    {"x", "/* the count */ n = n + x", "n", "1|2", "1|3", ""},
    {"x x", "", "x", "1 2", "1", ""},
    {"x y", "n = x + y;m = m + 1", "n x m y", "4|1 2 3|", "4 4 1 0|3 1 2 2|0 0 3 0", ""},
    {"x", "y = 1 / x", "y", "0|2|0", "inf|0.5|inf", "y y "},
    {"x", "y = y + 1 / x;z = sqrt(x - 1);w = y", "y w z", "0|2", "inf inf inf|inf inf 1", "y z "},
};

TEST(EquatorLink, EquationsRunAlikeInBothDirections) {
  for (const UINT mode : {CLink::modeWrite, CLink::modeRead})
    for (const CPassCase& c : kPasses) {
      const std::string what = std::string(c.equations) + (mode == CLink::modeRead ? ", read" : ", written");
      CChain chain;
      const bool asks = mode == CLink::modeRead;  // for the names of the inputs
      ASSERT_EQ(1, chain.Open(asks ? "" : c.inputs, c.equations, c.outputs, mode, c.inputs)) << what;
      std::string out;
      std::vector<std::string> samples = Split(c.in, '|');
      if (c.in[std::strlen(c.in) - 1] == '|') samples.emplace_back();
      for (const std::string& sample : samples)
        out += (&sample == &samples.front() ? "" : "|") + chain.Pass(sample, mode);
      EXPECT_EQ(c.out, out) << what;

      std::string notices;
      for (const std::string& name : Split(c.undefined, ' '))
        notices +=
            (asks ? "Read" : "Write") + std::string(" Notice E Result undefined for variable ") + name + "\n";
      EXPECT_EQ(notices, chain.m_recorder.TakeFaults()) << what;
    }
}

struct COpenCase {
  const char *inputs, *equations;
  bool opens;
};
const COpenCase kOpens[] = {
    {"x", "a = b;b = x", true},
    {"x", "a = nope", false},
    {"x", "a = 1;b = X", false},
    {"x", "a = 1; /* end */", false},
    {"x", "a", false},
    {"x", "a = 1 +;b = 1", false},
    {"", "a = held", true},
    {"x", "a = held", false},
    {"x", "/* note\nor two */ a = 1", true},
    {"x", "/* b = 2 */ a = 1", false},       // the name is hidden
    {"b", "/* b = 2 */ a = 1", false},       // also behind one that is known
    {"x", "/* a = 2 */ a = 1;y = a", true},  // both ways find the same name
    {"x", "a /* note */ = 1", false},
};

TEST(EquatorLink, OpenTakesOnlyListsThatCompileAndFailsAsAWhole) {
  for (const COpenCase& c : kOpens) {
    CChain chain;
    EXPECT_EQ(c.opens, chain.Open(c.inputs, c.equations, "a", CLink::modeWrite, "held")) << c.equations;
    EXPECT_EQ(c.opens ? "" : "Open Fatal E Linker could not configure itself.\n",
              chain.m_recorder.TakeFaults())
        << c.equations;
    EXPECT_EQ(c.opens, chain.Pass("1", CLink::modeWrite) != "failed") << c.equations;
    EXPECT_EQ(c.opens ? "" : "Write Fatal E Linker is not opened.\n", chain.m_recorder.TakeFaults());
  }
}

TEST(EquatorLink, AComponentThatKeepsItsNamesFailsTheOpen) {
  CRecorder recorder;
  const auto component = new CTestLink;
  component->m_nameless = true;
  const std::unique_ptr<CEquatorLink> link(CEquatorLink::Create(component));
  for (const char* inputs : {"", "x"}) {  // it is only asked where none are given
    CLinkConfigList configs;
    configs.AddTail(CChain::Config(inputs, "a = 1", "a"));
    configs.AddTail(new CTestConfig);
    EXPECT_EQ(*inputs != 0, link->Open(configs, CLink::modeRead)) << inputs;
  }
  EXPECT_EQ(
      "Get Variable Names Error Not named Timeout error.\n"
      "Open Fatal Not named Linker could not configure itself.\n",
      recorder.TakeFaults());
  EXPECT_EQ(nullptr, CEquatorLink::Create(nullptr));
}

TEST(EquatorLink, TheTraceOfAPassIsComplete) {
  CChain chain;
  ASSERT_EQ(1, chain.Open("x", "y = 1 / x", "y x", CLink::modeWrite, ""));
  chain.m_recorder.Take();
  CLogSample sample = Sample("0");
  EXPECT_EQ(1, chain.m_link->Write(sample));
  EXPECT_EQ(
      "Write Begin E\nWrite Notice E Result undefined for variable y\n"
      "Write Begin F\nWrite End F\nWrite End E\n",
      chain.m_recorder.Take());
  EXPECT_EQ(1, chain.m_link->Read(sample));
  EXPECT_EQ("Read Begin E\nRead Begin F\nRead End F\nRead End E\n", chain.m_recorder.Take());

  CStringArray names;
  EXPECT_EQ(1, chain.m_link->GetVarNames(names));
  ASSERT_EQ(2, names.GetSize());
  EXPECT_STREQ("y", names[0]);
  chain.m_link->Close();
  chain.m_recorder.Take();
  EXPECT_EQ(0, chain.m_link->GetVarNames(names));
  EXPECT_EQ(0, chain.m_link->Write(sample));
  EXPECT_EQ(0, chain.m_link->Read(sample));
  EXPECT_EQ(
      "Get Variable Names Fatal E Linker is not opened.\n"
      "Write Fatal E Linker is not opened.\nRead Fatal E Linker is not opened.\n",
      chain.m_recorder.TakeFaults());
}

TEST(EquatorLink, StateLastsAsLongAsTheLink) {
  CChain chain;
  const auto open = [&](const char* equations) {
    return chain.Open("x", equations, "n", CLink::modeWrite, "n");
  };
  ASSERT_EQ(1, open("n = n + 1"));
  EXPECT_EQ("1", chain.Pass("0", CLink::modeWrite));
  chain.m_link->Close();
  ASSERT_EQ(1, open("n = n + 1"));
  EXPECT_EQ("2", chain.Pass("0", CLink::modeWrite));
  ASSERT_EQ(0, open("n = 5;m = nope"));
  ASSERT_EQ(1, open("n = n + 1"));
  EXPECT_EQ("3", chain.Pass("0", CLink::modeWrite)) << "an Open that failed, or one without Close, lost it";

  chain.m_recorder.Take();
  chain.m_file->Close();
  chain.m_recorder.Take();
  CLogSample sample = Sample("0");
  EXPECT_EQ(0, chain.m_link->Write(sample));
  EXPECT_EQ("Write Fatal F Linker is not opened.\nWrite Error E Could not write to component.\n",
            chain.m_recorder.TakeFaults());
  EXPECT_EQ(0, chain.m_link->Read(sample));
  EXPECT_EQ("Read Fatal F Linker is not opened.\nRead Error E Could not read component.\n",
            chain.m_recorder.TakeFaults());
  ASSERT_EQ(1, chain.OpenFile("n", CLink::modeWrite));
  EXPECT_EQ("5", chain.Pass("0", CLink::modeWrite)) << "only the write that failed counts, not the read";
}

TEST(EquatorLink, AFaultyListIsNotTakenAndTheFaultIsNamed) {
  struct {
    const char* equations;
    int statement, offset;
  } const kCases[] = {{"a = 1", 0, 0},
                      {"a = 1;b = nope", 2, 4},
                      {"a = ;b = nope", 1, 4},
                      {"a = 1;/* c = 1 */ b = 1", 2, 5},
                      {"a = 1;  ", 2, 2}};
  CEquator equator;
  CStringArray inputs;
  for (const auto& c : kCases) {
    CStringArray equations;
    for (const std::string& text : Split(c.equations, ';')) equations.Add(CString(text));
    const CEquationFault fault = equator.Compile(inputs, equations);
    EXPECT_EQ(c.statement, fault.statement) << c.equations;
    EXPECT_EQ(c.offset, fault.offset) << c.equations;
    EXPECT_EQ(1, equator.GetCount()) << "the list before is gone: " << c.equations;
  }
}

}  // namespace
}  // namespace vastra
