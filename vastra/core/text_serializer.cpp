#include "vastra/core/text_serializer.h"

#include <charconv>
#include <cstdlib>

namespace vastra {
namespace {

constexpr const char* kLineEnd = "\r\n";
constexpr std::size_t kBlock = 1024;

void Add(CStringList& list, const CString& text) { list.AddTail(text); }
void Add(CStringArray& array, const CString& text) { array.Add(text); }

template <class Texts>
void Lines(Texts& texts, CArchive& ar) {
  if (ar.IsStoring()) {
    CTextReport report(ar);
    for (CString& text : texts) report.Add(text, kLineEnd);
    report.Add(kLineEnd);
    return;
  }
  texts.RemoveAll();
  for (CString line; ar.ReadString(line) && !line.IsEmpty();) Add(texts, line);
}

}  // namespace

void CTextSerializer::TextSerialize(CString& text, CArchive& ar) {
  if (ar.IsStoring()) {
    ar.Write(text.View().data(), text.View().size());
    return;
  }
  text.Empty();
  char block[kBlock];
  std::size_t count = kBlock;
  while (count == kBlock) {
    count = ar.Read(block, kBlock);
    text += CString(block, count);
  }
}

void CTextSerializer::TextSerialize(int& flag, CArchive& ar) {
  if (ar.IsStoring()) {
    ar.WriteString(flag ? "Yes\r\n" : "No\r\n");
    return;
  }
  CString line;
  ar.ReadString(line);
  const char* text = line;
  char* end = nullptr;
  const long number = std::strtol(text, &end, 10);
  if (end != text) flag = static_cast<int>(number);
}

void CTextSerializer::TextSerialize(CStringList& list, CArchive& ar) { Lines(list, ar); }

void CTextSerializer::TextSerialize(CStringArray& array, CArchive& ar) { Lines(array, ar); }

CString CTextReport::Decimal(int number) { return CString(std::to_string(number)); }

CString CTextReport::Fixed(float number) {
  char digits[64];
  const auto end =
      std::to_chars(digits, digits + sizeof digits, static_cast<double>(number), std::chars_format::fixed, 6);
  return CString(digits, static_cast<std::size_t>(end.ptr - digits));
}

}  // namespace vastra
