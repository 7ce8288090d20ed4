// A small logger for the tests of loop and run: the simulator counts x, one output logs it in a folder of the
// test's own.
#pragma once

#include <gtest/gtest.h>

#include <cstring>

#include "host/common/configuration_file.h"
#include "host/run/run_messenger.h"
#include "tests/support/files.h"
#include "vastra/core/link.h"
#include "vastra/platform/file_system.h"

namespace vastra {

class CLoggerTest : public testing::Test {
 protected:
  CLoggerTest() {
    m_messenger.SetFilters(0, 0, 0, 0, 0);
    CLink::SetMessenger(&m_messenger);
  }
  ~CLoggerTest() override { CLink::SetMessenger(nullptr); }

  // more goes behind the outputs. driver and output have keys that are set in those objects.
  CConfiguration Logger(const std::string& more = "", std::string driver = "",
                        std::string output = "") const {
    if (driver.find("text1") == std::string::npos) driver = R"("text1": "counter")" + Behind(driver);
    if (output.find("varNames") == std::string::npos) output = R"("varNames": ["x"])" + Behind(output);
    CConfiguration configuration;
    EXPECT_EQ(ParseConfiguration(R"({"input": {"plcNodes": [{"driver": {"plcType": 9001, )" + driver +
                                     R"(}, "varNames": ["x"]}]}, "outputs": [{"name": "All",
"enableText": "WriteToLog = 1;", "saveCsv": 1, "directory": ".", )" +
                                     output + "}]" + more + "}",
                                 m_dir.Path(), configuration),
              "");
    return configuration;
  }

  // The rows of all logs; the logs are removed.
  std::size_t LoggedRows() const {
    std::size_t rows = 0;
    for (const CFileEntry& file : ListFiles(m_dir.Path(), ".csv")) {
      const CString path = JoinPath(m_dir.Path(), file.m_name);
      const std::string text = ReadBytes(path);
      rows += static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')) - 1;
      DeleteFile(path);
    }
    return rows;
  }

  CRunMessenger m_messenger;
  CTempDir m_dir;

 private:
  static std::string Behind(const std::string& keys) { return keys.empty() ? "" : ", " + keys; }
};

}  // namespace vastra
