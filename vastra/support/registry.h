// SECRegistry: persistent string values of the user, such as the places of windows, under keys such as
// "Software\\Vastra\\Console". They are in the file vastra/settings.ini in the user's configuration folder. A
// file that cannot be read or written is not a failure: then the values exist until the process ends.
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

constexpr DWORD HKEY_CURRENT_USER = 0x80000001;  // the only hive
constexpr DWORD KEY_QUERY_VALUE = 0x1, KEY_SET_VALUE = 0x2, KEY_WRITE = 0x20006, KEY_ALL_ACCESS = 0xF003F;

class VASTRA_API SECRegistry {
 public:
  SECRegistry();
  ~SECRegistry();
  SECRegistry(const SECRegistry&) = delete;
  SECRegistry& operator=(const SECRegistry&) = delete;

  // 1, or 0 if there is no such hive. Closes an open key.
  int Connect(DWORD hive);
  // Opens a key of the hive with access: 1, or 0 if there is no such key.
  int OpenKey(const CString& key, DWORD access);
  // Creates a key if necessary and opens it: 1, or 0 if no hive is connected.
  int CreateKey(const CString& key, DWORD access);
  // All of the above: opens a key of the user for reading and writing, and creates it if necessary.
  int OpenUserKey(const CString& key);
  void CloseKey();

  // A value of the open key: 1 and its bytes, or 0 if it does not exist or access does not allow it. Names
  // have no slashes.
  int GetStringValue(const CString& name, CString& value) const;
  int SetStringValue(const CString& name, const CString& value);  // written to disk at once

  // The same without a result.
  CString GetString(const CString& name, const CString& otherwise = CString()) const;
  void SetString(const CString& name, const CString& value) { SetStringValue(name, value); }

 private:
  std::unique_ptr<QSettings> m_file;  // null: no hive is connected
  CString m_key;
  DWORD m_access = 0;  // 0: no key is open
};

}  // namespace vastra
