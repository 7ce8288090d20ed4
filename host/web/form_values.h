// What browsers and other programs send of a user: the fields of a form (application/x-www-form-urlencoded),
// and a name and password in the header Authorization (Basic).
#pragma once

#include "host/web/web_answer.h"

namespace vastra {

CWebQuery FormValues(std::string_view body);

struct CCredentials {
  std::string name, password;
};
std::optional<CCredentials> BasicCredentials(std::string_view authorization);

}  // namespace vastra
