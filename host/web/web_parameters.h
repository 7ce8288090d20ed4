// The parameters of requests as numbers, times and names. Each reader throws CWebRefusal for a wrong one.
#pragma once

#include <cstdint>

#include "host/web/web_answer.h"
#include "vastra/history/moment.h"

namespace vastra {

// Why a request gets no answer, thrown by what reads and answers it.
struct CWebRefusal {
  int status = 400;
  std::string words;
};

struct CNumberRule {
  const char* name;
  std::int64_t least, most;
  std::int64_t otherwise;  // without the parameter
};

std::int64_t ReadNumber(const CWebQuery& query, const CNumberRule& rule);

// "from" and "to". One that is missing is that of rows, the range of all rows, and then the range can be
// empty.
CMomentRange ReadRange(const CWebQuery& query, const CMomentRange& rows);

// "vars", each once, in order.
inline constexpr std::size_t kMostWebVariables = 100;
std::vector<CString> ReadVariables(const CWebQuery& query);

}  // namespace vastra
