#include "vastra/core/console_sink.h"

namespace vastra {
namespace {
CConsoleSink* g_sink = nullptr;
}

CConsoleSink* SetConsoleSink(CConsoleSink* sink) { return std::exchange(g_sink, sink); }

int WriteToConsole(UINT id, const CString& text, COLORREF colour, DWORD reserved) {
  return g_sink ? g_sink->Write(id, text, colour, reserved) : 0;
}

}  // namespace vastra
