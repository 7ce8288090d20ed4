#include <gtest/gtest.h>

#include "tests/support/configuration_bytes.h"
#include "vastra/config/enable_config.h"
#include "vastra/config/input_config.h"
#include "vastra/config/output_config.h"
#include "vastra/config/plc_write_config.h"
#include "vastra/config/smart_config.h"
#include "vastra/config/summary_config.h"
#include "vastra/config/trend_config.h"

namespace vastra {
namespace {

template <class T>
std::string Report(T&& object) {
  CMemFile file;
  CArchive ar(&file, CArchive::store);
  object.TextSerialize(ar);
  ar.Close();
  return file.Bytes();
}

template <class T>
T Loaded(const std::string& bytes) {
  T object;
  CMemFile file(bytes);
  CArchive ar(&file, CArchive::load);
  object.Serialize(ar, 1003);
  return object;
}

// With "\r\n" for each line end.
std::string Lines(std::string text) {
  for (std::size_t i = 0; (i = text.find('\n', i)) != text.npos; i += 2) text.insert(i, 1, '\r');
  return text;
}

const std::string kNodeAReport = Lines(R"(*Node Name
A

*Configuration
Card Number: 1
Register Address: 4
Register Address Ext: 5
Plc Node Address: 6
Time Out: 2
Station: 3
Plc Type: 8

*Preprocessing New Variables
v

*Scaler

Variable Name: w
Scale: 2.000000
Clamping: Yes
Low Limit: -1.000000
High Limit: 1.500000

)");

const std::string kNodeBReport = Lines(R"(*Node Name
B

*Configuration
Card Number: 0
Register Address: 0
Register Address Ext: 0
Plc Node Address: 0
Time Out: 0
Station: 0
Plc Type: 0

*Preprocessing New Variables

*Scaler

)");

const std::string kInputHead = Lines(R"([*** Input ***]

[AutoStart]
Yes

[Plc Input (No = Simulating)]
No

[Input File Names]
/a.rph


[Number of Plc Nodes]
2

[Plc Node Configurations]

)");

const std::string kInputTail = Lines(R"([Preprocessing]
Yes

[Preprocessing Equations]
y = x


[Preprocessing New Variables]
y

)");

const std::string kNewInput = Lines(R"([*** Input ***]

[AutoStart]
No

[Plc Input (No = Simulating)]
Yes

[Input File Names]

[Number of Plc Nodes]
0

[Plc Node Configurations]

[Preprocessing]
No

[Preprocessing Equations]


[Preprocessing New Variables]

)");

const std::string kOutputReport = Lines(R"([*** Output ***]

[Name]
n
[Write RP Files (Logs)]
Yes

[Write Text Files]
Yes

[Directory to write logs to]
/d

[Max number of logs to be written on directory]
3

[Max number of samples to be contained in a log]
4

[Log Variables]
v
w


[Enable Equations]
e


)");

const std::string kQuietOutput = Lines(R"([*** Output ***]

[Name]

[Write RP Files (Logs)]
No

[Write Text Files]
No

)");

const std::string kSummaryReport = Lines(R"([*** Summary ***]

[Name]
n
[Write RP Files (Logs)]
Yes

[Write Text Files]
Yes

[Directory to write summaries to]
/d

[Max number of summaries to be written on directory]
4

[Max number of samples to be contained in a summary]
3

[Summary Variables]
v


[Summary Equations]
s
t


[Enable Equations]
e


)");

const std::string kSmartReport = Lines(R"([*** Smart ***]

[Smart Input Variables]
i


[Smart Input Names]
n


[Smart Input Equations]
q


[Smart Output Variables]
o


)");

const std::string kTrendReport = Lines(R"([*** Trending ***]

[Calculate extra trend/grid variables]
Yes

[Extra Variables]
x


[Extra Variable Equations]
q



)");

TEST(Report, ListsTheseLines) {
  EXPECT_EQ(kInputHead + kNodeAReport + kNodeBReport + kInputTail, Report(Loaded<CInputConfig>(kInput)));
  EXPECT_EQ(kNewInput, Report(CInputConfig()));
  EXPECT_EQ(Lines("[*** Multiple Outputs ***]\n\n") + kOutputReport,
            Report(Loaded<CMultiOutputConfig>(kOutputs)));
  EXPECT_EQ(Lines("[*** Multiple Summaries ***]\n\n") + kSummaryReport,
            Report(Loaded<CMultiSummaryConfig>(kSummaries)));
  EXPECT_EQ(Lines("[*** Multiple Outputs to Plc***]\n\n") + kNodeAReport + kNodeBReport,
            Report(Loaded<CPlcMultiConfig>(kPlcWrite)));
  EXPECT_EQ(kSmartReport, Report(Loaded<CSmartConfig>(kSmart)));
  EXPECT_EQ(kTrendReport, Report(Loaded<CTrendConfig>(kTrend)));
  CEnableConfig enable;
  enable.m_equations.Add("e");
  EXPECT_EQ(Lines("[*** Enable ***]\n\n[Enable Equations]\ne\n\n\n"), Report(enable));
}

TEST(Report, HidesWhatIsSwitchedOff) {
  COutputConfig output = Loaded<COutputConfig>(kOutput1003);
  output.m_name = "";
  output.m_saveRp = output.m_saveCsv = 0;
  EXPECT_EQ(kQuietOutput, Report(output));
  output.m_saveCsv = 1;
  EXPECT_LT(kQuietOutput.size() + 100, Report(output).size());

  CSummaryConfig summary = Loaded<CSummaryConfig>(kSummary);
  summary.m_saveRp = summary.m_saveCsv = 0;
  EXPECT_EQ(
      kSummaryReport.substr(0, kSummaryReport.find("Yes")) + "No\r\n\r\n[Write Text Files]\r\nNo\r\n\r\n",
      Report(summary));

  CTrendConfig trend = Loaded<CTrendConfig>(kTrend);
  trend.m_calculateExtra = 0;
  EXPECT_EQ(kTrendReport.substr(0, kTrendReport.find("Yes")) + "No\r\n\r\n", Report(trend));
}

TEST(Report, PrintsAnUnsignedNumberWithASign) {
  COutputConfig output;
  output.m_saveRp = 1;
  output.m_maxLogs = 4294967295;
  EXPECT_NE(std::string::npos, Report(output).find("directory]\r\n-1\r\n\r\n"));
}

TEST(Report, IsNeverReadBack) {
  CMemFile file("[*** Input ***]\r\n");
  CArchive ar(&file, CArchive::load);
  CInputConfig input = Loaded<CInputConfig>(kInput);
  input.TextSerialize(ar);
  input.m_plcNodes.GetHead()->TextSerialize(ar);
  EXPECT_EQ(17u, ar.Remaining());
}

}  // namespace
}  // namespace vastra
