// CFieldWalk: one pass over the named fields of an object. A class that is stored says once, in a function
//
//   void Fields(CFieldWalk& walk);
//
// which fields its stored form has, under which names and in which order, and every walker goes through that
// list: CArchiveWalk stores and loads bytes, the hosts read and write JSON. A walker is one of two kinds. In
// a stream, fields have places and no names; in a named form, names and no places. What only one kind has is
// said in the list, by IsStream and by the operations below.
//
// A walker throws what its form throws (CArchiveException for a stream); the object is then half loaded.
#pragma once

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
  // Whether the form has the fields that came with version; a named form has them all.
  bool HasSince(UINT version) const { return m_version >= version; }

  // One field. A named form that lacks it leaves it as it is.
  virtual void Field(const char* name, int& number) = 0;
  virtual void Field(const char* name, UINT& number) = 0;
  virtual void Field(const char* name, float& number) = 0;
  virtual void Field(const char* name, CString& text) = 0;
  virtual void Field(const char* name, CStringArray& texts) = 0;

  // Fields that say more of themselves than their type does.
  // Any number but 0 is yes, and stays the number that it is.
  virtual void Flag(const char* name, int& flag) { Field(name, flag); }
  virtual void Path(const char* name, CString& path) { Field(name, path); }
  // Loading appends to what the list holds.
  virtual void Paths(const char* name, CStringList& paths) = 0;
  // The statements of the field textName; a named form may have the text alone.
  virtual void Equations(const char* name, const char* textName, CStringArray& equations);
  // The size of the field arrayName; a named form may have the array alone.
  virtual void SizeOf(const char* name, const char* arrayName, UINT& size);

  // An object within the object.
  template <class T>
  void Object(const char* name, T& object);
  // A list of objects, head first. A stream has their number in front, as u32; one that is below 1 when taken
  // with its sign means none.
  template <class T>
  void Objects(const char* name, COwnedList<T>& objects);
  // An array of objects: the same, with an unsigned number.
  template <class T>
  void Objects(const char* name, CArray<T, T>& objects);
  // A list of objects that a stream has tail first. Their number stands elsewhere in it, where the list of
  // fields says Number.
  template <class T>
  void TailFirst(const char* name, COwnedList<T>& objects, UINT number);
  virtual void Number(UINT& number) = 0;  // of objects; in a stream alone

 protected:
  CFieldWalk(Form form, bool loading, UINT version) : m_form(form), m_loading(loading), m_version(version) {}

  // Around the fields of an object, which is the field name or the next element of the list that is open.
  virtual void Enter(const char*) {}
  virtual void EnterElement() {}
  // Around the elements of a list. Loading a named form sets number; a stream tests whether number objects of
  // at least objectBytes fit into the rest of it.
  virtual void EnterList(const char* name, UINT& number, std::size_t objectBytes) = 0;
  virtual void Leave() {}

 private:
  template <class T>
  void Element(T& object);
  template <class T>
  std::size_t FewestBytes() const;

  const Form m_form;
  const bool m_loading;
  const UINT m_version;
};

// The walk through a stream: stores or loads, as the archive says.
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

// A new object has empty texts and lists, so that none of its class takes fewer bytes.
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

}  // namespace vastra
