// Loads driver modules; finds the path of the host's executable.
#pragma once

#include "vastra/platform/string.h"

namespace vastra {

using HMODULE = void*;

// Loads the module at path, a full path. Each call for the same module adds one reference. On failure returns
// null and sets *reason, if given, to the loader's message.
VASTRA_API HMODULE LoadModule(const CString& path, CString* reason = nullptr);
// The address of an exported function, or null.
VASTRA_API void* FindExport(HMODULE module, const char* name);
// Releases one reference; the last one unloads the module. Does nothing for null.
VASTRA_API void FreeModule(HMODULE module);

// The full path of the running executable; empty if the system does not provide it.
VASTRA_API CString ExecutablePath();

}  // namespace vastra
