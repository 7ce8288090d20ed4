#include <gtest/gtest.h>

#include <functional>

#include "tests/support/configuration_bytes.h"
#include "vastra/config/enable_config.h"
#include "vastra/config/input_config.h"
#include "vastra/config/output_config.h"
#include "vastra/config/plc_write_config.h"
#include "vastra/config/smart_config.h"
#include "vastra/config/stored_form.h"
#include "vastra/config/summary_config.h"
#include "vastra/config/trend_config.h"

namespace vastra {
namespace {

template <class T>
std::string Stored(T&& object, UINT version = 1003) {
  CMemFile file;
  CArchive ar(&file, CArchive::store);
  object.Serialize(ar, version);
  ar.Close();
  return file.Bytes();
}

// What is wrong with bytes, or an empty text.
template <class T>
CString Load(T& object, const std::string& bytes, UINT version = 1003) {
  CMemFile file(bytes);
  CArchive ar(&file, CArchive::load);
  try {
    object.Serialize(ar, version);
  } catch (const CArchiveException& fault) {
    return fault.Text();
  }
  const std::uint64_t rest = IsKnownVersion(version) ? 0 : bytes.size();
  EXPECT_EQ(rest, ar.Remaining());
  return "";
}

CPlcNodeConfig NodeA() {
  CPlcNodeConfig node;
  node.m_driver = {1, 2, 3, 4, 5, 6, 7, 8, 9, "t", "u", 11, 12, 13, 14, 15};
  node.m_nodeName = "A";
  node.m_varNames.Add("v");
  CScalerConfigNode rule;
  rule.m_scale = 2.0f;
  rule.m_varName = "w";
  rule.m_clamping = 1;
  rule.m_lowLimit = -1.0f;
  rule.m_highLimit = 1.5f;
  node.m_scaler.m_nodes.Add(rule);
  return node;
}

CPlcNodeConfig NodeB() {
  CPlcNodeConfig node;
  node.m_nodeName = "B";
  return node;
}

CInputConfig Input() {
  CInputConfig input;
  input.m_simulating = 1;
  input.m_preprocess = 2;
  input.m_autoStart = 3;
  input.m_scanPeriod = 1000;
  input.m_asFastAsPossible = 4;
  input.m_preEquationText = "y = x;";
  input.m_plcNodes.AddTail(new CPlcNodeConfig(NodeA()));
  input.m_plcNodes.AddTail(new CPlcNodeConfig(NodeB()));
  input.m_inputFiles.AddTail("/a.rph");
  input.m_inputFiles.AddTail("");
  input.m_preEquations.Add("y = x");
  input.m_preNewVars.Add("y");
  return input;
}

COutputConfig Output() {
  COutputConfig output;
  output.m_varNames.Add("v");
  output.m_varNames.Add("w");
  output.m_enableEquations.Add("e");
  output.m_name = "n";
  output.m_saveRp = 1;
  output.m_saveCsv = 2;
  output.m_maxLogs = 3;
  output.m_maxSamples = 4;
  output.m_directory = "/d";
  output.m_enableText = "e;";
  output.m_nameVariable = "k";
  output.m_dwordName = 5;
  output.m_prefix = "p";
  output.m_usePrefix = 6;
  return output;
}

CSummaryConfig Summary() {
  CSummaryConfig summary;
  summary.m_enableEquations.Add("e");
  summary.m_summaryEquations.Add("s");
  summary.m_summaryEquations.Add("t");
  summary.m_varNames.Add("v");
  summary.m_name = "n";
  summary.m_saveRp = 1;
  summary.m_saveCsv = 2;
  summary.m_maxSamples = 3;
  summary.m_maxSummaries = 4;
  summary.m_directory = "/d";
  summary.m_summaryText = "s;t;";
  summary.m_enableText = "e;";
  return summary;
}

CMultiOutputConfig Outputs() {
  CMultiOutputConfig outputs;
  outputs.m_outputs.AddTail(new COutputConfig(Output()));
  return outputs;
}

CMultiSummaryConfig Summaries() {
  CMultiSummaryConfig summaries;
  summaries.m_summaries.AddTail(new CSummaryConfig(Summary()));
  return summaries;
}

CPlcMultiConfig PlcWrite() {
  CPlcMultiConfig plcWrite;
  plcWrite.m_nodes.Renew(2);
  plcWrite.m_nodes.GetHead()->m_node = NodeA();
  plcWrite.m_nodes.GetTail()->m_node = NodeB();
  return plcWrite;
}

CSmartConfig Smart() {
  CSmartConfig smart;
  smart.m_equations.Add("q");
  smart.m_inputNames.Add("n");
  smart.m_inputVars.Add("i");
  smart.m_outputVars.Add("o");
  smart.m_equationText = "q;";
  return smart;
}

CTrendConfig Trend() {
  CTrendConfig trend;
  trend.m_extraVars.Add("x");
  trend.m_equations.Add("q");
  trend.m_baseVars.Add("b");
  trend.m_calculateExtra = 7;
  trend.m_equationText = "q;";
  return trend;
}

// One object and its bytes.
struct CBlock {
  const char* name;
  UINT version;
  std::string bytes;
  std::function<std::string(UINT)> store;  // what the object stores, in hex
  // What a new object stores after a load of bytes, in hex, or what is wrong with them.
  std::function<std::string(const std::string&, UINT)> reload;
  std::function<bool(UINT)> untouched;  // whether a load of version leaves a new object new
};

template <class T>
CBlock Block(const char* name, UINT version, const std::string& bytes, const T& object) {
  return {name,
          version,
          bytes,
          [object](UINT v) { return Hex(Stored(T(object), v)); },
          [](const std::string& from, UINT v) {
            T loaded;
            const CString fault = Load(loaded, from, v);
            return fault.IsEmpty() ? Hex(Stored(loaded, v)) : fault.Std();
          },
          [bytes](UINT v) {
            T loaded;
            return Load(loaded, bytes, v).IsEmpty() && Stored(loaded) == Stored(T());
          }};
}

const CBlock kBlocks[] = {
    Block("node", 1003, kNodeA, NodeA()),
    Block("input", 1003, kInput, Input()),
    Block("input, old", 1002, kInput, Input()),
    Block("output", 1003, kOutput1003, Output()),
    Block("output, old", 1002, kOutput1002, Output()),
    Block("outputs", 1003, kOutputs, Outputs()),
    Block("outputs, old", 1002, Bytes("01000000") + kOutput1002, Outputs()),
    Block("summary", 1003, kSummary, Summary()),
    Block("summaries", 1002, kSummaries, Summaries()),
    Block("nodes to write", 1003, kPlcWrite, PlcWrite()),
    Block("smart", 1002, kSmart, Smart()),
    Block("trend", 1003, kTrend, Trend()),
    Block("new input", 1003, Bytes("00x16 88130000 00000000 00 0000 0000 0000"), CInputConfig()),
    Block("new output", 1003, kOutputNew + Bytes("00 00000000 00 00000000"), COutputConfig()),
    Block("new summary", 1003, Bytes("0000 0000 0000 00 00x8 A00F0000 90010000 00 00 00"), CSummaryConfig()),
    Block("no outputs", 1002, Bytes("00000000"), CMultiOutputConfig()),
    Block("no summaries", 1003, Bytes("00000000"), CMultiSummaryConfig()),
    Block("no nodes to write", 1003, Bytes("00000000"), CPlcMultiConfig()),
    Block("new smart", 1003, Bytes("00x9"), CSmartConfig()),
    Block("new trend", 1003, Bytes("00x6 00000000 00"), CTrendConfig()),
};

constexpr const char* kEnd = "the file ends too early";
constexpr const char* kCount = "a count is larger than the rest of the file";

TEST(StoredForm, HasTheseBytesInBothDirections) {
  for (const CBlock& block : kBlocks) {
    EXPECT_EQ(Hex(block.bytes), block.store(block.version)) << block.name;
    EXPECT_EQ(Hex(block.bytes), block.reload(block.bytes, block.version)) << block.name;
  }
}

TEST(StoredForm, RefusesABlockCutAtAnyByte) {
  for (const CBlock& block : kBlocks)
    for (std::size_t n = 0; n < block.bytes.size(); ++n) {
      const std::string fault = block.reload(block.bytes.substr(0, n), block.version);
      EXPECT_TRUE(fault == kEnd || fault == kCount) << block.name << " at " << n << ": " << fault;
    }
}

TEST(StoredForm, LeavesObjectAndArchiveAloneInAnUnknownVersion) {
  for (const CBlock& block : kBlocks)
    for (const UINT version : {0u, 1001u, 1004u}) {
      EXPECT_EQ("", block.store(version)) << block.name;
      EXPECT_TRUE(block.untouched(version)) << block.name;
    }
  CPlcMultiConfig plcWrite;
  plcWrite.m_nodeNumber = 7;
  EXPECT_EQ("", Stored(plcWrite, 1004));
  EXPECT_EQ(7u, plcWrite.m_nodeNumber);
}

TEST(StoredForm, RefusesACountThatTheRestCannotHold) {
  const std::string head = Bytes("00x8"), tail = Bytes("00000000 88130000 00000000 00");
  const auto input = [&](const char* count, std::size_t rest) {
    CInputConfig fresh;
    return Load(fresh, head + Bytes(count) + tail + std::string(rest, '\0'));
  };
  EXPECT_EQ("", input("01000000", 61 + 6));
  EXPECT_EQ(kCount, input("01000000", 60));
  EXPECT_EQ(kCount, input("02000000", 61 + 60));
  EXPECT_EQ(kCount, input("FFFFFFFF", 61 + 6));

  CScalerConfig scaler;
  for (const char* bytes : {"01000000 00x16", "02000000 00x33", "FFFFFFFF 00x34"}) {
    CMemFile file(Bytes(bytes));
    CArchive ar(&file, CArchive::load);
    EXPECT_THROW(scaler.Serialize(ar), CArchiveException) << bytes;
  }

  CMultiOutputConfig outputs;
  EXPECT_EQ(kCount, Load(outputs, Bytes("01000000 00x32")));
  EXPECT_EQ("", Load(outputs, Bytes("01000000 00x23"), 1002));
  EXPECT_EQ(kCount, Load(outputs, Bytes("01000000 00x22"), 1002));
}

TEST(StoredForm, TakesANumberBelowOneForNoObjects) {
  CMultiOutputConfig outputs = Outputs();
  CMultiSummaryConfig summaries = Summaries();
  CPlcMultiConfig plcWrite = PlcWrite();
  EXPECT_EQ("", Load(outputs, Bytes("FFFFFFFF")));
  EXPECT_EQ("", Load(summaries, Bytes("00000080")));
  EXPECT_EQ("", Load(plcWrite, Bytes("00000000")));
  EXPECT_TRUE(outputs.m_outputs.IsEmpty() && summaries.m_summaries.IsEmpty() && plcWrite.m_nodes.IsEmpty());
}

TEST(StoredForm, LoadReplacesAllButTheInputFiles) {
  CInputConfig input;
  CMultiOutputConfig outputs;
  CPlcMultiConfig plcWrite;
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ("", Load(input, kInput));
    EXPECT_EQ("", Load(outputs, kOutputs));
    EXPECT_EQ("", Load(plcWrite, kPlcWrite));
  }
  EXPECT_EQ(4, input.m_inputFiles.GetCount());
  EXPECT_EQ(Hex(kOutputs), Hex(Stored(outputs)));
  EXPECT_EQ(Hex(kPlcWrite), Hex(Stored(plcWrite)));
  input.m_inputFiles = Input().m_inputFiles;
  EXPECT_EQ(Hex(kInput), Hex(Stored(input)));
  EXPECT_EQ("A", input.m_plcNodes.GetHead()->m_nodeName);

  input.Clear();
  EXPECT_EQ("", Load(input, Bytes("00x16 88130000 00000000 00 FFFFFFFFFFFF 0000 0000")));  // no file names
  EXPECT_EQ(Hex(Stored(CInputConfig())), Hex(Stored(input)));
}

TEST(StoredForm, NamesLogsOfTheFirstVersionByTime) {
  COutputConfig output = Output();
  EXPECT_EQ(Hex(kOutput1002), Hex(Stored(output, 1002)));
  EXPECT_EQ("k", output.m_nameVariable);
  EXPECT_EQ("", Load(output, kOutput1002, 1002));
  EXPECT_EQ("System Time", output.m_nameVariable);
  EXPECT_EQ("", output.m_prefix);
  EXPECT_EQ(0, output.m_dwordName | output.m_usePrefix);
}

TEST(StoredForm, LeavesOutWhatIsOfThisRunAlone) {
  CPlcMultiConfig plcWrite = PlcWrite();
  plcWrite.m_nodeNumber = 7;
  plcWrite.m_disableWriting = 1;
  EXPECT_EQ(Hex(kPlcWrite), Hex(Stored(plcWrite)));
  EXPECT_EQ(0u, plcWrite.m_nodeNumber);
  plcWrite.m_nodeNumber = 7;
  plcWrite.m_nodes.GetHead()->m_node.m_driver.value5 = 5;
  EXPECT_EQ("", Load(plcWrite, kPlcWrite));
  EXPECT_EQ(0u, plcWrite.m_nodeNumber);
  EXPECT_EQ(1, plcWrite.m_disableWriting);
  EXPECT_EQ(0, plcWrite.m_nodes.GetHead()->m_node.m_driver.value5);

  plcWrite.m_nodeNumber = 7;
  plcWrite.Clear();
  EXPECT_EQ(7u, plcWrite.m_nodeNumber);
  EXPECT_EQ(0, plcWrite.m_disableWriting);
  EXPECT_TRUE(plcWrite.m_nodes.IsEmpty());

  CPlcNodeConfig node = NodeA();
  EXPECT_EQ("", Load(node, kNodeB));
  EXPECT_EQ(15, node.m_driver.value5);
}

TEST(StoredForm, CopiesHaveObjectsOfTheirOwn) {
  CInputConfig input = Input();
  CInputConfig copy = input;
  input.m_plcNodes.GetHead()->m_nodeName = "C";
  input.Clear();
  EXPECT_EQ(Hex(kInput), Hex(Stored(copy)));
  copy = *&copy;
  EXPECT_EQ(Hex(kInput), Hex(Stored(copy)));
}

TEST(StoredForm, EnableEquationsHaveNoVersion) {
  CEnableConfig enable;
  enable.m_equations.Add("e");
  CMemFile file;
  CArchive ar(&file, CArchive::store);
  enable.Serialize(ar);
  ar.Close();
  EXPECT_EQ(Hex(Bytes("0100 01'e'")), Hex(file.Bytes()));
}

}  // namespace
}  // namespace vastra
