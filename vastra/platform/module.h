// Loading of modules, and the place of the host's executable.
#pragma once

#include "vastra/platform/string.h"

namespace vastra {

using HMODULE = void*;

// Loads the module at path, a full path, or takes one more hold of it. Null if it does not load; reason, if
// given, then has the loader's words.
VASTRA_API HMODULE LoadModule(const CString& path, CString* reason = nullptr);
// The address of an exported function, or null.
VASTRA_API void* FindExport(HMODULE module, const char* name);
// Gives one hold back; the last one unloads the module. Null is passed over.
VASTRA_API void FreeModule(HMODULE module);

// Full path of the running executable; empty if the system does not tell.
VASTRA_API CString ExecutablePath();

}  // namespace vastra
