// The picture of a chart as a file or an image.
#pragma once

#include <QImage>

#include "vastra/platform/string.h"

namespace vastra {

class CChartView;

// The picture as it is on the screen, without the pointer, with so many pixels for each of the view.
QImage ChartImage(CChartView& view, double scale);
// Writes it as SVG if path ends in .svg, else as PNG. Returns the fault; empty: it was written, whole.
CString SaveChartPicture(CChartView& view, const CString& path);

}  // namespace vastra
