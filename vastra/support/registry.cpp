#include "vastra/support/registry.h"

#include <QSettings>
#include <QStandardPaths>

namespace vastra {
namespace {

constexpr const char* kDefaultValue = "@";  // an unnamed value of each key, which marks that the key exists

QByteArray BytesOf(const CString& text) { return QByteArray(text.View().data(), text.GetLength()); }

CString TextOf(const QByteArray& bytes) {
  return CString(bytes.constData(), static_cast<size_t>(bytes.size()));
}

QString PathOf(const CString& key, const CString& name) {
  return QString::fromUtf8(BytesOf(key)).replace('\\', '/') + '/' + QString::fromUtf8(BytesOf(name));
}

// A string that is not valid in the encoding of the file is stored as bytes.
QVariant ToStored(const CString& value) {
  const QByteArray bytes = BytesOf(value);
  const QString text = QString::fromUtf8(bytes);
  return text.toUtf8() == bytes ? QVariant(text) : QVariant(bytes);
}

// A value with commas that was typed into the file without quotes is read as a list.
CString FromStored(const QVariant& stored) {
  if (stored.typeId() == QMetaType::QByteArray) return TextOf(stored.toByteArray());
  const QString text =
      stored.typeId() == QMetaType::QStringList ? stored.toStringList().join(',') : stored.toString();
  return TextOf(text.toUtf8());
}

}  // namespace

SECRegistry::SECRegistry() = default;
SECRegistry::~SECRegistry() = default;

int SECRegistry::Connect(DWORD hive) {
  CloseKey();
  m_file.reset();
  if (hive != HKEY_CURRENT_USER) return 0;
  const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
  m_file = std::make_unique<QSettings>(folder + "/vastra/settings.ini", QSettings::IniFormat);
  return 1;
}

int SECRegistry::OpenKey(const CString& key, DWORD access) {
  CloseKey();
  if (!m_file || !m_file->contains(PathOf(key, kDefaultValue))) return 0;
  m_key = key;
  m_access = access;
  return 1;
}

int SECRegistry::CreateKey(const CString& key, DWORD access) {
  CloseKey();
  if (!m_file) return 0;
  const QString path = PathOf(key, kDefaultValue);
  if (!m_file->contains(path)) m_file->setValue(path, QString());
  return OpenKey(key, access);
}

int SECRegistry::OpenUserKey(const CString& key) {
  if (!Connect(HKEY_CURRENT_USER)) return 0;
  if (OpenKey(key, KEY_ALL_ACCESS)) return 1;
  CreateKey(key, KEY_WRITE);
  return OpenKey(key, KEY_ALL_ACCESS);
}

void SECRegistry::CloseKey() { m_access = 0; }

int SECRegistry::GetStringValue(const CString& name, CString& value) const {
  if (!(m_access & KEY_QUERY_VALUE)) return 0;
  const QString path = PathOf(m_key, name);
  if (!m_file->contains(path)) return 0;
  value = FromStored(m_file->value(path));
  return 1;
}

int SECRegistry::SetStringValue(const CString& name, const CString& value) {
  if (!(m_access & KEY_SET_VALUE)) return 0;
  m_file->setValue(PathOf(m_key, name), ToStored(value));
  m_file->sync();
  return 1;
}

CString SECRegistry::GetString(const CString& name, const CString& otherwise) const {
  CString value;
  return GetStringValue(name, value) ? value : otherwise;
}

}  // namespace vastra
