#include "vastra/platform/prompt.h"

#include <cstdio>

namespace vastra {
namespace {
CPrompter* g_prompter = nullptr;
}

CPrompter* SetPrompter(CPrompter* prompter) { return std::exchange(g_prompter, prompter); }

int AfxMessageBox(const CString& text, UINT type) { return AfxMessageBox(text, CString(), type); }

int AfxMessageBox(const CString& text, const CString& title, UINT type) {
  if (g_prompter) return g_prompter->Show(text, title, type);
  std::fprintf(stderr, "%s\n", text.Std().c_str());
  return IDOK;
}

}  // namespace vastra
