#include "host/common/json_walk.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <limits>

#include "host/common/paths.h"
#include "vastra/equations/separator.h"

namespace vastra {
namespace {

using nlohmann::json;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr std::uint64_t kMaxAmount = std::uint64_t{1} << 63;
constexpr double kFloatEnd = 0x1.ffffffp127;  // numbers from here on round to infinity

constexpr const char* kNeedsFloat = "must be a number within the range of a float";
constexpr const char* kNeedsAmount = "must be a number from 0 on";
constexpr const char* kNeedsWholeAmount = "must be a whole number from 0 to 9223372036854775808";
constexpr const char* kNeedsText = "must be a string";
constexpr const char* kNeedsTexts = "must be an array of strings";
constexpr const char* kNeedsObject = "must be an object";
constexpr const char* kNeedsObjects = "must be an array of objects";

// An empty object takes three bytes of text and some hundred bytes of memory.
constexpr std::size_t kMaxObjects = 100'000;
constexpr const char* kTooManyObjects = "has more than 100000 entries";
// A statement takes two bytes of text and some hundred bytes of memory, too.
constexpr std::ptrdiff_t kMaxStatements = 100'000;
constexpr const char* kTooManyStatements = "has more than 100000 statements";

// Floats that are not JSON numbers.
struct CSpecial {
  const char* text;
  float value;
};
constexpr CSpecial kSpecials[] = {{"inf", std::numeric_limits<float>::infinity()},
                                  {"-inf", -std::numeric_limits<float>::infinity()},
                                  {"nan", std::numeric_limits<float>::quiet_NaN()}};

const json kNoObject = json::object();
const json kNoArray = json::array();

// The double whose shortest decimal text is that of this float: it reads back to the same float.
double Shortest(float number) {
  char digits[64];
  const auto end = std::to_chars(digits, digits + sizeof digits, number);
  double shortest = 0;
  std::from_chars(digits, end.ptr, shortest);
  const bool same = std::abs(shortest) < kFloatEnd && static_cast<float>(shortest) == number;
  return same ? shortest : static_cast<double>(number);
}

}  // namespace

CJsonReader::CJsonReader(const json& root, const CString& folder)
    : CFieldWalk(Form::named, true, kAllVersions), m_root(root), m_folder(folder) {}

void CJsonReader::Push(const json& object, const CString& path) {
  if (!object.is_object()) throw CJsonFault(path, kNeedsObject);
  m_levels.push_back({&object, path, {}, 0});
}

// The value of a field, or null if the present object does not have it.
const json* CJsonReader::Find(const char* name) {
  CLevel& level = m_levels.back();
  level.m_known.push_back(name);
  const auto found = level.m_node->find(name);
  return found == level.m_node->end() ? nullptr : &*found;
}

void CJsonReader::Fail(const char* name, const CString& words) const {
  throw CJsonFault(MemberPath(m_levels.back().m_path, name), words);
}

std::int64_t CJsonReader::Whole(const char* name, const json& value, const CRange& range) const {
  const double number = value.is_number() ? value.get<double>() : kNaN;
  if (!(number >= range.low && number <= range.high) || number != std::floor(number)) Fail(name, range.words);
  return static_cast<std::int64_t>(number);
}

void CJsonReader::Field(const char* name, int& number) {
  if (const json* value = Find(name)) number = static_cast<int>(Whole(name, *value, kInt));
}

void CJsonReader::Field(const char* name, UINT& number) {
  if (const json* value = Find(name)) number = static_cast<UINT>(Whole(name, *value, kUint));
}

void CJsonReader::Flag(const char* name, int& flag) {
  const json* value = Find(name);
  if (value && value->is_boolean())
    flag = value->get<bool>();
  else if (value)
    flag = static_cast<int>(static_cast<UINT>(Whole(name, *value, kFlag)));
}

void CJsonReader::Field(const char* name, float& number) {
  const json* value = Find(name);
  if (!value) return;
  for (const CSpecial& special : kSpecials)
    if (*value == special.text) return void(number = special.value);
  const double given = value->is_number() ? value->get<double>() : kNaN;
  if (!(std::abs(given) < kFloatEnd)) Fail(name, kNeedsFloat);
  number = static_cast<float>(given);
}

CString CJsonReader::TextOf(const CString& path, const json& value) const {
  if (!value.is_string()) throw CJsonFault(path, kNeedsText);
  return CString(value.get_ref<const std::string&>());
}

void CJsonReader::Field(const char* name, CString& text) {
  if (const json* value = Find(name)) text = TextOf(MemberPath(m_levels.back().m_path, name), *value);
}

void CJsonReader::Path(const char* name, CString& path) {
  Field(name, path);
  path = MakeAbsolute(m_folder, path);
}

void CJsonReader::Field(const char* name, CStringArray& texts) {
  const json* value = Find(name);
  if (!value) return;
  if (!value->is_array()) Fail(name, kNeedsTexts);
  const CString path = MemberPath(m_levels.back().m_path, name);
  texts.RemoveAll();
  for (const json& element : *value)
    texts.Add(TextOf(ElementPath(path, static_cast<std::size_t>(texts.GetSize())), element));
}

void CJsonReader::Paths(const char* name, CStringList& paths) {
  CStringArray texts;
  Field(name, texts);
  for (const CString& text : texts) paths.AddTail(MakeAbsolute(m_folder, text));
}

void CJsonReader::Equations(const char* name, const char* textName, CStringArray& equations) {
  if (Find(name)) {
    Field(name, equations);
    if (equations.GetSize() > kMaxStatements) Fail(name, kTooManyStatements);
    return;
  }
  CString text;
  Field(textName, text);
  if (std::count(text.View().begin(), text.View().end(), ';') > kMaxStatements)
    Fail(textName, kTooManyStatements);
  CStringArray variables;
  CArray<int, int> positions;
  CEquationSeparator().Separate(text, equations, variables, positions);
}

void CJsonReader::Amount(const char* name, double& number) {
  const json* value = Find(name);
  if (!value) return;
  const double given = value->is_number() ? value->get<double>() : kNaN;
  if (!(given >= 0)) Fail(name, kNeedsAmount);
  number = given;
}

// A double cannot represent each whole number in this range: it decides the range only.
void CJsonReader::Amount(const char* name, std::uint64_t& number) {
  const json* value = Find(name);
  if (!value) return;
  const double given = value->is_number() ? value->get<double>() : kNaN;
  if (!(given >= 0 && given <= static_cast<double>(kMaxAmount)) || given != std::floor(given))
    Fail(name, kNeedsWholeAmount);
  const std::uint64_t whole =
      value->is_number_float() ? static_cast<std::uint64_t>(given) : value->get<std::uint64_t>();
  if (whole > kMaxAmount) Fail(name, kNeedsWholeAmount);
  number = whole;
}

void CJsonReader::Choice(const char* name, int& choice, std::span<const char* const> words) {
  const json* value = Find(name);
  if (!value) return;
  CString list;
  for (std::size_t i = 0; i < words.size(); ++i) {
    if (*value == words[i]) return void(choice = static_cast<int>(i));
    list += CString(i ? ", \"" : "\"") + words[i] + "\"";
  }
  Fail(name, "must be one of " + list);
}

void CJsonReader::SizeOf(const char* name, const char* arrayName, UINT& size) {
  if (Find(name)) return Field(name, size);
  for (const CLevel& level : m_levels) {
    const auto array = level.m_node->find(arrayName);
    if (array != level.m_node->end()) size = static_cast<UINT>(array->size());
  }
}

void CJsonReader::Enter(const char* name) {
  const json* object = Find(name);
  Push(object ? *object : kNoObject, MemberPath(m_levels.back().m_path, name));
}

void CJsonReader::EnterElement() {
  CLevel& list = m_levels.back();
  const std::size_t index = list.m_next++;
  Push((*list.m_node)[index], ElementPath(list.m_path, index));
}

std::vector<CString> CJsonReader::Names() {
  const CLevel& level = m_levels.back();
  if (level.m_node->size() > kMaxObjects) throw CJsonFault(level.m_path, kTooManyObjects);
  std::vector<CString> names;
  for (const auto& [key, value] : level.m_node->items()) names.emplace_back(key);
  return names;
}

void CJsonReader::EnterList(const char* name, UINT& number, std::size_t) {
  const json* array = Find(name);
  if (!array) array = &kNoArray;
  if (!array->is_array()) Fail(name, kNeedsObjects);
  if (array->size() > kMaxObjects) Fail(name, kTooManyObjects);
  number = static_cast<UINT>(array->size());
  m_levels.push_back({array, MemberPath(m_levels.back().m_path, name), {}, 0});
}

void CJsonReader::Leave() {
  const CLevel& level = m_levels.back();
  if (level.m_node->is_object())
    for (const auto& [key, value] : level.m_node->items())
      if (std::find(level.m_known.begin(), level.m_known.end(), key) == level.m_known.end())
        throw CJsonFault(MemberPath(level.m_path, key), "no such key");
  m_levels.pop_back();
}

void CJsonWriter::Field(const char* name, float& number) {
  CJson& value = At(name);
  if (std::isfinite(number)) value = Shortest(number);
  for (const CSpecial& special : kSpecials)
    if (std::bit_cast<UINT>(number) == std::bit_cast<UINT>(special.value)) value = special.text;
}

template <class List>
void CJsonWriter::Texts(const char* name, const List& texts) {
  CJson& array = At(name) = CJson::array();
  for (const CString& text : texts) array.push_back(text.Std());
}

void CJsonWriter::Field(const char* name, CStringArray& texts) { Texts(name, texts); }

void CJsonWriter::Paths(const char* name, CStringList& paths) { Texts(name, paths); }

void CJsonWriter::Enter(const char* name) { m_levels.push_back(&(At(name) = CJson::object())); }

void CJsonWriter::EnterElement() {
  m_levels.back()->push_back(CJson::object());
  m_levels.push_back(&m_levels.back()->back());
}

void CJsonWriter::EnterList(const char* name, UINT&, std::size_t) {
  m_levels.push_back(&(At(name) = CJson::array()));
}

}  // namespace vastra
