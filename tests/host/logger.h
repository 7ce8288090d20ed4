// For the tests of loop and run, a small logger: the simulator counts x, one output logs it in a folder of
// the test's own. For all hosts, the rows of its logs.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "host/common/configuration_file.h"
#include "host/run/run_messenger.h"
#include "tests/support/files.h"
#include "vastra/core/link.h"

namespace vastra {

// The rows of all text logs in folder.
inline std::uint64_t Rows(const CString& folder) {
  std::uint64_t rows = 0;
  for (const auto& entry : std::filesystem::directory_iterator(folder.Std())) {
    if (entry.path().extension() != ".csv") continue;
    const std::string text = ReadBytes(CString(entry.path().string()));
    rows += static_cast<std::uint64_t>(std::ranges::count(text, '\n')) - 1;
  }
  return rows;
}

class CLoggerTest : public testing::Test {
 protected:
  CLoggerTest() {
    m_messenger.SetFilters(0, 0, 0, 0, 0);
    CLink::SetMessenger(&m_messenger);
  }
  ~CLoggerTest() override { CLink::SetMessenger(nullptr); }

  // The parameters have the settings that differ, of all, of the driver and of the output.
  CConfiguration Logger(const std::string& all = "{}", const char* driver = "{}",
                        const char* output = "{}") const {
    using nlohmann::json;
    json tree = json::parse(R"({
"input": {"asFastAsPossible": 1, "plcNodes": [{"driver": {"plcType": 9001, "text1": "counter"}, "varNames": ["x"]}]},
"outputs": [{"name": "All", "enableText": "WriteToLog = 1;", "varNames": ["x"], "saveCsv": 1, "directory": "."}]})");
    tree["input"]["plcNodes"][0]["driver"].merge_patch(json::parse(driver));
    tree["outputs"][0].merge_patch(json::parse(output));
    tree.merge_patch(json::parse(all));
    CConfiguration configuration;
    EXPECT_EQ(ParseConfiguration(tree.dump(), m_dir.Path(), configuration), "");
    return configuration;
  }

  CRunMessenger m_messenger;
  CTempDir m_dir;
};

}  // namespace vastra
