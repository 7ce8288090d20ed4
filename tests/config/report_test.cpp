#include <gtest/gtest.h>

#include "tests/config/loaded.h"
#include "tests/support/files.h"
#include "vastra/config/enable_config.h"

namespace vastra {
namespace {

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
  EXPECT_EQ(Report(CInputConfig()), Expected("new input"));
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
  auto input = Loaded<CInputConfig>(kInput);
  const auto read = [&](CArchive& ar) {
    input.TextSerialize(ar), input.m_plcNodes.GetHead()->TextSerialize(ar);
  };
  EXPECT_EQ(LoadBytes("[*** Input ***]\r\n", read), 17u);
}

}  // namespace
}  // namespace vastra
