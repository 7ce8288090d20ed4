// Dialogs that choose files, folders and colours. A host with windows installs a chooser; without one every
// dialog counts as cancelled.
#pragma once

#include "vastra/platform/array.h"

namespace vastra {

struct CFileQuestion {
  bool save = false;         // false: to open
  CString defaultExtension;  // added to a name typed without one
  CString name;              // in the name field when the dialog opens
  CString filter;            // "Text Files (*.txt)|*.txt|All Files (*.*)|*.*||"
  bool asksToOverwrite = false;
  bool mustExist = false;  // to open: the chooser refuses a file that does not exist
};

class VASTRA_API CChooser {
 public:
  virtual ~CChooser() = default;
  // Returns 1 and sets path to the full path, or returns 0 if the user cancels. Only from the application's
  // thread.
  virtual int ChooseFile(const CFileQuestion& question, CString& path) = 0;
  // The same for several files, in the chooser's order.
  virtual int ChooseFiles(const CFileQuestion& question, CStringArray& paths) = 0;
  virtual int ChooseFolder(CString& path) = 0;     // in: the folder to begin in; a relative one: see StartIn
  virtual int ChooseColour(COLORREF& colour) = 0;  // in: the present colour
  // Files are searched in folder, an absolute path, until one is chosen elsewhere; relative paths begin
  // there.
  virtual void StartIn(const CString& /*folder*/) {}
};

// Installs chooser, which the caller keeps; null installs the default. Returns the previous chooser, null for
// the default.
VASTRA_API CChooser* SetChooser(CChooser* chooser);

// Ask the installed chooser.
VASTRA_API int ChooseFile(const CFileQuestion& question, CString& path);
VASTRA_API int ChooseFiles(const CFileQuestion& question, CStringArray& paths);
VASTRA_API int ChooseFolder(CString& path);
VASTRA_API int ChooseColour(COLORREF& colour);
VASTRA_API void StartChoosersIn(const CString& folder);

}  // namespace vastra
