// Choosers of files, folders and colours. A host with a window system installs one; without it every question
// counts as cancelled.
#pragma once

#include "vastra/platform/array.h"

namespace vastra {

struct CFileQuestion {
  bool save = false;         // false: for opening
  CString defaultExtension;  // added to a name typed without one
  CString name;              // that the user finds typed in
  CString filter;            // "Text Files (*.txt)|*.txt|All Files (*.*)|*.*||"
  bool asksToOverwrite = false;
  bool mustExist = false;  // for opening: a file that does not exist is refused by the chooser
};

class VASTRA_API CChooser {
 public:
  virtual ~CChooser() = default;
  // 1 and the full path, or 0 if the user cancelled. Only from the application's thread.
  virtual int ChooseFile(const CFileQuestion& question, CString& path) = 0;
  // The same for several files, in the order that the chooser gives.
  virtual int ChooseFiles(const CFileQuestion& question, CStringArray& paths) = 0;
  virtual int ChooseFolder(CString& path) = 0;     // in: where to begin
  virtual int ChooseColour(COLORREF& colour) = 0;  // in: the present one
};

// Installs chooser, which stays the caller's; null brings the default back. Gives what was installed, null
// for the default.
VASTRA_API CChooser* SetChooser(CChooser* chooser);

// Ask the installed chooser.
VASTRA_API int ChooseFile(const CFileQuestion& question, CString& path);
VASTRA_API int ChooseFiles(const CFileQuestion& question, CStringArray& paths);
VASTRA_API int ChooseFolder(CString& path);
VASTRA_API int ChooseColour(COLORREF& colour);

}  // namespace vastra
