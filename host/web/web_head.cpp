#include "host/web/web_head.h"

#include <arpa/inet.h>
#include <microhttpd.h>
#include <strings.h>
#include <sys/socket.h>

#include <charconv>
#include <cstring>

namespace vastra {
namespace {

using CPairs = CWebQuery::CPairs;

CPairs PairsOf(MHD_Connection* connection, MHD_ValueKind kind) {
  CPairs pairs;
  const auto add = [](void* to, MHD_ValueKind, const char* key, std::size_t keySize, const char* value,
                      std::size_t size) {
    static_cast<CPairs*>(to)->emplace_back(std::string(key, keySize),
                                           std::string(value ? value : "", value ? size : 0));
    return MHD_YES;
  };
  MHD_get_connection_values_n(connection, kind, add, &pairs);
  return pairs;
}

// The values of a header, joined by commas, and how often it is there.
struct CHeader {
  const char* name;
  std::string text = {};
  int count = 0;
};

enum EHeader {
  eHost,
  eLength,
  eTransfer,
  eOrigin,
  eCookie,
  eAuthorization,
  eOldTag,
  eFetchSite,
  eEncodings,
  eForwardedFor,
  eForwardedProto,
  eCount
};

struct CHeaders {
  CHeader known[eCount] = {{"Host"},
                           {"Content-Length"},
                           {"Transfer-Encoding"},
                           {"Origin"},
                           {"Cookie"},
                           {"Authorization"},
                           {"If-None-Match"},
                           {"Sec-Fetch-Site"},
                           {"Accept-Encoding"},
                           {"X-Forwarded-For"},
                           {"X-Forwarded-Proto"}};
  bool isClear = true;  // no name has blanks, which others could leave out

  void Add(const std::string& name, const std::string& value) {
    isClear = isClear && name.find_first_of(" \t") == name.npos;
    for (CHeader& header : known)
      if (::strcasecmp(header.name, name.c_str()) == 0)
        header.text.append(header.count++ > 0 ? ", " : "").append(value);
  }
};

// Another server in front of this one could see another end of such a request, or another host.
bool IsAmbiguous(const CHeaders& headers) {
  const auto& known = headers.known;
  return !headers.isClear || known[eTransfer].count > 0 || known[eHost].count > 1 || known[eLength].count > 1;
}

bool IsTooLong(const CHeader& length, bool isPost) {
  if (length.count == 0) return false;
  std::uint64_t bytes = 0;
  const char* const end = length.text.data() + length.text.size();
  const auto [rest, fault] = std::from_chars(length.text.data(), end, bytes);
  return fault != std::errc() || rest != end || bytes > (isPost ? CWebRequest::kMostBody : 0);
}

}  // namespace

std::string AddressOf(const sockaddr* address) {
  char text[INET6_ADDRSTRLEN] = "";
  if (address && address->sa_family == AF_INET)
    inet_ntop(AF_INET, &reinterpret_cast<const sockaddr_in*>(address)->sin_addr, text, sizeof text);
  else if (address && address->sa_family == AF_INET6)
    inet_ntop(AF_INET6, &reinterpret_cast<const sockaddr_in6*>(address)->sin6_addr, text, sizeof text);
  return PlainAddress(text);
}

std::string AddressOf(MHD_Connection* connection) {
  const MHD_ConnectionInfo* info = MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CLIENT_ADDRESS);
  return info ? AddressOf(info->client_addr) : "";
}

int SocketOf(MHD_Connection* connection) {
  const MHD_ConnectionInfo* info = MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD);
  return info ? info->connect_fd : -1;
}

std::size_t Unescape(char* text) {
  char* to = text;
  for (const char* from = text; *from; ++to) {
    unsigned char byte = 0;
    const bool isByte = from[0] == '%' && from[1] && from[2] &&
                        std::from_chars(from + 1, from + 3, byte, 16).ptr == from + 3 && byte != 0;
    *to = isByte ? static_cast<char>(byte) : *from;
    from += isByte ? 3 : 1;
  }
  *to = '\0';
  return static_cast<std::size_t>(to - text);
}

std::optional<CWebAnswer> ReadHead(MHD_Connection* connection, const CWebProxies& proxies,
                                   CWebRequest& request) {
  CHeaders headers;
  for (const auto& [name, value] : PairsOf(connection, MHD_HEADER_KIND)) headers.Add(name, value);
  auto& known = headers.known;
  const std::string address = AddressOf(connection);
  request.query = CWebQuery(PairsOf(connection, MHD_GET_ARGUMENT_KIND));
  request.viewer = proxies.ViewerOf(address, known[eForwardedFor].text);
  request.isEncrypted = proxies.IsEncrypted(address, known[eForwardedProto].text);
  if (IsAmbiguous(headers)) return ErrorAnswer(400, "the head of the request is not clear");
  if (IsTooLong(known[eLength], request.IsPost())) return ErrorAnswer(413, "the request is too long");
  const std::pair<std::string*, EHeader> fields[] = {
      {&request.host, eHost},           {&request.origin, eOrigin},
      {&request.cookie, eCookie},       {&request.authorization, eAuthorization},
      {&request.oldTag, eOldTag},       {&request.fetchSite, eFetchSite},
      {&request.encodings, eEncodings},
  };
  for (const auto& [field, place] : fields) *field = std::move(known[place].text);
  return std::nullopt;
}

}  // namespace vastra
