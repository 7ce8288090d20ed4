// Arbitrary bytes as the line of a reader of the feed. If it is accepted, what it asks for is within the
// limits; otherwise there is one line of error, which the feed can send.
#include <cstdlib>

#include "host/common/json_text.h"
#include "host/feed/feed_content.h"
#include "host/feed/feed_request.h"

namespace vastra {
namespace {

void Require(bool holds) {
  if (!holds) std::abort();
}

void Check(std::string_view line) try {
  const CFeedRequest request = ParseFeedRequest(line);
  Require((request.wants & ~unsigned{CFeedRequest::all}) == 0);
  Require(request.interval >= CFeedRequest::kShortest && request.interval <= CFeedRequest::kLongest);
  Require(!request.variables || request.variables->size() < line.size());
} catch (const CJsonFault& fault) {
  Require(fault.Text().Find('\n') < 0);
  const std::string error = ErrorLine(fault.Text());
  Require(error.find('\n') == error.size() - 1 && ParseJson(error)["type"] == "error");
}

}  // namespace
}  // namespace vastra

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  vastra::Check({reinterpret_cast<const char*>(data), size});
  return 0;
}
