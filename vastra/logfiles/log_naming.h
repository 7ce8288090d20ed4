// CLogNaming: which names the logs of one output or summary can have, for a keeper of logs (log_keeper.h). It
// distinguishes the own logs of an output from other files of its folder, and finds two outputs that could
// write the same names.
#pragma once

#include <optional>

#include "vastra/platform/array.h"

namespace vastra {

enum class ELogForm { binary, text };
inline constexpr ELogForm kLogForms[] = {ELogForm::binary, ELogForm::text};

// A file that can be a log of a naming.
struct COwnLog {
  CString name;  // without the ending of its form
  ELogForm form = ELogForm::binary;
};

struct VASTRA_API CLogNaming {
  CString directory;       // of the logs
  CString prefix;          // of log names; empty if none is used
  CString nameVariable;    // source of the name of a log: "System Time" or a variable
  bool dwordName = false;  // the name also contains the variable after nameVariable
  CString extension;       // of binary logs, with the dot
  bool saveRp = false, saveCsv = false;

  bool ByTime() const;
  bool Saves(ELogForm form) const { return form == ELogForm::binary ? saveRp : saveCsv; }

  CString FileOf(const CString& name, ELogForm form) const { return name + EndingOf(form); }
  CString PathOf(const CString& name, ELogForm form) const;
  CString EndingOf(ELogForm form) const;  // of the files: ".rph" or "h.csv"
  CString Folder() const { return directory.IsEmpty() ? CString(".") : directory; }

  // Whether a log of this naming can have this name, which has no extension: the prefix, the ten digits of an
  // hour and a number, or the value of a variable (of two with dwordName) or "NoValue"; then perhaps "~" and
  // a number from 2 on.
  bool IsOwnName(const CString& name) const;
  // The log in the file with this name; none if the file cannot be a log of this naming. Includes the forms
  // that are not saved.
  std::optional<COwnLog> IsOwnFile(const CString& file) const;
};

// Whether a log of a and a log of b can have the same file: the same folder, a form that both save, and a
// name that is an own name of both.
VASTRA_API bool CanMeet(const CLogNaming& a, const CLogNaming& b);
// The same without a look at the folders.
VASTRA_API bool CanNamesMeet(const CLogNaming& a, const CLogNaming& b);

// The key of an output or summary in the names of its lock and journals: 16 hexadecimal digits, the same in
// each run. kind is "output" or "summary". The forms that are saved do not change it.
VASTRA_API CString LogKey(const CString& kind, const CString& outputName, const CLogNaming& naming);

}  // namespace vastra
