// The captions of the settings of a driver, as its form shows them. Messages of the desktop use them in place
// of the names in a configuration.
#pragma once

#include <map>

#include "vastra/platform/string.h"

namespace vastra {

// Asks each driver once. For the thread that shows its forms.
class CDriverCaptions {
 public:
  // The caption of field, such as "text2"; empty if the driver is not installed or its form does not say.
  CString Find(int plcType, const CString& field);

 private:
  std::map<int, std::map<CString, CString>> m_captions;  // by driver and field
};

}  // namespace vastra
