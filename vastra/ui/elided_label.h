// A label of one line that can be narrower than its text: then the text ends with dots, and the tool tip has
// all of it.
#pragma once

#include "vastra/platform/api.h"

class QLabel;
class QWidget;

namespace vastra {

VASTRA_API QLabel* NewElidedLabel(QWidget* parent);

}  // namespace vastra
