// The destination of finished message lines. The console windows install themselves here; without a sink,
// lines are lost.
#pragma once

#include "vastra/platform/string.h"

namespace vastra {

class VASTRA_API CConsoleSink {
 public:
  virtual ~CConsoleSink() = default;
  // Shows one line, without a line end, in console window id. Called from any thread. Returns 1, or 0 if
  // there is no such window and the line is lost. reserved is 0 and unused.
  virtual int Write(UINT id, const CString& text, COLORREF colour, DWORD reserved) = 0;
};

// Installs sink, which the caller keeps; with null, lines are lost. Returns the previous sink or null. Must
// not be called while worker threads run.
VASTRA_API CConsoleSink* SetConsoleSink(CConsoleSink* sink);

// Passes a line to the installed sink. Returns its result, or 0 without a sink.
VASTRA_API int WriteToConsole(UINT id, const CString& text, COLORREF colour, DWORD reserved);

}  // namespace vastra
