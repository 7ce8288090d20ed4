// A field for the words of a search. Esc empties it, and does what it does in the window when the field is
// empty.
#pragma once

#include "vastra/platform/api.h"

class QLineEdit;
class QWidget;

namespace vastra {

// caption: shown while it is empty. The parent owns it.
VASTRA_API QLineEdit* NewSearchField(const char* caption, QWidget* parent);

}  // namespace vastra
