// The JSON form of a configuration: UTF-8 text, with the field names as keys. configuration_file.h reads it
// together with the other form.
#pragma once

#include "host/common/configuration.h"

namespace vastra {

// Reads text into fresh, a new object. Relative paths are relative to folder, which is absolute. Returns an
// error message that begins with the path of the key ("outputs[1].maxLogs: ..."), or an empty string.
CString ConfigurationFromJson(std::string_view text, const CString& folder, CConfiguration& fresh);

// Sets text to the JSON form. A configuration read from it has the same configuration file, byte for byte, if
// the paths are absolute or empty. A string that is not UTF-8 or has U+0000, and a NaN with a payload, have
// no JSON form: the error message names the key, and text does not change.
CString ConfigurationToJson(CConfiguration& configuration, std::string& text);

// The paths of the keys that differ between two configurations with lists of the same lengths.
CStringArray DifferentKeys(CConfiguration& a, CConfiguration& b);

// Whether two configurations are equal in all settings that one of the two forms stores.
bool IsSame(CConfiguration& a, CConfiguration& b);

}  // namespace vastra
