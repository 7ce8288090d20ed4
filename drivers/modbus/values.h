// The values of a node: the list in its settings, and the conversion between registers and floats.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace modbus {

// The four tables of a device.
struct CKind {
  char letter;  // in the list
  const char* name;
  const char* plural;
  bool isRegister;      // of 16 bits, else a single bit
  std::uint8_t read;    // the functions of the protocol; 0: there is none
  std::uint8_t write;   // of a single one
  std::uint8_t writes;  // of several
  int digit;            // the first digit of its numbers in printed lists; 0: none
};

enum class EType : std::uint8_t { bit, u16, i16, u32, i32, f32, f64 };

// The order of the bytes of a number in its registers. abcd is the order of the protocol: the high byte
// first.
struct COrder {
  bool wordsReversed;
  bool bytesSwapped;
};

struct CValue {
  const CKind* kind;
  EType type;
  COrder order;
  int address;  // of its first register or bit, on the wire: 0 to 65535
};

constexpr int kLastAddress = 65535;

// One entry of the list: count values of one kind, side by side.
struct CEntry {
  CValue first;
  int count;
};

// Reads list, `kind address [x count] [: type [order]]` with commas between, into entries. added goes to each
// address. An empty text, or what is wrong with which entry.
std::string ReadEntries(std::string_view list, int added, std::vector<CEntry>& entries);
std::int64_t CountOf(const std::vector<CEntry>& entries);
// The single values, in the order of the list.
std::vector<CValue> ValuesOf(const std::vector<CEntry>& entries);

// The number of addresses of a value.
int SizeOf(EType type);
const char* NameOf(EType type);

// The value in registers, SizeOf(type) of them as they came, each the high byte first. A number that a float
// does not hold is rounded to the nearest one, beyond the largest to infinity. Not for a bit.
float FromRegisters(const CValue& value, const std::uint8_t* registers);
// The reverse: an integer is the nearest to number. False, with registers untouched, if number does not fit
// the type.
bool ToRegisters(const CValue& value, float number, std::uint8_t* registers);

// The entry for a number of a printed list, such as "h0" for 40001; empty if no printed list has the number.
std::string OffPaper(std::int64_t number);
// Such as "holding registers 100 to 109".
std::string NameOf(const CKind& kind, int first, int count);

}  // namespace modbus
