// What the form of a driver module shows and accepts, without a window. Nothing in a form is believed before
// it is looked at, but that a pointer which is not null leads to as much as the counts beside it say.
#pragma once

#include <vector>

#include "vastra/platform/array.h"
#include "vastra/plc/driver_api.h"

namespace vastra {

// One field as the dialog has it.
struct CFormRow {
  int field;     // its index in the form
  int kind;      // driverField...
  CString name;  // no other row has it
  CString help;
  int low, high;         // of a number
  CStringArray choices;  // what is shown of them
  int longest;           // bytes that a text may have
  // What the user works on: the text of an edit, also of a number; the index of a choice, -1 for none.
  CString text;
  int choice;
};

constexpr int kMostFields = 40;

// Whether there is a form to be shown.
bool IsShowable(const DriverForm* form);
CString FormTitle(const DriverForm& form);
// The fields that can be edited. The others keep what they have.
std::vector<CFormRow> RowsOf(const DriverForm& form);
// What is shown while the field has the focus: its help, and the bounds of a number.
CString HelpOf(const CFormRow& row);
// Why row cannot be accepted; empty: it can.
CString RowFault(const CFormRow& row);
// What the module's check says of rows, of which none has a fault; empty: it agrees. The form stays as it is.
CString CheckFault(const DriverForm& form, const std::vector<CFormRow>& rows);
// Puts rows, of which none has a fault, into the fields of the form.
void StoreRows(const DriverForm& form, const std::vector<CFormRow>& rows);

}  // namespace vastra
