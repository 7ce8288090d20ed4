#include "vastra/charts/chart_frame_geometry.h"

#include <algorithm>
#include <cmath>

namespace vastra {
namespace {

constexpr double kLegendPart = 0.3;      // of the height, at most
constexpr double kPlotPart = 0.35;       // of the width, at least, beside the axes
constexpr double kNameCharacters = 32;   // of a name, at most
constexpr double kValueCharacters = 14;  // of a value in the legend
constexpr double kRowLines = 1.35;       // the height of a row of the legend
constexpr double kLeastLegend = 12;      // characters
constexpr double kLeastRows = 5;         // the height of a frame with a legend, in rows of it
constexpr double kTimeLines = 2.7;       // the height of the time axis
constexpr double kTickLength = 0.7;      // characters, beside the numbers of an axis

// The items of the legend in columns of equal width; the last place is for "more" if not all have room. A
// frame in which the legend would leave no plot has none.
void LayOutLegend(const CFrameRequest& request, CChartFrame& frame) {
  const CChartFont& font = request.font;
  const double row = font.line * kRowLines, inner = request.width - 2 * font.character;
  if (request.curves == 0 || inner < kLeastLegend * font.character || request.height < kLeastRows * row)
    return;
  const double line = 2.5 * font.character, gap = font.character;
  const double value = std::min(kValueCharacters * font.character, inner / 3);
  const double names = std::min(request.names + 1, kNameCharacters * font.character);
  const double item = std::min(line + gap + names + gap + value + gap, inner);
  const auto columns = static_cast<std::size_t>(std::max(inner / item, 1.0));
  const auto rows = static_cast<std::size_t>(std::max(request.height * kLegendPart / row, 1.0));
  const std::size_t places = columns * rows;
  const std::size_t shown = request.curves <= places ? request.curves : places - 1;
  const double name = std::max(item - line - value - 3 * gap, 0.0);
  const auto place = [&](std::size_t i) {
    const std::size_t placeRow = i / columns;
    return CChartBox{font.character + static_cast<double>(i % columns) * item,
                     font.line * 0.25 + static_cast<double>(placeRow) * row, item, row};
  };
  for (std::size_t i = 0; i < shown; ++i) {
    const CChartBox all = place(i);
    frame.items.push_back({all,
                           {all.left, all.top, line, row},
                           {all.left + line + gap, all.top, name, row},
                           {all.left + line + name + 2 * gap, all.top, value, row}});
  }
  if (shown < request.curves) frame.more = place(shown);
  const std::size_t used = std::min(places, request.curves);
  const double height =
      font.line * 0.5 + std::ceil(static_cast<double>(used) / static_cast<double>(columns)) * row;
  frame.legend = {0, 0, request.width, std::min(height, request.height)};
}

}  // namespace

CChartFrame LayOutChart(const CFrameRequest& request) {
  const CChartFont& font = request.font;
  CChartFrame frame;
  LayOutLegend(request, frame);
  const double time = std::min(font.line * kTimeLines, request.height / 3);
  const double wanted = frame.legend.height + font.line * (request.hasUnits ? 1.2 : 0.6);
  const double top = std::clamp(wanted, 0.0, std::max(request.height - time - 1, 0.0));
  double left = font.character, right = std::max(request.width - 2 * font.character, left + 1);
  const double least = request.width * kPlotPart;
  std::vector<double> widths;
  for (std::size_t i = 0; i < request.axes.size(); ++i) {
    const double width = std::ceil(request.axes[i]) + (1 + 2 * kTickLength) * font.character;
    if (right - left - width < least) break;
    widths.push_back(width);
    (IsLeftAxis(i) ? left : right) += IsLeftAxis(i) ? width : -width;
  }
  left = std::round(left);
  right = std::round(right);
  frame.plot = {left, std::round(top), std::max(right - left, 1.0),
                std::max(std::round(request.height - time) - std::round(top), 1.0)};
  frame.time = {0, frame.plot.Bottom(), request.width, std::max(request.height - frame.plot.Bottom(), 0.0)};
  for (std::size_t i = 0; i < widths.size(); ++i) {
    if (IsLeftAxis(i))
      frame.axes.push_back({left -= widths[i], frame.plot.top, widths[i], frame.plot.height});
    else
      frame.axes.push_back({right, frame.plot.top, widths[i], frame.plot.height}), right += widths[i];
  }
  return frame;
}

}  // namespace vastra
