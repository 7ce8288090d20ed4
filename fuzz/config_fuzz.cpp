// Arbitrary bytes as a configuration file. If they load, storing and loading again gives the same
// configuration, also through its JSON form if there is one.
#include <cstdlib>

#include "host/common/configuration_file.h"
#include "host/common/configuration_json.h"

namespace vastra {
namespace {

void Require(bool holds) {
  if (!holds) std::abort();
}

void Check(std::string bytes) {
  CConfiguration configuration;
  if (!ParseConfiguration(std::move(bytes), "/", configuration).IsEmpty()) return;
  const std::string stored = StoreConfiguration(configuration);
  CConfiguration again;
  Require(ParseConfiguration(stored, "/", again).IsEmpty());
  Require(stored == StoreConfiguration(again));
  Require(LostInFile(again).IsEmpty());
  CMemFile report;
  configuration.Report(report);

  std::string json, jsonAgain;
  if (!ConfigurationToJson(configuration, json).IsEmpty()) return;
  Require(ParseConfiguration(json, "/", again).IsEmpty());  // makes relative paths absolute
  Require(ConfigurationToJson(again, json).IsEmpty());
  CConfiguration third;
  Require(ParseConfiguration(json, "/", third).IsEmpty());
  Require(ConfigurationToJson(third, jsonAgain).IsEmpty());
  Require(json == jsonAgain);
}

}  // namespace
}  // namespace vastra

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  vastra::Check(std::string(reinterpret_cast<const char*>(data), size));
  return 0;
}
