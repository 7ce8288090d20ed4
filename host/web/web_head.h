// The head of a request, read from a connection.
#pragma once

#include "host/web/web_request.h"
#include "host/web/web_viewer.h"

struct MHD_Connection;
struct sockaddr;

namespace vastra {

// Without the port; empty for an address of no network.
std::string AddressOf(const sockaddr* address);
std::string AddressOf(MHD_Connection* connection);
int SocketOf(MHD_Connection* connection);

// Decodes %XX in place and returns the new length. %00 stays: a path ends at it.
std::size_t Unescape(char* text);

// Fills all of request but method, path and body. Returns an error if the request is refused: its body is too
// long, or it could be read in several ways. Nothing more may be read from the connection then.
std::optional<CWebAnswer> ReadHead(MHD_Connection* connection, const CWebProxies& proxies,
                                   CWebRequest& request);

}  // namespace vastra
