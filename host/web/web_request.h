// A request as the server has read it. All of it comes from outside.
#pragma once

#include "host/web/web_answer.h"

namespace vastra {

struct CWebRequest {
  static constexpr std::size_t kMostBody = 4096;

  std::string method, path;  // path: decoded
  CWebQuery query;
  std::string body;                                 // of a POST
  std::string host, origin, cookie, authorization;  // headers
  std::string fetchSite;                            // Sec-Fetch-Site
  std::string oldTag;                               // If-None-Match
  std::string encodings;                            // Accept-Encoding
  std::string viewer;                               // the address of who asks, see CWebProxies
  bool isEncrypted = false;                         // on its way to the first server

  bool IsPost() const { return method == "POST"; }
  bool IsHead() const { return method == "HEAD"; }
};

// Answers requests, from several threads at once.
class CWebHandler {
 public:
  virtual ~CWebHandler() = default;
  // Whether the answer may wait for the disk or takes long: it is made by a worker then.
  virtual bool IsSlow(const CWebRequest& request) const = 0;
  // isStopped: exists as long as the answer.
  virtual CWebAnswer Answer(const CWebRequest& request, const CWebStop& isStopped) = 0;
};

}  // namespace vastra
