#include "vastra/platform/module.h"

#include <dlfcn.h>
#include <unistd.h>

#include <climits>

namespace vastra {

HMODULE LoadModule(const CString& path, CString* reason) {
  HMODULE module = ::dlopen(path, RTLD_NOW | RTLD_LOCAL);
  if (!module && reason) *reason = ::dlerror();
  return module;
}

void* FindExport(HMODULE module, const char* name) { return ::dlsym(module, name); }

void FreeModule(HMODULE module) {
  if (module) ::dlclose(module);
}

CString ExecutablePath() {
  char path[PATH_MAX];
  const ssize_t length = ::readlink("/proc/self/exe", path, sizeof path);
  return length > 0 ? CString(path, static_cast<std::size_t>(length)) : CString();
}

}  // namespace vastra
