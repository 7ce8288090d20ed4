#include "host/cli/history/sqlite_library.h"

#include <dlfcn.h>

namespace vastra {
namespace {

constexpr const char* kLibrary = "libsqlite3.so.0";

template <class TFunction>
bool Find(void* library, const char* name, TFunction& function) {
  function = reinterpret_cast<TFunction>(::dlsym(library, name));
  return function != nullptr;
}

bool FindAll(void* library, CSqliteLibrary& functions) {
  return Find(library, "sqlite3_open_v2", functions.open) &&
         Find(library, "sqlite3_close", functions.close) &&
         Find(library, "sqlite3_exec", functions.execute) &&
         Find(library, "sqlite3_prepare_v2", functions.prepare) &&
         Find(library, "sqlite3_bind_double", functions.bindDouble) &&
         Find(library, "sqlite3_bind_null", functions.bindNull) &&
         Find(library, "sqlite3_bind_text", functions.bindText) &&
         Find(library, "sqlite3_step", functions.step) && Find(library, "sqlite3_reset", functions.reset) &&
         Find(library, "sqlite3_finalize", functions.finalize) &&
         Find(library, "sqlite3_errmsg", functions.message) &&
         Find(library, "sqlite3_system_errno", functions.systemError);
}

}  // namespace

const CSqliteLibrary* CSqliteLibrary::Load(CString& fault) {
  static CSqliteLibrary functions;
  if (functions.systemError) return &functions;
  void* const library = ::dlopen(kLibrary, RTLD_NOW | RTLD_LOCAL);
  if (library && FindAll(library, functions)) return &functions;
  const char* const reason = library ? "it is too old" : ::dlerror();
  fault =
      "sqlite needs the library " + CString(kLibrary) + " (package libsqlite3-0): " + (reason ? reason : "");
  return nullptr;
}

}  // namespace vastra
