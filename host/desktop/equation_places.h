// The lists of equations of a configuration, also those that are not in use, for an editor: what each can
// read, and how a new text gets there.
#pragma once

#include <vector>

#include "host/common/stage_names.h"

namespace vastra {

struct CEquationPlace {
  CString key;         // of the text, such as "outputs[1].enableText"
  CString listKey;     // of the statements, which messages can name instead
  CString text;        // as it was typed, with "\r\n"; if the statements are others, those
  CStringArray names;  // that the equations can read
  bool areNamesKnown = false;
  CStringArray results;  // that the stage uses, if they are fixed or chosen

  bool Has(const CString& path) const { return path == key || path == listKey; }
};

std::vector<CEquationPlace> EquationPlaces(const CConfiguration& configuration, const CStageNames& names);

// Sets the text and its statements. False: configuration has no place with that key.
bool SetEquations(CConfiguration& configuration, const CString& key, const CString& text);

}  // namespace vastra
