// A layout of a chart as JSON: its curves, axes and range.
//
//     {"chart": 1, "curves": [{"variable": "Temp", "axis": 1, "colour": "Blue"}],
//      "axes": [{"id": 1, "low": 0, "high": 900}], "from": "2026-03-01T11:00:00.000Z", "to": ..., "utc":
//      true}
#pragma once

#include <QByteArray>
#include <QJsonObject>

#include "vastra/charts/chart_layout_rules.h"

namespace vastra {

VASTRA_API QJsonObject LayoutFields(const CChartLayout& layout);
// Reads such an object. Returns the fault, with its place, such as: curves[2].axis: there is no axis 7. Then
// layout does not change. Fields that are missing have their defaults; unknown ones are passed over.
VASTRA_API CString ReadLayoutFields(const QJsonObject& fields, CChartLayout& layout);

VASTRA_API QByteArray LayoutText(const CChartLayout& layout);
// The same from the bytes of a file. A fault of JSON has its line.
VASTRA_API CString ReadLayoutText(const QByteArray& text, CChartLayout& layout);

}  // namespace vastra
