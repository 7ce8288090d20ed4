// CSqliteLibrary: the functions of libsqlite3 that an export calls. The library is loaded when the first
// table is written, so that the command runs without it.
#pragma once

#include <sqlite3.h>

#include "vastra/platform/string.h"

namespace vastra {

struct CSqliteLibrary {
  decltype(&::sqlite3_open_v2) open = nullptr;
  decltype(&::sqlite3_close) close = nullptr;
  decltype(&::sqlite3_exec) execute = nullptr;
  decltype(&::sqlite3_prepare_v2) prepare = nullptr;
  decltype(&::sqlite3_bind_double) bindDouble = nullptr;
  decltype(&::sqlite3_bind_null) bindNull = nullptr;
  decltype(&::sqlite3_bind_text) bindText = nullptr;
  decltype(&::sqlite3_step) step = nullptr;
  decltype(&::sqlite3_reset) reset = nullptr;
  decltype(&::sqlite3_finalize) finalize = nullptr;
  decltype(&::sqlite3_errmsg) message = nullptr;
  decltype(&::sqlite3_system_errno) systemError = nullptr;

  // The functions, once the library is loaded: it stays until the process ends. Null with the reason in
  // fault, and what to do.
  static const CSqliteLibrary* Load(CString& fault);
};

}  // namespace vastra
