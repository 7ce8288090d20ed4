// The stored form of the configuration objects, and their reports.
#include <gtest/gtest.h>

#include "tests/support/configuration_bytes.h"
#include "tests/support/files.h"
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
  return StoredBytes([&](CArchive& ar) { object.Serialize(ar, version); });
}

// What is wrong with bytes, or an empty string.
template <class T>
CString Load(T& object, const std::string& bytes, UINT version = 1003) try {
  const auto left = LoadBytes(bytes, [&](CArchive& ar) { object.Serialize(ar, version); });
  EXPECT_EQ(left, IsKnownVersion(version) ? 0 : bytes.size());
  return "";
} catch (const CArchiveException& fault) {
  return fault.Text();
}

template <class T>
T Loaded(const std::string& bytes) {
  T object;
  EXPECT_EQ(Load(object, bytes), "");
  return object;
}

// One object and its bytes. Which byte is which setting is what the JSON form of a configuration is compared
// with; here a load and a store are compared with each other.
struct CBlock {
  const char* name;
  UINT version;
  std::string bytes;
  // What a new object stores after a load of bytes, in hex, or what is wrong with them.
  std::string (*reload)(const std::string& bytes, UINT version);
  std::string (*storeNew)(UINT version);
};

template <class T>
CBlock Block(const char* name, UINT version, const std::string& bytes) {
  return {name, version, bytes,
          [](const std::string& from, UINT v) {
            T loaded;
            const CString fault = Load(loaded, from, v);
            return fault.IsEmpty() ? Hex(Stored(loaded, v == 1002 ? v : 1003)) : fault.Std();
          },
          [](UINT v) { return Hex(Stored(T(), v)); }};
}

const CBlock kBlocks[] = {
    Block<CPlcNodeConfig>("node", 1003, kNodeA),
    Block<CInputConfig>("input", 1003, kInput),
    Block<CInputConfig>("input, old", 1002, kInput),
    Block<CMultiOutputConfig>("outputs", 1003, kOutputs),
    Block<CMultiOutputConfig>("outputs, old", 1002, Bytes("01000000") + kOutput1002),
    Block<CMultiSummaryConfig>("summaries", 1002, kSummaries),
    Block<CPlcMultiConfig>("nodes to write", 1003, kPlcWrite),
    Block<CSmartConfig>("smart", 1002, kSmart),
    Block<CTrendConfig>("trend", 1003, kTrend),
};

const CBlock kNewBlocks[] = {
    Block<CInputConfig>("input", 1003, Bytes("00x16 88130000 00000000 00 0000 0000 0000")),
    Block<COutputConfig>("output", 1003, Bytes("00x13 90010000 A00F0000 00x12")),
    Block<CSummaryConfig>("summary", 1003, Bytes("00x15 A00F0000 90010000 00 00 00")),
    Block<CSmartConfig>("smart", 1003, Bytes("00x9")),
    Block<CTrendConfig>("trend", 1003, Bytes("00x11")),
};

constexpr const char* kEnd = "the file ends too early";
constexpr const char* kCount = "a count is larger than the rest of the file";

TEST(StoredForm, HasTheseBytesInBothDirectionsAndIsRefusedIfCutAtAnyByte) {
  for (const CBlock& block : kBlocks) {
    EXPECT_EQ(block.reload(block.bytes, block.version), Hex(block.bytes)) << block.name;
    for (std::size_t n = 0; n < block.bytes.size(); ++n) {
      const std::string fault = block.reload(block.bytes.substr(0, n), block.version);
      EXPECT_TRUE(fault == kEnd || fault == kCount) << block.name << " at " << n << ": " << fault;
    }
    for (const UINT unknown : {0u, 1001u, 1004u}) {
      EXPECT_EQ(block.storeNew(unknown), "") << block.name;
      EXPECT_EQ(block.reload(block.bytes, unknown), block.storeNew(1003)) << block.name;
    }
  }
  for (const CBlock& block : kNewBlocks) {
    EXPECT_EQ(block.storeNew(block.version), Hex(block.bytes)) << block.name;
    EXPECT_EQ(block.reload(block.bytes, block.version), Hex(block.bytes)) << block.name;
  }
  CEnableConfig enable;
  enable.m_equations.Add("e");
  EXPECT_EQ(Hex(StoredBytes([&](CArchive& ar) { enable.Serialize(ar); })), Hex(Bytes("0100 01'e'")));
}

TEST(StoredForm, RefusesACountThatTheRestCannotHold) {
  const auto input = [](const std::string& count, std::size_t rest) {
    CInputConfig fresh;
    const std::string head = Bytes("00x8 " + count + " 00000000 88130000 00000000 00");
    return Load(fresh, head + std::string(rest, '\0'));
  };
  EXPECT_EQ(input("01000000", 61 + 6), "");
  EXPECT_EQ(input("01000000", 60), kCount);
  EXPECT_EQ(input("02000000", 61 + 60), kCount);
  EXPECT_EQ(input("FFFFFFFF", 61 + 6), kCount);

  CScalerConfig scaler;
  for (const char* bytes : {"01000000 00x16", "02000000 00x33", "FFFFFFFF 00x34"})
    EXPECT_THROW(LoadBytes(Bytes(bytes), [&](CArchive& ar) { scaler.Serialize(ar); }), CArchiveException)
        << bytes;

  CMultiOutputConfig outputs;
  EXPECT_EQ(Load(outputs, Bytes("01000000 00x32")), kCount);
  EXPECT_EQ(Load(outputs, Bytes("01000000 00x23"), 1002), "");
  EXPECT_EQ(Load(outputs, Bytes("01000000 00x22"), 1002), kCount);
}

TEST(StoredForm, LoadReplacesAllButTheInputFiles) {
  CInputConfig input;
  CMultiOutputConfig outputs;
  CPlcMultiConfig plcWrite;
  for (int i = 0; i < 2; ++i)
    EXPECT_EQ(Load(input, kInput) + Load(outputs, kOutputs) + Load(plcWrite, kPlcWrite), "");
  EXPECT_EQ(input.m_inputFiles.GetCount(), 4);
  EXPECT_EQ(input.m_plcNodes.GetHead()->m_nodeName, "A") << "the file has the last node first";
  EXPECT_EQ(Hex(Stored(outputs)), Hex(kOutputs));
  EXPECT_EQ(Hex(Stored(plcWrite)), Hex(kPlcWrite));
  // A number below 1 means no objects.
  auto summaries = Loaded<CMultiSummaryConfig>(kSummaries);
  EXPECT_EQ(Load(outputs, Bytes("FFFFFFFF")) + Load(summaries, Bytes("00000080")) +
                Load(plcWrite, Bytes("00000000")),
            "");
  EXPECT_TRUE(outputs.m_outputs.IsEmpty() && summaries.m_summaries.IsEmpty() && plcWrite.m_nodes.IsEmpty());

  CInputConfig copy = input;  // with objects of its own
  const std::string bytes = Stored(input);
  input.m_plcNodes.GetHead()->m_nodeName = "C";
  input.Clear();
  copy = *&copy;
  EXPECT_EQ(Hex(Stored(copy)), Hex(bytes));
  EXPECT_EQ(Load(input, Bytes("00x16 88130000 00000000 00 FFFFFFFFFFFF 0000 0000")), "");  // no file names
  EXPECT_EQ(Hex(Stored(input)), Hex(Stored(CInputConfig())));
}

TEST(StoredForm, LogsOfTheFirstVersionAreNamedByTime) {
  auto output = Loaded<COutputConfig>(kOutput1003);
  EXPECT_EQ(Hex(Stored(output, 1002)), Hex(kOutput1002));
  EXPECT_EQ(output.m_nameVariable, "k");
  EXPECT_EQ(Load(output, kOutput1002, 1002), "");
  EXPECT_EQ(output.m_nameVariable, "System Time");
  EXPECT_EQ(output.m_prefix, "");
  EXPECT_EQ(output.m_dwordName | output.m_usePrefix, 0);
}

TEST(StoredForm, LeavesOutTheSettingsOfOneRun) {
  auto plcWrite = Loaded<CPlcMultiConfig>(kPlcWrite);
  plcWrite.m_nodeNumber = 7;
  plcWrite.m_disableWriting = 1;
  EXPECT_EQ(Stored(plcWrite, 1004), "");
  EXPECT_EQ(plcWrite.m_nodeNumber, 7u) << "changed in an unknown version";
  EXPECT_EQ(Hex(Stored(plcWrite)), Hex(kPlcWrite));
  EXPECT_EQ(std::exchange(plcWrite.m_nodeNumber, 7), 0u);
  EXPECT_EQ(Load(plcWrite, kPlcWrite), "");
  EXPECT_EQ(std::exchange(plcWrite.m_nodeNumber, 7), 0u);
  EXPECT_EQ(plcWrite.m_disableWriting, 1);
  plcWrite.Clear();
  EXPECT_EQ(plcWrite.m_nodeNumber, 7u);
  EXPECT_EQ(plcWrite.m_disableWriting, 0);
  EXPECT_TRUE(plcWrite.m_nodes.IsEmpty());

  auto node = Loaded<CPlcNodeConfig>(kNodeA);
  node.m_driver.value5 = 15;
  EXPECT_EQ(Load(node, kNodeB), "");
  EXPECT_EQ(node.m_driver.value5, 15);
}

// A swap of two keys, the same in each direction, would not change the bytes. The report has the other
// fields.
TEST(StoredForm, EachFieldOfADriverHasItsPlace) {
  const auto driver = Loaded<CPlcNodeConfig>(kNodeA).m_driver;
  EXPECT_EQ(driver.text1 + driver.text2, "tu");
  EXPECT_EQ((std::vector<std::int64_t>{driver.variableCount, driver.openState, driver.value1, driver.value2,
                                       driver.value3, driver.value4}),
            (std::vector<std::int64_t>{7, 9, 11, 12, 13, 14}));
}

template <class T>
std::string Report(T&& object) {
  return StoredBytes([&](CArchive& ar) { object.TextSerialize(ar); });
}

// A part of report.txt, with "\r\n" for each line end.
std::string Expected(const std::string& part) {
  static const std::string kAll = ReadBytes(VASTRA_REPORT);
  const std::string head = "==== " + part + "\n";
  const std::size_t begin = kAll.find(head) + head.size();
  std::string text = kAll.substr(begin, kAll.find("==== ", begin) - begin);
  for (std::size_t i = 0; (i = text.find('\n', i)) != text.npos; i += 2) text.insert(i, 1, '\r');
  return text;
}

TEST(Report, ListsTheseLines) {
  const std::string nodes = Expected("node A") + Expected("node B");
  EXPECT_EQ(Report(Loaded<CInputConfig>(kInput)), Expected("input head") + nodes + Expected("input tail"));
  EXPECT_EQ(Report(Loaded<CMultiOutputConfig>(kOutputs)),
            "[*** Multiple Outputs ***]\r\n\r\n" + Expected("output"));
  EXPECT_EQ(Report(Loaded<CMultiSummaryConfig>(kSummaries)),
            "[*** Multiple Summaries ***]\r\n\r\n" + Expected("summary"));
  EXPECT_EQ(Report(Loaded<CPlcMultiConfig>(kPlcWrite)), "[*** Multiple Outputs to Plc***]\r\n\r\n" + nodes);
  EXPECT_EQ(Report(Loaded<CSmartConfig>(kSmart)), Expected("smart"));
  EXPECT_EQ(Report(Loaded<CTrendConfig>(kTrend)), Expected("trend"));
  CEnableConfig enable;
  enable.m_equations.Add("e");
  EXPECT_EQ(Report(enable), "[*** Enable ***]\r\n\r\n[Enable Equations]\r\ne\r\n\r\n\r\n");
}

TEST(Report, HidesWhatIsSwitchedOffAndPrintsAnUnsignedNumberWithASign) {
  auto output = Loaded<COutputConfig>(kOutput1003);
  output.m_name = "";
  output.m_saveRp = output.m_saveCsv = 0;
  EXPECT_EQ(Report(output), Expected("quiet output"));
  output.m_saveCsv = 1;
  output.m_maxLogs = 4294967295;
  EXPECT_NE(Report(output).find("directory]\r\n-1\r\n\r\n"), std::string::npos);

  const auto cut = [](const std::string& report) { return report.substr(0, report.find("Yes")); };
  auto summary = Loaded<CSummaryConfig>(kSummary);
  summary.m_saveRp = summary.m_saveCsv = 0;
  EXPECT_EQ(Report(summary), cut(Expected("summary")) + "No\r\n\r\n[Write Text Files]\r\nNo\r\n\r\n");
  auto trend = Loaded<CTrendConfig>(kTrend);
  trend.m_calculateExtra = 0;
  EXPECT_EQ(Report(trend), cut(Expected("trend")) + "No\r\n\r\n");
}

TEST(Report, IsNeverReadBack) {
  const auto read = [](auto... objects) {
    return LoadBytes("[*** Input ***]\r\n", [&](CArchive& ar) { (objects.TextSerialize(ar), ...); });
  };
  EXPECT_EQ(read(CPlcNodeConfig(), CInputConfig(), COutputConfig(), CMultiOutputConfig(), CSummaryConfig()),
            17u);
  EXPECT_EQ(read(CMultiSummaryConfig(), CPlcMultiConfig(), CSmartConfig(), CTrendConfig(), CEnableConfig()),
            17u);
}

}  // namespace
}  // namespace vastra
