// Arbitrary bytes as the JSON form of a configuration. If they are accepted, the configuration has a JSON
// form that is accepted as the same configuration; otherwise there is one line of error.
#include <cstdlib>

#include "host/common/configuration_file.h"
#include "host/common/configuration_json.h"

namespace vastra {
namespace {

void Require(bool holds) {
  if (!holds) std::abort();
}

void Check(std::string_view text) {
  CConfiguration configuration, again;
  const CString fault = ConfigurationFromJson(text, "/", configuration);
  Require(fault.Find('\n') < 0 && fault.GetLength() < 4096);
  if (!fault.IsEmpty()) return;
  std::string json, jsonAgain;
  Require(ConfigurationToJson(configuration, json).IsEmpty());
  Require(ConfigurationFromJson(json, "/", again).IsEmpty());
  Require(StoreConfiguration(configuration) == StoreConfiguration(again));
  Require(ConfigurationToJson(again, jsonAgain).IsEmpty());
  Require(json == jsonAgain);
}

}  // namespace
}  // namespace vastra

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  vastra::Check({reinterpret_cast<const char*>(data), size});
  return 0;
}
