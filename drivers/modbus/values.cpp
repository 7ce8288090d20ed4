#include "values.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>

#include "drivers/common/text.h"

namespace modbus {
namespace {

constexpr CKind kKinds[] = {
    {'c', "coil", "coils", false, 1, 5, 15, 0},
    {'d', "discrete input", "discrete inputs", false, 2, 0, 0, 1},
    {'i', "input register", "input registers", true, 4, 0, 0, 3},
    {'h', "holding register", "holding registers", true, 3, 6, 16, 4},
};

// Printed lists number the holding registers 40001 to 49999, or 400001 to 465536.
struct CPaper {
  int unit;  // the digit of the table comes before this many
  int count;
};
constexpr CPaper kPapers[] = {{10000, 9999}, {100000, kLastAddress + 1}};

// The types of registers, at the place of their EType.
struct CTypeRow {
  const char* name;
  int size;          // in addresses
  double low, high;  // of an integer
};
constexpr CTypeRow kTypes[] = {
    {"bit", 1, 0, 1},
    {"u16", 1, 0, 65535},
    {"i16", 1, -32768, 32767},
    {"u32", 2, 0, 4294967295.0},
    {"i32", 2, -2147483648.0, 2147483647.0},
    {"f32", 2, 0, 0},
    {"f64", 4, 0, 0},
};

struct COrderRow {
  const char* name;
  COrder order;
};
constexpr COrderRow kOrders[] = {
    {"abcd", {false, false}},
    {"cdab", {true, false}},
    {"badc", {false, true}},
    {"dcba", {true, true}},
};

const CTypeRow& RowOf(EType type) { return kTypes[static_cast<std::size_t>(type)]; }

constexpr std::string_view kDigits = "0123456789";

char Lower(char letter) { return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter + 32) : letter; }

// Reads one entry of the list from begin to end.
class CEntryReader {
 public:
  explicit CEntryReader(std::string_view text) : m_rest(text) {}

  bool IsAtEnd() {
    SkipBlanks();
    return m_rest.empty();
  }
  std::string Rest() const { return driver::Shown(m_rest); }
  // Consumes the letter if it comes next.
  bool Take(char letter) {
    if (IsAtEnd() || Lower(m_rest.front()) != letter) return false;
    m_rest.remove_prefix(1);
    return true;
  }
  // A number of up to nine digits; -1 if none comes next.
  int TakeNumber() {
    SkipBlanks();
    const std::size_t length = std::min(m_rest.find_first_not_of(kDigits), m_rest.size());
    int number = -1;
    if (length > 0 && length <= 9) {
      std::from_chars(m_rest.data(), m_rest.data() + length, number);
      m_rest.remove_prefix(length);
    }
    return number;
  }
  std::string TakeWord() {
    SkipBlanks();
    const std::size_t length = std::min(m_rest.find_first_of(" \t\r\n"), m_rest.size());
    std::string word(m_rest.substr(0, length));
    std::ranges::transform(word, word.begin(), Lower);
    m_rest.remove_prefix(length);
    return word;
  }

 private:
  void SkipBlanks() { m_rest = driver::Trimmed(m_rest); }

  std::string_view m_rest;
};

std::string ReadKind(CEntryReader& reader, CValue& value) {
  for (const CKind& kind : kKinds)
    if (reader.Take(kind.letter)) {
      value.kind = &kind;
      value.type = kind.isRegister ? EType::u16 : EType::bit;
      return {};
    }
  if (reader.IsAtEnd()) return "it is empty";
  const std::string paper = OffPaper(reader.TakeNumber());
  return "it has to begin with c (coil), d (discrete input), h (holding register) or i (input register)" +
         (paper.empty() ? "" : ", and as addresses count from 0 that is " + paper);
}

std::string ReadType(CEntryReader& reader, CValue& value) {
  if (!value.kind->isRegister) return std::string("a ") + value.kind->name + " has no type";
  const std::string name = reader.TakeWord();
  const auto type = std::ranges::find_if(kTypes + 1, std::end(kTypes),
                                         [&name](const CTypeRow& row) { return name == row.name; });
  if (type == std::end(kTypes))
    return "there is no type \"" + driver::Shown(name) + "\", only u16, i16, u32, i32, f32 and f64";
  value.type = static_cast<EType>(type - kTypes);
  if (reader.IsAtEnd()) return {};
  const std::string orderName = reader.TakeWord();
  const auto order =
      std::ranges::find_if(kOrders, [&orderName](const COrderRow& row) { return orderName == row.name; });
  if (order == std::end(kOrders))
    return "there is no order \"" + driver::Shown(orderName) + "\", only abcd, cdab, badc and dcba";
  value.order = order->order;
  return {};
}

std::string CheckAddresses(const CEntry& entry, std::int64_t typed, int added) {
  const std::int64_t first = typed + added;
  const std::int64_t last = first + std::int64_t{SizeOf(entry.first.type)} * entry.count - 1;
  if (first >= 0 && last <= kLastAddress) return {};
  return "it has the addresses " + std::to_string(first) + " to " + std::to_string(last) +
         (added ? " with registerAddress " + std::to_string(added) : std::string()) +
         ", and they go from 0 to " + std::to_string(kLastAddress);
}

std::string ReadEntry(std::string_view text, int added, CEntry& entry) {
  CEntryReader reader(text);
  if (std::string fault = ReadKind(reader, entry.first); !fault.empty()) return fault;
  const int typed = reader.TakeNumber();
  if (typed < 0) return "an address has to follow the kind, such as h100";
  if (reader.Take('x')) entry.count = reader.TakeNumber();
  if (entry.count < 1) return "a number of values has to follow the x, such as h100 x 3";
  if (reader.Take(':'))
    if (std::string fault = ReadType(reader, entry.first); !fault.empty()) return fault;
  if (!reader.IsAtEnd())
    return "\"" + reader.Rest() + "\" is extra text: a comma ends an entry such as h100 x 3: f32 cdab";
  std::string fault = CheckAddresses(entry, typed, added);
  if (fault.empty()) entry.first.address = typed + added;
  return fault;
}

// The place of a byte of a number among its size bytes on the wire; byte 0 is the highest.
int PlaceOf(int byte, int size, COrder order) {
  const int place = order.wordsReversed ? size - 2 - (byte & ~1) + (byte & 1) : byte;
  return order.bytesSwapped ? place ^ 1 : place;
}

std::uint64_t Gather(const CValue& value, const std::uint8_t* registers) {
  const int size = 2 * SizeOf(value.type);
  std::uint64_t raw = 0;
  for (int byte = 0; byte < size; ++byte) raw = raw << 8 | registers[PlaceOf(byte, size, value.order)];
  return raw;
}

void Spread(std::uint64_t raw, const CValue& value, std::uint8_t* registers) {
  const int size = 2 * SizeOf(value.type);
  for (int byte = size - 1; byte >= 0; --byte, raw >>= 8)
    registers[PlaceOf(byte, size, value.order)] = static_cast<std::uint8_t>(raw);
}

}  // namespace

std::string ReadEntries(std::string_view list, int added, std::vector<CEntry>& entries) {
  for (std::size_t start = 0, comma = 0; comma != std::string_view::npos; start = comma + 1) {
    comma = list.find(',', start);
    const std::string_view text = driver::Trimmed(list.substr(start, comma - start));
    CEntry entry = {{nullptr, EType::bit, {}, 0}, 1};
    if (const std::string fault = ReadEntry(text, added, entry); !fault.empty())
      return "entry " + std::to_string(entries.size() + 1) + ", \"" + driver::Shown(text) + "\": " + fault;
    entries.push_back(entry);
  }
  return {};
}

std::int64_t CountOf(const std::vector<CEntry>& entries) {
  std::int64_t count = 0;
  for (const CEntry& entry : entries) count += entry.count;
  return count;
}

std::vector<CValue> ValuesOf(const std::vector<CEntry>& entries) {
  std::vector<CValue> values;
  values.reserve(static_cast<std::size_t>(CountOf(entries)));
  for (const CEntry& entry : entries)
    for (int i = 0; i < entry.count; ++i) {
      values.push_back(entry.first);
      values.back().address += i * SizeOf(entry.first.type);
    }
  return values;
}

int SizeOf(EType type) { return RowOf(type).size; }

const char* NameOf(EType type) { return RowOf(type).name; }

float FromRegisters(const CValue& value, const std::uint8_t* registers) {
  const std::uint64_t raw = Gather(value, registers);
  const auto low = static_cast<std::uint32_t>(raw);
  switch (value.type) {
    case EType::i16:
      return static_cast<std::int16_t>(low);
    case EType::i32:
      return static_cast<float>(static_cast<std::int32_t>(low));
    case EType::f32:
      return std::bit_cast<float>(low);
    case EType::f64:
      return static_cast<float>(std::bit_cast<double>(raw));
    default:
      return static_cast<float>(low);
  }
}

bool ToRegisters(const CValue& value, float number, std::uint8_t* registers) {
  if (value.type == EType::f32) {
    Spread(std::bit_cast<std::uint32_t>(number), value, registers);
  } else if (value.type == EType::f64) {
    Spread(std::bit_cast<std::uint64_t>(double{number}), value, registers);
  } else {
    const double whole = std::round(double{number});
    const CTypeRow& row = RowOf(value.type);
    if (!(whole >= row.low && whole <= row.high)) return false;
    Spread(static_cast<std::uint64_t>(static_cast<std::int64_t>(whole)), value, registers);
  }
  return true;
}

std::string OffPaper(std::int64_t number) {
  for (const CKind& kind : kKinds)
    for (const CPaper& paper : kPapers) {
      const std::int64_t address = number - std::int64_t{kind.digit} * paper.unit - 1;
      if (kind.digit > 0 && address >= 0 && address < paper.count)
        return kind.letter + std::to_string(address);
    }
  return {};
}

std::string NameOf(const CKind& kind, int first, int count) {
  if (count == 1) return kind.name + (" " + std::to_string(first));
  return kind.plural + (" " + std::to_string(first)) + " to " + std::to_string(first + count - 1);
}

}  // namespace modbus
