#include <gtest/gtest.h>

#include "tests/config/loaded.h"
#include "vastra/config/enable_config.h"

namespace vastra {
namespace {

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

}  // namespace
}  // namespace vastra
