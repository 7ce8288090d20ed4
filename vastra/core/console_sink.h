// Where finished message lines go. The console windows install themselves here; without them a line is lost.
#pragma once

#include "vastra/platform/string.h"

namespace vastra {

class VASTRA_API CConsoleSink {
 public:
  virtual ~CConsoleSink() = default;
  // Takes one line, without a line end, for console window id; from any thread. 1, or 0 if there is no such
  // window and the line is lost. reserved is 0 and nothing reads it.
  virtual int Write(UINT id, const CString& text, COLORREF colour, DWORD reserved) = 0;
};

// Installs sink, which stays the caller's; null: lines are lost. Gives what was installed, or null. Not while
// workers run.
VASTRA_API CConsoleSink* SetConsoleSink(CConsoleSink* sink);

// Hands a line to the installed sink: its result, or 0 without one.
VASTRA_API int WriteToConsole(UINT id, const CString& text, COLORREF colour, DWORD reserved);

}  // namespace vastra
