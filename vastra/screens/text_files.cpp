#include "vastra/screens/text_files.h"

#include "vastra/platform/chooser.h"
#include "vastra/platform/prompt.h"
#include "vastra/screens/text_list_rules.h"

namespace vastra {
namespace {

constexpr const char* kFilter = "Text Files (*.txt)|*.txt||";

// The spelling is old; users search for it, so it stays.
constexpr const char* kNotOpened = "An error ocurred when trying to open the file";
constexpr const char* kNotSaved = "An error ocurred when trying to save the file";

int Tell(const CString& title, const char* text) {
  AfxMessageBox(text, title, MB_ICONEXCLAMATION);
  return 0;
}

}  // namespace

int ImportText(const CString& title, CString& text) {
  CFileQuestion question;
  question.filter = kFilter;
  CString path;
  if (!ChooseFile(question, path)) return 0;
  return ReadTextFile(path, text) || Tell(title, kNotOpened);
}

int ExportText(const CString& title, const CString& text) {
  CFileQuestion question;
  question.save = true;
  question.defaultExtension = "txt";
  question.filter = kFilter;
  question.asksToOverwrite = true;
  CString path;
  if (!ChooseFile(question, path)) return 0;
  return WriteTextFile(path, text) || Tell(title, kNotSaved);
}

}  // namespace vastra
