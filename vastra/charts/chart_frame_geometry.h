// Where the parts of a chart are: the legend, the plot, its value axes and the time axis. Nothing runs out of
// the frame, however small that is. Without Qt.
#pragma once

#include <vector>

namespace vastra {

// In pixels.
struct CChartBox {
  double left = 0, top = 0, width = 0, height = 0;

  double Right() const { return left + width; }
  double Bottom() const { return top + height; }
  bool Has(double x, double y) const { return x >= left && x < Right() && y >= top && y < Bottom(); }
};

struct CChartFont {
  double character = 8, line = 16;  // pixels: the mean width of a character, the height of a line
};

struct CFrameRequest {
  double width = 0, height = 0;
  CChartFont font;
  std::vector<double> axes;  // of each value axis the width of its widest text
  std::size_t curves = 0;
  double names = 0;       // the width of the widest name in the legend
  bool hasUnits = false;  // above the axes
};

struct CLegendItem {
  CChartBox all, line, name, value;
};

struct CChartFrame {
  CChartBox legend, plot, time;
  // Of the axes that have room: the first, third, ... at the left of the plot, the others at its right.
  std::vector<CChartBox> axes;
  std::vector<CLegendItem> items;  // of the first curves
  CChartBox more;                  // for a text such as "+12"; empty if all curves are in the legend
};

CChartFrame LayOutChart(const CFrameRequest& request);

constexpr bool IsLeftAxis(std::size_t place) { return place % 2 == 0; }

}  // namespace vastra
