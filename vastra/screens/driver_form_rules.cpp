#include "vastra/screens/driver_form_rules.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <string>
#include <string_view>

#include "vastra/plc/driver_call.h"
#include "vastra/ui/number_text.h"

namespace vastra {
namespace {

// Of a DriverRecord, what a driver's form can have.
constexpr std::string_view kSettings[] = {"cardNumber",     "registerAddress", "registerAddressExt",
                                          "plcNodeAddress", "timeOut",         "station",
                                          "text1",          "text2",           "value1",
                                          "value2",         "value3",          "value4",
                                          "value5"};

constexpr int kMostChoices = 1000;
constexpr std::size_t kLongestText = 32000;  // the most that a line edit can hold
// Limits of the texts shown to the user, in bytes.
constexpr std::size_t kLongestName = 60, kLongestHelp = 500, kLongestChoice = 100;

// The first whole characters of text, longest bytes at most. text may lack a terminating zero.
CString Beginning(const char* text, std::size_t longest) {
  std::size_t length = ::strnlen(text, longest + 1);
  if (length <= longest) return CString(text, length);
  length = longest;
  while (length > 0 && IsInsideCharacter(text[length])) --length;
  return CString(text, length);
}

// A text of the driver module for the user, cut to longest bytes.
CString ShownText(const char* text, std::size_t longest) {
  if (!text) return {};
  const bool isWhole = ::strnlen(text, longest + 1) <= longest;
  return isWhole ? CString(text) : Beginning(text, longest) + "...";
}

// Bytes of the longest text that field can hold and a line edit can show; -1: the field cannot be edited.
int LongestOf(const DriverField& field) {
  if (!field.text || field.textSize == 0) return -1;
  const std::size_t longest = std::min<std::size_t>(field.textSize - 1, kLongestText);
  const bool isLonger = longest < field.textSize - 1 && ::strnlen(field.text, longest + 1) > longest;
  return isLonger ? -1 : static_cast<int>(longest);
}

bool CanEdit(const DriverField& field) {
  switch (field.kind) {
    case driverFieldNumber:
      return field.low <= field.high;
    case driverFieldText:
      return LongestOf(field) >= 0;
    case driverFieldChoice:
      return field.choices && field.choiceCount > 0 && field.choiceCount <= kMostChoices;
    default:
      return false;
  }
}

// The name of field; a number is appended if a row has that name already.
CString NameOf(const DriverField& field, const std::vector<CFormRow>& rows) {
  CString wanted = ShownText(field.name, kLongestName);
  if (wanted.IsEmpty()) wanted = "Setting";
  CString name = wanted;
  const auto hasName = [&](const CFormRow& row) { return row.name == name; };
  for (int number = 2; std::ranges::any_of(rows, hasName); ++number)
    name = wanted + CString(" (" + std::to_string(number) + ")");
  return name;
}

CFormRow RowOf(const DriverField& field, int index, const std::vector<CFormRow>& rows) {
  CFormRow row = {index,
                  field.kind,
                  NameOf(field, rows),
                  ShownText(field.help, kLongestHelp),
                  field.low,
                  field.high,
                  {},
                  0,
                  CString(),
                  -1};
  if (field.kind == driverFieldNumber) {
    row.text = CString(std::to_string(field.number));
  } else if (field.kind == driverFieldText) {
    row.longest = LongestOf(field);
    row.text = Beginning(field.text, static_cast<std::size_t>(row.longest));
  } else {
    for (int i = 0; i < field.choiceCount; ++i) row.choices.Add(ShownText(field.choices[i], kLongestChoice));
    if (field.number >= 0 && field.number < field.choiceCount) row.choice = field.number;
  }
  return row;
}

int NumberOf(const CFormRow& row) {
  if (row.kind == driverFieldChoice) return row.choice;
  std::int64_t number = 0;
  ParseWhole(row.text, row.low, row.high, number);
  return static_cast<int>(number);
}

}  // namespace

bool IsShowable(const DriverForm* form) {
  return form && form->fieldCount >= 0 && form->fieldCount <= kMostFields &&
         (form->fields || form->fieldCount == 0);
}

CString FormTitle(const DriverForm& form) {
  const CString title = ShownText(form.title, kLongestName);
  return title.IsEmpty() ? CString("Driver") : title;
}

std::vector<CFormRow> RowsOf(const DriverForm& form) {
  std::vector<CFormRow> rows;
  for (int i = 0; i < form.fieldCount; ++i)
    if (CanEdit(form.fields[i])) rows.push_back(RowOf(form.fields[i], i, rows));
  return rows;
}

CString SettingOf(const CString& help) {
  const std::string_view name = help.View().substr(0, help.View().find(": "));
  return name.size() < help.View().size() && std::ranges::find(kSettings, name) != std::end(kSettings)
             ? CString(name)
             : CString();
}

// The user sees the name of the field: that of the setting says nothing.
CString HelpOf(const CFormRow& row) {
  std::string help = row.help.Std();
  if (const CString setting = SettingOf(row.help); !setting.IsEmpty()) {
    help.erase(0, static_cast<std::size_t>(setting.GetLength()) + 2);
    if (!help.empty() && help[0] >= 'a' && help[0] <= 'z') help[0] = static_cast<char>(help[0] - 'a' + 'A');
  }
  if (row.kind != driverFieldNumber) return CString(help);
  CString bounds;
  bounds.Format("%sFrom %d to %d.", help.empty() ? "" : " ", row.low, row.high);
  return CString(help) + bounds;
}

CString RowFault(const CFormRow& row) {
  CString fault;
  std::int64_t number = 0;
  const char* name = row.name;
  if (row.kind == driverFieldNumber && !ParseWhole(row.text, row.low, row.high, number))
    fault.Format("%s: enter a whole number from %d to %d.", name, row.low, row.high);
  else if (row.kind == driverFieldChoice && row.choice < 0)
    fault.Format("%s: choose an entry of the list.", name);
  else if (row.kind == driverFieldText && row.text.GetLength() > row.longest)
    fault.Format("%s: enter at most %d bytes; the text has %d.", name, row.longest, row.text.GetLength());
  else if (row.kind == driverFieldText && row.text.Find('\0') >= 0)
    fault.Format("%s: remove the character of code 0.", name);
  return fault;
}

CString CheckFault(const DriverForm& form, const std::vector<CFormRow>& rows) {
  if (!form.check) return {};
  std::vector<DriverField> fields(form.fields, form.fields + form.fieldCount);
  std::vector<std::string> texts(rows.size());
  for (std::size_t i = 0; i < rows.size(); ++i) {
    DriverField& field = fields[static_cast<std::size_t>(rows[i].field)];
    if (rows[i].kind == driverFieldText) {
      texts[i] = rows[i].text.Std();
      field.text = texts[i].data();
      field.textSize = static_cast<unsigned>(texts[i].size()) + 1;
    } else {
      field.number = NumberOf(rows[i]);
    }
  }
  const char* words = AskDriver("The driver could not check the settings.",
                                [&] { return form.check(fields.data(), form.fieldCount, form.user); });
  return ShownText(words, kLongestHelp);
}

void StoreRows(const DriverForm& form, const std::vector<CFormRow>& rows) {
  for (const CFormRow& row : rows) {
    DriverField& field = form.fields[row.field];
    if (row.kind == driverFieldText)
      std::memcpy(field.text, row.text, static_cast<std::size_t>(row.text.GetLength()) + 1);
    else
      field.number = NumberOf(row);
  }
}

}  // namespace vastra
