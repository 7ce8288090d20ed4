// SameFields: whether two objects that list their fields for CFieldWalk have the same values.
#pragma once

#include <string>

#include "vastra/core/field_walk.h"

namespace vastra {

// Writes the fields, with their names and the sizes of texts and lists, into one string.
class CFieldText : public CFieldWalk {
 public:
  CFieldText() : CFieldWalk(Form::named, false, kAllVersions) {}

  const std::string& Text() const { return m_text; }

  void Field(const char* name, int& number) override { Add(name, &number, sizeof number); }
  void Field(const char* name, UINT& number) override { Add(name, &number, sizeof number); }
  void Field(const char* name, float& number) override { Add(name, &number, sizeof number); }
  void Field(const char* name, CString& text) override { Add(name, text.Std().data(), text.Std().size()); }
  void Field(const char* name, CStringArray& texts) override { AddAll(name, texts); }
  void Paths(const char* name, CStringList& paths) override { AddAll(name, paths); }
  void Amount(const char* name, double& number) override { Add(name, &number, sizeof number); }
  void Amount(const char* name, std::uint64_t& number) override { Add(name, &number, sizeof number); }
  void Choice(const char* name, int& choice, std::span<const char* const>) override { Field(name, choice); }
  void Number(UINT&) override {}

 protected:
  void Enter(const char* name) override { Add(name, "", 0); }
  void EnterList(const char* name, UINT& number, std::size_t) override { Field(name, number); }

 private:
  void Add(const char* name, const void* bytes, std::size_t size) {
    m_text.append(name).push_back('\0');
    m_text.append(reinterpret_cast<const char*>(&size), sizeof size);
    m_text.append(static_cast<const char*>(bytes), size);
  }
  template <class T>
  void AddAll(const char* name, const T& texts) {
    std::string all;
    for (const CString& text : texts)
      all.append(std::to_string(text.Std().size())).append(" ").append(text.Std());
    Add(name, all.data(), all.size());
  }

  std::string m_text;
};

// By value: the visitor does not take constant objects.
template <class T>
bool SameFields(T a, T b) {
  CFieldText one, other;
  a.Fields(one);
  b.Fields(other);
  return one.Text() == other.Text();
}

}  // namespace vastra
