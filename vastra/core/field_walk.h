// CFieldWalk: a visitor for the fields of an object. A class that is stored lists its fields, with their
// names and in their order, in a function
//
//   void Fields(CFieldWalk& walk);
//
// All visitors use this list: CArchiveWalk stores and loads bytes, the hosts read and write JSON. There are
// two forms. A stream identifies fields by their order, a named form by their names. IsStream and the
// operations below mark the fields that only one form has.
//
// A visitor throws the exceptions of its form (CArchiveException for a stream); the object is then partly
// loaded.
#pragma once

#include <map>
#include <span>
#include <vector>

#include "vastra/platform/archive.h"

namespace vastra {

class VASTRA_API CFieldWalk {
 public:
  enum class Form { stream, named };
  static constexpr UINT kAllVersions = 0xFFFFFFFF;

  virtual ~CFieldWalk() = default;
  CFieldWalk(const CFieldWalk&) = delete;
  CFieldWalk& operator=(const CFieldWalk&) = delete;

  bool IsLoading() const { return m_loading; }
  bool IsStream() const { return m_form == Form::stream; }
  // Whether the form has the fields that version has added; a named form has all fields.
  bool HasSince(UINT version) const { return m_version >= version; }

  // One field. Loading does not change a field that a named form lacks.
  virtual void Field(const char* name, int& number) = 0;
  virtual void Field(const char* name, UINT& number) = 0;
  virtual void Field(const char* name, float& number) = 0;
  virtual void Field(const char* name, CString& text) = 0;
  virtual void Field(const char* name, CStringArray& texts) = 0;

  // Fields with more meaning than their type.
  // Any number except 0 means yes; the number is preserved.
  virtual void Flag(const char* name, int& flag) { Field(name, flag); }
  virtual void Path(const char* name, CString& path) { Field(name, path); }
  // Loading appends to what the list holds.
  virtual void Paths(const char* name, CStringList& paths) = 0;
  // The statements of the field textName; a named form may omit them and have only the text.
  virtual void Equations(const char* name, const char* textName, CStringArray& equations);
  // An amount, 0 or more, that only a named form has: a stream neither stores nor changes it.
  virtual void Amount(const char* /*name*/, double& /*number*/) {}
  virtual void Amount(const char* /*name*/, std::uint64_t& /*number*/) {}  // up to 2^63
  // An index into words, which a named form writes as the word; a stream neither stores nor changes it.
  virtual void Choice(const char* /*name*/, int& /*choice*/, std::span<const char* const> /*words*/) {}
  // The size of the field arrayName; a named form may omit it and have only the array.
  virtual void SizeOf(const char* name, const char* arrayName, UINT& size);

  // An object within the object.
  template <class T>
  void Object(const char* name, T& object);
  // A list of objects, head first. In a stream their number comes first, as a u32; a number below 1, read as
  // a signed integer, means none.
  template <class T>
  void Objects(const char* name, COwnedList<T>& objects);
  // An array of objects: the same, but the number is unsigned.
  template <class T>
  void Objects(const char* name, CArray<T, T>& objects);
  // A list of objects that a stream stores tail first. Their number is a separate field of the stream,
  // visited by Number.
  template <class T>
  void TailFirst(const char* name, COwnedList<T>& objects, UINT number);
  virtual void Number(UINT& number) = 0;  // of objects; only a stream has it
  // Objects by their names, which only a named form has: a stream neither stores nor changes them. None: the
  // form does not have the field.
  template <class T>
  void Named(const char* name, std::map<CString, T>& objects);

 protected:
  CFieldWalk(Form form, bool loading, UINT version) : m_form(form), m_loading(loading), m_version(version) {}

  // Called before the fields of an object, which is the field name or the next element of the open list.
  virtual void Enter(const char*) {}
  virtual void EnterElement() {}
  virtual std::vector<CString> Names() { return {}; }  // of the fields of the entered object; loading
  // Called before the elements of a list. Loading from a named form sets number; loading from a stream checks
  // that its rest can contain number objects of at least objectBytes.
  virtual void EnterList(const char* name, UINT& number, std::size_t objectBytes) = 0;
  virtual void Leave() {}  // called after an object or list

 private:
  template <class T>
  void Element(T& object);
  template <class T>
  std::size_t FewestBytes() const;

  const Form m_form;
  const bool m_loading;
  const UINT m_version;
};

// The visitor for a stream: stores or loads, depending on the archive.
class VASTRA_API CArchiveWalk : public CFieldWalk {
 public:
  explicit CArchiveWalk(CArchive& ar, UINT version = kAllVersions)
      : CFieldWalk(Form::stream, ar.IsLoading(), version), m_ar(ar) {}

  void Field(const char*, int& number) override { Move(number); }
  void Field(const char*, UINT& number) override { Move(number); }
  void Field(const char*, float& number) override { Move(number); }
  void Field(const char*, CString& text) override { Move(text); }
  void Field(const char*, CStringArray& texts) override { m_ar.Serialize(texts); }
  void Paths(const char*, CStringList& paths) override { m_ar.Serialize(paths); }
  void Number(UINT& number) override { Move(number); }

 protected:
  void EnterList(const char*, UINT& number, std::size_t objectBytes) override;

 private:
  template <class T>
  void Move(T& value) {
    if (IsLoading())
      m_ar >> value;
    else
      m_ar << value;
  }

  CArchive& m_ar;
};

template <class T>
void CFieldWalk::Object(const char* name, T& object) {
  Enter(name);
  object.Fields(*this);
  Leave();
}

template <class T>
void CFieldWalk::Element(T& object) {
  EnterElement();
  object.Fields(*this);
  Leave();
}

// A new object has empty strings and lists, so no object of its class is stored in fewer bytes.
template <class T>
std::size_t CFieldWalk::FewestBytes() const {
  if (!IsStream() || !IsLoading()) return 0;
  CMemFile file;
  CArchive ar(&file, CArchive::store);
  CArchiveWalk walk(ar, m_version);
  T().Fields(walk);
  ar.Close();
  return file.Bytes().size();
}

template <class T>
void CFieldWalk::Objects(const char* name, COwnedList<T>& objects) {
  if (IsLoading()) objects.RemoveAll();
  auto number = static_cast<UINT>(objects.GetCount());
  Number(number);
  if (static_cast<int>(number) < 1) number = 0;
  EnterList(name, number, FewestBytes<T>());
  if (IsLoading()) objects.Renew(number);
  for (T* object : objects) Element(*object);
  Leave();
}

template <class T>
void CFieldWalk::Objects(const char* name, CArray<T, T>& objects) {
  auto number = static_cast<UINT>(objects.GetSize());
  Number(number);
  EnterList(name, number, FewestBytes<T>());
  if (IsLoading()) objects.RemoveAll(), objects.SetSize(static_cast<int>(number));
  for (T& object : objects) Element(object);
  Leave();
}

template <class T>
void CFieldWalk::TailFirst(const char* name, COwnedList<T>& objects, UINT number) {
  EnterList(name, number, FewestBytes<T>());
  if (IsLoading()) objects.Renew(number);
  POSITION pos = IsStream() ? objects.GetTailPosition() : objects.GetHeadPosition();
  while (pos) Element(IsStream() ? *objects.GetPrev(pos) : *objects.GetNext(pos));
  Leave();
}

template <class T>
void CFieldWalk::Named(const char* name, std::map<CString, T>& objects) {
  if (IsStream() || (!IsLoading() && objects.empty())) return;
  Enter(name);
  if (IsLoading()) {
    objects.clear();
    for (CString& key : Names()) objects[std::move(key)];
  }
  for (auto& [key, object] : objects) Object(key, object);
  Leave();
}

}  // namespace vastra
