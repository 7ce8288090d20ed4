#include "host/common/demo.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "host/common/json_text.h"
#include "vastra/platform/file_system.h"
#include "vastra/platform/save_file.h"

namespace vastra {
namespace {

// Of the outputs and summaries, in the folder of the configuration.
constexpr const char* kFolders[] = {"all", "batches", "means"};

std::string ReadBytes(const CString& path) {
  std::ifstream file(path.Std(), std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace

const char* const kDemoConfiguration = R"({
  "version": 1003,
  "input": {
    "scanPeriod": 25,
    "plcNodes": [
      { "nodeName": "Kiln",
        "driver": { "plcType": 9001, "text1": "sine,noise,ramp", "value1": 2000, "value3": 7 },
        "varNames": ["Heat", "Draft", "Feed"], "absent": "nan", "aliveVar": "KilnAlive",
        "scaler": [ { "varName": "Feed", "scale": 12.5, "clamping": 1, "lowLimit": 0, "highLimit": 10 } ] },
      { "nodeName": "Line",
        "driver": { "plcType": 9001, "text1": "counter,square", "value1": 1000 },
        "varNames": ["Items", "Gate"], "absent": "nan", "aliveVar": "LineAlive" },
      { "nodeName": "Panel",
        "driver": { "plcType": 9001, "station": 1 },
        "varNames": ["ShownTemp", "Lamp"], "absent": "nan", "aliveVar": "PanelAlive" }
    ],
    "preprocess": 1,
    "preEquationText": "/* degrees */ Temp = 850 + 40 * Heat; /* without the kiln the mean stays */ n = n + KilnAlive; TempMean = KilnAlive == 0 ? TempMean : (n == 1 ? Temp : TempMean + (Temp - TempMean) / 10); /* twenty items are a batch, which stays without the line */ Batch = LineAlive == 0 ? Batch : 1 + (Items - 1 - (Items - 1) % 20) / 20; /* the computer that writes to the panel */ ComputerNode = 0;",
    "preNewVars": ["Temp", "TempMean", "Draft", "Feed", "Items", "Gate", "Batch", "ShownTemp", "Lamp", "ComputerNode", "Heat", "KilnAlive", "LineAlive", "PanelAlive"]
  },
  "outputs": [
    { "name": "All variables, named by time",
      "enableText": "WriteToLog = 1;",
      "varNames": ["Temp", "TempMean", "Draft", "Feed", "Items", "Gate", "Batch", "ShownTemp", "Lamp"],
      "saveRp": 1, "saveCsv": 1, "maxLogs": 20, "maxSamples": 50,
      "directory": "all", "nameVariable": "System Time" },
    { "name": "A log for each batch, named by its number",
      "enableText": "RestartLog = (Last > 0) && (Batch != Last); Last = Batch; WriteToLog = 1;",
      "varNames": ["Batch", "Items", "Temp", "TempMean"],
      "saveRp": 1, "saveCsv": 1, "maxLogs": 20, "maxSamples": 1000,
      "directory": "batches", "nameVariable": "Batch", "usePrefix": 1, "prefix": "Batch" }
  ],
  "summaries": [
    { "name": "Ten samples a row",
      "enableText": "n = n + KilnAlive; SampleIsValid = KilnAlive; WriteToSummary = KilnAlive * (n % 10 == 0);",
      "summaryText": "Count = Count == 10 ? 1 : Count + 1; Sum = (Count == 1 ? 0 : Sum) + Temp; Mean = Sum / Count; Highest = (Count == 1) || (Temp > Highest) ? Temp : Highest;",
      "varNames": ["Batch", "Mean", "Highest"],
      "saveRp": 1, "saveCsv": 1, "maxSummaries": 20, "maxSamples": 100, "directory": "means" }
  ],
  "smart": {
    "equationText": "Hot = TempMean > 860;",
    "inputVars": ["TempMean", "Hot"],
    "outputVars": ["SetPoint"]
  },
  "plcWrite": {
    "nodes": [
      { "nodeName": "Panel",
        "driver": { "plcType": 9001, "station": 1 },
        "varNames": ["TempMean", "Gate"] }
    ]
  },
  "trend": {
    "equationText": "Deviation = Temp - TempMean;",
    "calculateExtra": 1, "extraVars": ["Deviation"]
  }
}
)";

namespace {

// The path of a device as a string of JSON comes in the place of HOST.
constexpr const char* kModbusConfiguration = R"({
  "version": 1003,
  "input": {
    "scanPeriod": 1000,
    "plcNodes": [
      { "nodeName": "Device",
        "driver": { "plcType": 9002, "text1": HOST, "station": 1, "text2": "h0, h1" },
        "varNames": ["Register0", "Register1"], "absent": "nan", "aliveVar": "DeviceAlive" }
    ]
  },
  "outputs": [
    { "name": "All variables, named by time",
      "enableText": "WriteToLog = 1;",
      "varNames": ["Register0", "Register1", "DeviceAlive"],
      "saveRp": 1, "saveCsv": 1, "maxLogs": 1000, "maxSamples": 3600, "minFree": 1000000000,
      "directory": "all", "nameVariable": "System Time" }
  ]
}
)";

std::string Replaced(std::string text, const std::string& what, const std::string& with) {
  return text.replace(text.find(what), what.size(), with);
}

}  // namespace

std::string ExampleConfiguration(const CString& host) {
  if (host.IsEmpty()) return Replaced(kDemoConfiguration, "\"scanPeriod\": 25,", "\"scanPeriod\": 1000,");
  return Replaced(kModbusConfiguration, "HOST", CJson(host.Std()).dump());
}

CString WriteNewFile(const CString& path, const std::string& text) {
  constexpr mode_t kReadableMode = 0644;
  const int file = ::open(path, O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, kReadableMode);
  if (file < 0) return std::strerror(errno);
  const ssize_t written = ::write(file, text.data(), text.size());
  const int error = written < 0 ? errno : written == static_cast<ssize_t>(text.size()) ? 0 : ENOSPC;
  if (::close(file) == 0 && error == 0) return {};
  ::unlink(path);
  return std::strerror(error == 0 ? EIO : error);
}

CString MakeDemoFolders(const CString& folder) {
  for (const char* each : kFolders) {
    std::error_code failed;
    std::filesystem::create_directories(JoinPath(folder, each).Std(), failed);
    if (failed) return CString(failed.message());
  }
  return {};
}

// A file that the user has changed is not overwritten.
CString SaveDemo(const CString& path, bool& isChanged) {
  isChanged = false;
  if (FileExists(path)) {
    isChanged = ReadBytes(path) != kDemoConfiguration;
    return {};
  }
  try {
    SaveFile(path, [](CFile& to) { to.Write(kDemoConfiguration, std::strlen(kDemoConfiguration)); });
    return {};
  } catch (const CFileException& fault) {
    return fault.Text();
  }
}

}  // namespace vastra
