// CSettings: the settings of the user that the desktop keeps between its starts.
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

  // A stored place on the screen; false, and place does not change, if there is none.
  bool GetPlace(const char* name, CRect& place) const;
  void SetPlace(const char* name, const CRect& place);

  // The configurations opened last, newest first.
  static constexpr int kRecent = 8;
  CStringArray Recent() const;
  void AddRecent(const CString& path);

 private:
  SECRegistry m_registry;
};

}  // namespace vastra
