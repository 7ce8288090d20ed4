// CCurveRaster: draws curves into the pixels of a picture, with soft edges, in a small part of the time that
// the toolkit needs for them: a chart is drawn again at each move of the pointer. Without Qt.
#pragma once

#include <span>
#include <vector>

#include "vastra/charts/curve_geometry.h"
#include "vastra/ui/line_raster.h"

namespace vastra {

class VASTRA_API CCurveRaster {
 public:
  // Draws the lines of a curve, as wide as width. scale is in pixels, and clip within the picture. colour: a
  // word of the picture, opaque. dashes: of lines, in pixels, a drawn part and the space after it in turn,
  // all above 0; empty: none. High columns of many values have no spaces.
  void Draw(const CPixels& pixels, const CRect& clip, std::span<const CCurveStep> steps,
            const CPlotScale& scale, double width, std::uint32_t colour, std::span<const float> dashes = {});

 private:
  // What lies in a column of pixels, or a coarse step that is wider.
  struct CColumn {
    int pixel;          // the first one
    float left, right;  // x of the first and of the last row
    float first, last, top, bottom;
    bool isDense;  // more than one value
    bool isJoined;
  };
  // The cover of the pixels of a column as the differences from each to the next.
  struct CCover {
    std::vector<float> steps;
    int low = INT32_MAX, high = -1;  // those that are not 0
  };

  void DrawSteps(std::span<const CCurveStep> steps, const CPlotScale& scale);
  void Draw(const CColumn& column, const CColumn* before);
  void Fill(int left, int right, float top, float bottom);
  void PutBars();
  void PutBar(int x, float top, float bottom, int skipFrom, int skipTo) const;
  void AddLine(float fromX, float fromY, float toX, float toY);
  bool IsDrawnAt(float way) const;
  void AddBar(float left, float right, float top, float bottom);
  void AddSpan(int column, float part, float top, float bottom);
  void FinishBefore(int column);
  void Finish(int column);

  std::vector<CCover> m_covers;  // of some columns that follow each other, as a ring
  int m_first = 0, m_end = 0;    // columns that are in it
  // Columns that are filled and follow each other: of x from m_firstBar on, from the top to the bottom of
  // each below that of m_clip.
  static constexpr int kBars = 16;
  int m_firstBar = 0, m_bars = 0;
  float m_tops[kBars] = {}, m_bottoms[kBars] = {};
  CPixels m_pixels = {};
  CRect m_clip;
  float m_halfWidth = 0;
  std::span<const float> m_dashes;
  float m_dashLength = 0;  // of all dashes together
  float m_way = 0;         // length of the lines so far
  std::uint32_t m_colour = 0;
};

}  // namespace vastra
