#include "vastra/ui/text.h"

#include <QByteArray>
#include <QString>
#include <QStringDecoder>

namespace vastra {
namespace {

QString Decode(std::string_view bytes, bool isUtf8) {
  const auto size = static_cast<qsizetype>(bytes.size());
  return isUtf8 ? QString::fromUtf8(bytes.data(), size) : QString::fromLatin1(bytes.data(), size);
}

bool IsUtf8(std::string_view bytes) {
  QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
  const QString ignored = decoder(QByteArrayView(bytes.data(), static_cast<qsizetype>(bytes.size())));
  return !decoder.hasError();
}

QString WithScreenLines(QString text) { return text.replace("\r\n", "\n").replace('\r', '\n'); }

}  // namespace

QString ToScreen(const CString& text) { return Decode(text.View(), IsUtf8(text.View())); }

CString FromScreen(const QString& text) { return CString(text.toStdString()); }

QString ToScreenLines(const CString& text) { return WithScreenLines(ToScreen(text)); }

CString FromScreenLines(const QString& text) { return FromScreen(QString(text).replace('\n', "\r\n")); }

int ScreenPlace(const CString& text, int offset) {
  const std::string_view bytes = text.View();
  const bool isUtf8 = IsUtf8(bytes);
  auto place = static_cast<std::size_t>(offset);
  while (isUtf8 && place < bytes.size() && place > 0 && IsInsideCharacter(bytes[place])) --place;
  // The position between "\r" and "\n" counts as that of the pair.
  if (place > 0 && place < bytes.size() && bytes[place - 1] == '\r' && bytes[place] == '\n') --place;
  return static_cast<int>(WithScreenLines(Decode(bytes.substr(0, place), isUtf8)).size());
}

}  // namespace vastra
