#include "host/common/json_text.h"

#include <cmath>

#include "host/common/shown_text.h"

namespace vastra {
namespace {

using nlohmann::json;

constexpr std::size_t kMaxDepth = 32;
constexpr std::size_t kMaxValues = 1'000'000;
constexpr std::size_t kMaxBytes = std::size_t{256} << 20;
// What an object of the text needs in memory, with the object of the configuration that is made of it: about
// a kilobyte was measured.
constexpr std::size_t kObjectBytes = 1000;
constexpr std::size_t kMaxShown = 60;
constexpr int kNumberOverflow = 406;  // the code of the JSON library

// Builds the tree and checks it at the same time. The JSON library calls it for each token.
class CTreeBuilder final : public json::json_sax_t {
 public:
  explicit CTreeBuilder(json& root) : m_root(root) {}

  bool null() override { return Put(nullptr); }
  bool boolean(bool value) override { return Put(value); }
  bool number_integer(json::number_integer_t value) override { return Put(value); }
  bool number_unsigned(json::number_unsigned_t value) override { return Put(value); }
  bool number_float(json::number_float_t value, const json::string_t&) override { return Put(value); }
  bool binary(json::binary_t&) override { return false; }  // does not occur in text
  bool string(json::string_t& value) override {
    RefuseNul(value);
    Reserve(value.size());
    return Put(std::move(value));
  }
  bool start_object(std::size_t) override {
    Reserve(kObjectBytes);
    return Open(json::object());
  }
  bool start_array(std::size_t) override { return Open(json::array()); }
  bool end_object() override { return Close(); }
  bool end_array() override { return Close(); }
  bool key(json::string_t& key) override {
    CLevel& level = m_levels.back();
    level.m_key = key;
    RefuseNul(key);
    if (level.m_node->contains(key)) throw CJsonFault(Path(), "is a duplicate key");
    return true;
  }
  bool parse_error(std::size_t, const std::string&, const json::exception& fault) override {
    if (fault.id == kNumberOverflow) throw CJsonFault(Path(), "the number is too large");
    std::string_view words = fault.what();
    words.remove_prefix(std::min(words.size(), words.find("line ")));
    throw CJsonFault("", "not valid JSON, " + CString(words.substr(0, words.find("; last read"))));
  }

 private:
  struct CLevel {
    json* m_node;
    std::string m_key;  // of the next or present member
  };

  void RefuseNul(const std::string& text) const {
    if (text.find('\0') != text.npos) throw CJsonFault(Path(), "must not contain U+0000");
  }

  void Reserve(std::size_t bytes) {
    m_bytes += bytes;
    if (m_bytes > kMaxBytes)
      throw CJsonFault(Path(), "needs, with what is before it, more than 256 MB of memory");
  }
  json* Add(json&& value) {
    if (++m_count > kMaxValues)
      throw CJsonFault(
          Path(), CString("is one value more than the " + std::to_string(kMaxValues) + " that are allowed"));
    if (m_levels.empty()) return &(m_root = std::move(value));
    CLevel& level = m_levels.back();
    if (level.m_node->is_object()) return &((*level.m_node)[level.m_key] = std::move(value));
    level.m_node->push_back(std::move(value));
    return &level.m_node->back();
  }
  bool Put(json&& value) { return Add(std::move(value)), true; }
  bool Open(json&& value) {
    if (m_levels.size() == kMaxDepth) throw CJsonFault(Path(), "is nested too deeply");
    m_levels.push_back({Add(std::move(value)), {}});
    return true;
  }
  bool Close() { return m_levels.pop_back(), true; }

  // Of the next value.
  CString Path() const {
    CString path;
    for (const CLevel& level : m_levels) {
      const std::size_t inside = &level == &m_levels.back() ? 0 : 1;
      path = level.m_node->is_object() ? MemberPath(path, level.m_key)
                                       : ElementPath(path, level.m_node->size() - inside);
    }
    return path;
  }

  json& m_root;
  std::size_t m_count = 0;  // of values so far
  std::size_t m_bytes = 0;  // that the objects and strings so far need
  std::vector<CLevel> m_levels;
};

void AddLeaves(const CJson& node, const CString& path, std::vector<CJsonLeaf>& leaves) {
  if (node.is_object()) {
    for (const auto& [key, value] : node.items()) AddLeaves(value, MemberPath(path, key), leaves);
  } else if (node.is_array()) {
    for (std::size_t i = 0; i < node.size(); ++i) AddLeaves(node[i], ElementPath(path, i), leaves);
  } else {
    leaves.push_back({path, &node});
  }
}

}  // namespace

CJson ToJson(double number) {
  if (std::isnan(number)) return "nan";
  if (std::isinf(number)) return number > 0 ? "inf" : "-inf";
  return number;
}

std::string JsonText(const CJson& json) { return json.dump(-1, ' ', false, CJson::error_handler_t::replace); }

std::string ValidUtf8(std::string_view text) {
  return CJson::parse(JsonText(CJson(text))).get<std::string>();
}

// A key can be any string; the message is one short line.
CString MemberPath(const CString& object, std::string_view key) {
  std::string shown = Printable(key.substr(0, kMaxShown));
  if (key.size() > kMaxShown) shown += "...";
  return object.IsEmpty() ? CString(std::move(shown)) : object + "." + CString(std::move(shown));
}

CString ElementPath(const CString& array, std::size_t index) {
  return array + "[" + CString(std::to_string(index)) + "]";
}

json ParseJson(std::string_view text) {
  json root;
  CTreeBuilder builder(root);
  json::sax_parse(text, &builder);
  return root;
}

bool IsJsonText(const CJson& value) {
  if (value.get_ref<const std::string&>().find('\0') != std::string::npos) return false;
  try {
    value.dump();
    return true;
  } catch (const CJson::type_error&) {
    return false;
  }
}

std::vector<CJsonLeaf> Leaves(const CJson& root) {
  std::vector<CJsonLeaf> leaves;
  AddLeaves(root, {}, leaves);
  return leaves;
}

}  // namespace vastra
