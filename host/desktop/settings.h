// CSettings: what the desktop remembers of its user from run to run.
#pragma once

#include "vastra/platform/array.h"
#include "vastra/support/registry.h"
#include "vastra/ui/geometry.h"

namespace vastra {

class CSettings {
 public:
  CSettings() { m_registry.OpenUserKey("Software\\Vastra\\Desktop"); }

  CString Get(const char* name) const { return m_registry.GetString(name); }
  void Set(const char* name, const CString& value) { m_registry.SetString(name, value); }

  // A place on the screen: true, or false with place left alone if none is known.
  bool GetPlace(const char* name, CRect& place) const;
  void SetPlace(const char* name, const CRect& place);

  // The configurations opened last, the newest first.
  static constexpr int kRecent = 8;
  CStringArray Recent() const;
  void AddRecent(const CString& path);

 private:
  SECRegistry m_registry;
};

}  // namespace vastra
