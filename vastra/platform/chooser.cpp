#include "vastra/platform/chooser.h"

#include <utility>

namespace vastra {
namespace {

CChooser* g_chooser = nullptr;

}  // namespace

CChooser* SetChooser(CChooser* chooser) { return std::exchange(g_chooser, chooser); }

int ChooseFile(const CFileQuestion& question, CString& path) {
  return g_chooser ? g_chooser->ChooseFile(question, path) : 0;
}

int ChooseFiles(const CFileQuestion& question, CStringArray& paths) {
  return g_chooser ? g_chooser->ChooseFiles(question, paths) : 0;
}

int ChooseFolder(CString& path) { return g_chooser ? g_chooser->ChooseFolder(path) : 0; }

int ChooseColour(COLORREF& colour) { return g_chooser ? g_chooser->ChooseColour(colour) : 0; }

void StartChoosersIn(const CString& folder) {
  if (g_chooser) g_chooser->StartIn(folder);
}

}  // namespace vastra
