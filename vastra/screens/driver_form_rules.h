// Which rows the dialog of a driver module's form shows and which values it accepts; CDriverFormDlg calls it.
// Validates every field of the form. Only the buffer sizes and counts stated by the module are trusted.
#pragma once

#include <vector>

#include "vastra/platform/array.h"
#include "vastra/plc/driver_api.h"

namespace vastra {

// One field of the form in the dialog.
struct CFormRow {
  int field;     // index in the form
  int kind;      // driverField...
  CString name;  // unique among the rows
  CString help;
  int low, high;         // of a number
  CStringArray choices;  // as shown
  int longest;           // of a text, in bytes
  // What the user edits: the content of the edit, also for a number; the index of the choice, -1 for none.
  CString text;
  int choice;
};

constexpr int kMostFields = 40;

// False: form is null or its fields are missing or too many.
bool IsShowable(const DriverForm* form);
CString FormTitle(const DriverForm& form);
// A row for each field that can be edited. The other fields keep their values.
std::vector<CFormRow> RowsOf(const DriverForm& form);
// The setting that a help text of a driver is about, as a configuration calls it: "text2" of "text2: one
// value for each variable". Empty: the help does not begin with one.
VASTRA_API CString SettingOf(const CString& help);
// The help text of the row, without the name of the setting, and with the bounds of a number.
CString HelpOf(const CFormRow& row);
// Why the row's value is refused; empty: it is valid.
CString RowFault(const CFormRow& row);
// Passes rows without faults to the module's check. Returns its error message; empty: accepted. The form does
// not change.
CString CheckFault(const DriverForm& form, const std::vector<CFormRow>& rows);
// Writes rows without faults to the fields of the form.
void StoreRows(const DriverForm& form, const std::vector<CFormRow>& rows);

}  // namespace vastra
