#include "vastra/views/selection_file.h"

#include <bit>
#include <optional>

#include "vastra/platform/archive.h"

namespace vastra {
namespace {

constexpr UINT kTrendMagic = 333666999;
constexpr UINT kGridMagic = 222444888;

void Put(CArchive& ar, double value) {
  const auto bits = std::bit_cast<std::uint64_t>(value);
  ar << static_cast<std::uint32_t>(bits) << static_cast<std::uint32_t>(bits >> 32);
}

void Get(CArchive& ar, double& value) {
  std::uint32_t low = 0, high = 0;
  ar >> low >> high;
  value = std::bit_cast<double>(std::uint64_t{high} << 32 | low);
}

// Opens the file and reads up to the count; then calls clear, and readAll with the archive and the count.
template <class CLEAR, class BODY>
ESelectionFile Read(const CString& path, UINT magic, CLEAR clear, BODY readAll) {
  CFile file;
  if (!file.Open(path, CFile::modeRead)) return ESelectionFile::cannotOpen;
  ESelectionFile result = ESelectionFile::noCount;
  try {
    CArchive ar(&file, CArchive::load);
    std::uint32_t kind = 0;
    std::int32_t count = 0;
    ar >> kind;
    if (kind != magic) return ESelectionFile::otherKind;
    ar >> count;
    if (count < 0) return result;
    result = ESelectionFile::endsInside;
    clear();
    readAll(ar, count);
    return ESelectionFile::good;
  } catch (const CArchiveException&) {
    return result;
  } catch (const CFileException&) {
    return result;
  }
}

template <class BODY>
ESelectionFile Write(const CString& path, UINT magic, std::size_t count, BODY body) {
  std::optional<CReplaceFile> file;
  try {
    file.emplace(path);
  } catch (const CFileException&) {
    return ESelectionFile::cannotCreate;
  }
  try {
    CArchive ar(&*file, CArchive::store);
    ar << magic << static_cast<std::int32_t>(count);
    body(ar);
    ar.Close();
    file->Replace();
  } catch (const CFileException&) {
    return ESelectionFile::cannotWrite;
  }
  return ESelectionFile::good;
}

}  // namespace

const char* TextOf(ESelectionFile result) {
  switch (result) {
    case ESelectionFile::otherKind:
      return "Invalid file!.";
    case ESelectionFile::cannotOpen:
    case ESelectionFile::noCount:
    case ESelectionFile::endsInside:
      return "Error reading file.";
    case ESelectionFile::cannotWrite:
      return "Couldn't write file.";
    case ESelectionFile::good:
    case ESelectionFile::cannotCreate:
      break;
  }
  return nullptr;
}

ESelectionFile ReadSelection(const CString& path, CTrendSelection& selection) {
  const auto clear = [&] { selection = {}; };
  return Read(path, kTrendMagic, clear, [&](CArchive& ar, std::int32_t count) {
    for (; count > 0; --count) {
      CCurveRecord curve;
      ar >> curve.name;
      Get(ar, curve.minimum);
      Get(ar, curve.maximum);
      ar >> curve.colour;
      selection.curves.push_back(std::move(curve));
    }
    ar >> selection.scaleIndex;
  });
}

ESelectionFile ReadSelection(const CString& path, CStringArray& names) {
  const auto clear = [&] { names.RemoveAll(); };
  return Read(path, kGridMagic, clear, [&](CArchive& ar, std::int32_t count) {
    for (CString name; count > 0; --count) {
      ar >> name;
      names.Add(name);
    }
  });
}

ESelectionFile WriteSelection(const CString& path, const CTrendSelection& selection) {
  return Write(path, kTrendMagic, selection.curves.size(), [&](CArchive& ar) {
    for (const CCurveRecord& curve : selection.curves) {
      ar << curve.name;
      Put(ar, curve.minimum);
      Put(ar, curve.maximum);
      ar << curve.colour;
    }
    ar << selection.scaleIndex;
  });
}

ESelectionFile WriteSelection(const CString& path, const CStringArray& names) {
  return Write(path, kGridMagic, static_cast<std::size_t>(names.GetSize()), [&](CArchive& ar) {
    for (const CString& name : names) ar << name;
  });
}

}  // namespace vastra
