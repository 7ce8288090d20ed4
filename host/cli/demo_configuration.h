// The configuration of vastra demo, in the form in which it is written for the user too.
#pragma once

namespace vastra {

// Folders of its outputs, beside the configuration.
constexpr const char* kDemoFolders[] = {"all", "batches"};

constexpr const char* kDemoConfiguration = R"({
  "version": 1003,
  "input": {
    "scanPeriod": 25,
    "plcNodes": [
      { "nodeName": "Kiln",
        "driver": { "plcType": 9001, "text1": "sine,noise,ramp", "value1": 2000, "value3": 7 },
        "varNames": ["Heat", "Draft", "Feed"],
        "scaler": [ { "varName": "Feed", "scale": 12.5, "clamping": 1, "lowLimit": 0, "highLimit": 10 } ] },
      { "nodeName": "Line",
        "driver": { "plcType": 9001, "text1": "counter,square", "value1": 1000 },
        "varNames": ["Items", "Gate"] }
    ],
    "preprocess": 1,
    "preEquationText": "/* degrees */ Temp = 850 + 40 * Heat; n = n + 1; TempMean = n == 1 ? Temp : TempMean + (Temp - TempMean) / 10; /* twenty items are a batch */ Batch = 1 + (Items - 1 - (Items - 1) % 20) / 20;",
    "preNewVars": ["Temp", "TempMean", "Draft", "Feed", "Items", "Gate", "Batch"]
  },
  "outputs": [
    { "name": "All variables, named by time",
      "enableText": "WriteToLog = 1;",
      "varNames": ["Temp", "TempMean", "Draft", "Feed", "Items", "Gate", "Batch"],
      "saveRp": 1, "saveCsv": 1, "maxLogs": 20, "maxSamples": 50,
      "directory": "all", "nameVariable": "System Time" },
    { "name": "A log for each batch, named by its number",
      "enableText": "RestartLog = (Last > 0) && (Batch != Last); Last = Batch; WriteToLog = 1;",
      "varNames": ["Batch", "Items", "Temp", "TempMean"],
      "saveRp": 1, "saveCsv": 1, "maxLogs": 20, "maxSamples": 1000,
      "directory": "batches", "nameVariable": "Batch", "usePrefix": 1, "prefix": "Batch" }
  ]
}
)";

}  // namespace vastra
