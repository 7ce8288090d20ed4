// The JSON form of a configuration: UTF-8 text, with the field names as keys. configuration_file.h reads it
// together with the other form.
#pragma once

#include "host/common/configuration.h"

namespace vastra {

// Reads text into fresh, a new object. Relative paths are taken from folder, which is absolute. Gives one
// line that begins with the path of the key ("outputs[1].maxLogs: ..."), or an empty text for success.
CString ConfigurationFromJson(std::string_view text, const CString& folder, CConfiguration& fresh);

// Sets text to the JSON form. Reading it gives the same bytes of the configuration file, if the paths are
// absolute or empty. A text that is no UTF-8 or holds U+0000, and a NaN that is not the usual one, have no
// JSON form: the result then names the key, and text stays as it was.
CString ConfigurationToJson(CConfiguration& configuration, std::string& text);

// The paths of the keys that differ between two configurations with lists of the same lengths.
CStringArray DifferentKeys(CConfiguration& a, CConfiguration& b);

// Whether two configurations hold the same in all that either form on disk holds.
bool IsSame(CConfiguration& a, CConfiguration& b);

}  // namespace vastra
