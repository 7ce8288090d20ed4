// SECRegistry: named string values of the user that last from run to run, such as the places of windows. They
// lie under keys, "Software\\Vastra\\Console", in the one file vastra/settings.ini of the user's folder of
// settings. A file that cannot be read or written is no failure: values then last as long as the process.
//
//   SECRegistry registry;
//   registry.OpenUserKey("Software\\Vastra\\Desktop");
//   const CString folder = registry.GetString("Folder", "/data");
//   registry.SetString("Folder", "/data/logs");
//
// One thread uses an object.
#pragma once

#include <memory>

#include "vastra/platform/string.h"

class QSettings;

namespace vastra {

constexpr DWORD HKEY_CURRENT_USER = 0x80000001;  // the one hive there is
constexpr DWORD KEY_QUERY_VALUE = 0x1, KEY_SET_VALUE = 0x2, KEY_WRITE = 0x20006, KEY_ALL_ACCESS = 0xF003F;

class VASTRA_API SECRegistry {
 public:
  SECRegistry();
  ~SECRegistry();
  SECRegistry(const SECRegistry&) = delete;
  SECRegistry& operator=(const SECRegistry&) = delete;

  // 1, or 0 if there is no such hive. Closes what was open.
  int Connect(DWORD hive);
  // Opens a key of the hive for what access allows: 1, or 0 if there is no such key.
  int OpenKey(const CString& key, DWORD access);
  // Makes a key, if need be, and opens it: 1, or 0 if no hive is connected.
  int CreateKey(const CString& key, DWORD access);
  // All of the above: a key of the user's, made if need be, for reading and writing.
  int OpenUserKey(const CString& key);
  void CloseKey();

  // Under the open key: 1 and the value, byte for byte, or 0 if there is none or access does not allow it.
  // Names hold no slashes.
  int GetStringValue(const CString& name, CString& value) const;
  int SetStringValue(const CString& name, const CString& value);  // on disk at once

  // The same for a caller who takes what comes.
  CString GetString(const CString& name, const CString& otherwise = CString()) const;
  void SetString(const CString& name, const CString& value) { SetStringValue(name, value); }

 private:
  std::unique_ptr<QSettings> m_file;  // null: no hive is connected
  CString m_key;
  DWORD m_access = 0;  // 0: no key is open
};

}  // namespace vastra
