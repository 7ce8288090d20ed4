// The sign of a condition: a shape and a colour for each, so that neither is needed alone.
#pragma once

#include <QIcon>

#include "host/desktop/plant_parts.h"

namespace vastra {

QIcon IconOf(ECondition condition);
// Of the actions that start and stop the logger.
QIcon StartIcon();
QIcon StopIcon();

}  // namespace vastra
