// The JSON of the live side of docs/web.md, of plain values.
#pragma once

#include "host/attach/logger_status.h"
#include "host/common/json_text.h"

namespace vastra {

// The variables of a logger's samples, as its hello reports them.
struct CSampleVariables {
  std::vector<std::string> names;
  std::vector<CUnitFacts> units;
  std::vector<std::string> nodes;
  std::vector<COriginFacts> origins;  // of the nodes

  bool operator==(const CSampleVariables&) const = default;
};

// What /api/v1/loggers/NAME answers. Lists and texts are cut at a length that no real logger has.
CJson LoggerJson(const CLoggerStatus& status);
// The same of a folder of logs.
CJson FolderJson(const std::string& name);

// One object each, the same for an answer and for an event of the stream: each has the name of the logger.
std::string VariablesText(const std::string& logger, const CSampleVariables& list);
std::string SampleText(const std::string& logger, const CSampleLine& sample);
std::string MessageText(const std::string& logger, std::uint64_t number, const CMessageLine& message);
std::string LogText(const std::string& logger, const CLogLine& log);

}  // namespace vastra
