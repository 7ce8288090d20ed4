// The visitors that read and write the named fields of an object as JSON. Keys are the names of the fields.
#pragma once

#include "host/common/json_text.h"
#include "vastra/core/field_walk.h"

namespace vastra {

// Reads a tree. A field without a key in the tree does not change. Throws CJsonFault, with the path of the
// key, for a key without a field, a wrong type and a number out of range.
class CJsonReader : public CFieldWalk {
 public:
  // Relative paths are relative to folder. root must exist as long as the reader.
  CJsonReader(const nlohmann::json& root, const CString& folder);

  template <class T>
  void Read(T& object) {
    Push(m_root, "");
    object.Fields(*this);
    Leave();
  }

  void Field(const char* name, int& number) override;
  void Field(const char* name, UINT& number) override;
  void Field(const char* name, float& number) override;  // or "inf", "-inf", "nan"
  void Field(const char* name, CString& text) override;
  void Field(const char* name, CStringArray& texts) override;
  void Flag(const char* name, int& flag) override;  // any 32 bits, signed or not, or true or false
  void Path(const char* name, CString& path) override;
  void Paths(const char* name, CStringList& paths) override;
  void Equations(const char* name, const char* textName, CStringArray& equations) override;
  void Amount(const char* name, double& number) override;
  void Amount(const char* name, std::uint64_t& number) override;
  void Choice(const char* name, int& choice, std::span<const char* const> words) override;
  void SizeOf(const char* name, const char* arrayName, UINT& size) override;
  void Number(UINT&) override {}

 protected:
  void Enter(const char* name) override;
  void EnterElement() override;
  std::vector<CString> Names() override;
  void EnterList(const char* name, UINT& number, std::size_t objectBytes) override;
  void Leave() override;

 private:
  struct CRange {
    double low, high;
    const char* words;  // the error for a value outside
  };
  static constexpr CRange kInt = {-2147483648.0, 2147483647.0,
                                  "must be a whole number from -2147483648 to 2147483647"};
  static constexpr CRange kUint = {0.0, 4294967295.0, "must be a whole number from 0 to 4294967295"};
  static constexpr CRange kFlag = {-2147483648.0, 4294967295.0,
                                   "must be a whole number of 32 bits, true or false"};

  struct CLevel {  // an object or a list that is being read
    const nlohmann::json* m_node;
    CString m_path;
    std::vector<std::string_view> m_known;  // keys that belong to fields
    std::size_t m_next;                     // element of the list
  };

  const nlohmann::json* Find(const char* name);
  std::int64_t Whole(const char* name, const nlohmann::json& value, const CRange& range) const;
  CString TextOf(const CString& path, const nlohmann::json& value) const;
  void Push(const nlohmann::json& object, const CString& path);
  [[noreturn]] void Fail(const char* name, const CString& words) const;

  const nlohmann::json& m_root;
  const CString m_folder;
  std::vector<CLevel> m_levels;
};

// Makes a tree. Strings are copied unchanged, also if they are not UTF-8; a number without a JSON form
// becomes null.
class CJsonWriter : public CFieldWalk {
 public:
  CJsonWriter() : CFieldWalk(Form::named, false, kAllVersions), m_root(CJson::object()), m_levels{&m_root} {}

  template <class T>
  void Write(T& object) {
    object.Fields(*this);
  }
  CJson Take() { return std::move(m_root); }

  void Field(const char* name, int& number) override { At(name) = number; }
  void Field(const char* name, UINT& number) override { At(name) = number; }
  void Field(const char* name, float& number) override;
  void Field(const char* name, CString& text) override { At(name) = text.Std(); }
  void Field(const char* name, CStringArray& texts) override;
  void Paths(const char* name, CStringList& paths) override;
  void Amount(const char* name, double& number) override { At(name) = number; }
  void Amount(const char* name, std::uint64_t& number) override { At(name) = number; }
  void Choice(const char* name, int& choice, std::span<const char* const> words) override {
    At(name) = words[static_cast<std::size_t>(choice)];
  }
  void Number(UINT&) override {}

 protected:
  void Enter(const char* name) override;
  void EnterElement() override;
  void EnterList(const char* name, UINT& number, std::size_t objectBytes) override;
  void Leave() override { m_levels.pop_back(); }

 private:
  CJson& At(const char* name) { return (*m_levels.back())[name]; }
  template <class List>
  void Texts(const char* name, const List& texts);

  CJson m_root;
  std::vector<CJson*> m_levels;  // the objects and lists that are being written
};

}  // namespace vastra
