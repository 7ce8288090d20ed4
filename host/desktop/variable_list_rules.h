// The variables of a new logger, as the assistant shows them: one row for each value of the device. What may
// be in a row, the list of Modbus registers that it makes, and the import of a list.
#pragma once

#include <optional>
#include <vector>

#include "vastra/platform/string.h"

namespace vastra {

// What the user has typed. Only Modbus has registers, types and orders.
struct CVariableRow {
  CString name = {};
  CString address = {};  // as in the driver's list, "h0", or on paper, "40001"
  CString type = {};     // of the register; empty: u16, or a bit
  CString order = {};    // of its bytes; empty: abcd
  CString scale = "1";
  CString unit = {}, comment = {};

  bool operator==(const CVariableRow&) const = default;
};

// The columns of the table and of a list that is imported.
struct CVariableColumn {
  const char* title;
  const char* other;  // another title in a list; null: none
  CString CVariableRow::*text;
  bool isRegister = false;
};
inline constexpr CVariableColumn kVariableColumns[] = {
    {"Name", "Variable", &CVariableRow::name},         {"Register", "Address", &CVariableRow::address, true},
    {"Type", nullptr, &CVariableRow::type, true},      {"Order", nullptr, &CVariableRow::order, true},
    {"Scale", "Factor", &CVariableRow::scale},         {"Unit", nullptr, &CVariableRow::unit},
    {"Comment", "Description", &CVariableRow::comment}};

inline constexpr const char* kRegisterTypes[] = {"", "u16", "i16", "u32", "i32", "f32", "f64"};
inline constexpr const char* kRegisterOrders[] = {"", "abcd", "cdab", "badc", "dcba"};

constexpr int kMostVariables = 2000;  // of the assistant
inline constexpr const char* kTooMany = "The assistant has 2000 variables at most.";

// How the values of the device are addressed.
struct CRegisterUse {
  bool isUsed = false;  // by registers
  int added = 0;        // to each address: numbers of paper do not need it
};

// What is wrong in the rows, with the number of the row or "Name, row 3"; empty: nothing.
CString RowsFault(const std::vector<CVariableRow>& rows, const CRegisterUse& registers);
// The scale of a row without a fault.
float ScaleOf(const CVariableRow& row);

// The values of rows without faults as the driver wants them, such as "h0 x 2: i16, h10: f32 cdab".
CString RegisterList(const std::vector<CVariableRow>& rows, const CRegisterUse& registers);
// The rows of such a list, one too many at most. One that is in former, with its address and type, keeps its
// name and notes.
std::vector<CVariableRow> RowsOfRegisters(const CString& list, std::vector<CVariableRow> former,
                                          const CRegisterUse& registers);

// A list as text: one variable in each line, cells between commas, semicolons or tabs, quoted if they contain
// one. The first line can have the titles of the columns; without it the cells are in the order of the table.
struct CImportedRows {
  std::vector<CVariableRow> rows;
  std::vector<CString> faults;   // a line each, with the number of the line; then the list is not used
  std::vector<CString> leftOut;  // titles of columns that the table does not have
};
CImportedRows ImportRows(const CString& text, const CRegisterUse& registers);

// Adds the rows of a list to those of the table: each in place of the row of its name, or after the last one.
// Returns how many rows were replaced; none, and rows does not change, if there would be too many.
std::optional<std::size_t> MergeRows(const std::vector<CVariableRow>& list, std::vector<CVariableRow>& rows);

}  // namespace vastra
