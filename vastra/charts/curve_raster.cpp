#include "vastra/charts/curve_raster.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numeric>
#include <utility>

namespace vastra {
namespace {

constexpr int kColumns = 64;      // of the ring; a line that is not finished is narrower
constexpr float kMostWidth = 16;  // of a line
constexpr float kFlat = 3;        // pixels; a column that is lower is a piece of a line
constexpr int kMostSlices = 8;    // of a line in a column
constexpr float kFar = 1e6F;      // pixels; farther places are moved there
constexpr float kLeast = 1.0F / 512;

float Near(double place) {
  return static_cast<float>(std::min(std::max(place, double{-kFar}), double{kFar}));
}

// As std::ceil, which is a call.
CMoment RoundedUp(double moment) {
  const auto down = static_cast<CMoment>(moment);
  return down + (static_cast<double>(down) < moment);
}

// The mixture of two colours; share: of the second one, from 0 to 256.
std::uint32_t Mixed(std::uint32_t a, std::uint32_t b, std::uint32_t share) {
  constexpr std::uint32_t kEven = 0x00FF00FF;
  const std::uint32_t even = ((a & kEven) * (256 - share) + (b & kEven) * share) >> 8;
  const std::uint32_t odd = (a >> 8 & kEven) * (256 - share) + (b >> 8 & kEven) * share;
  return (even & kEven) | (odd & ~kEven);
}

}  // namespace

void CCurveRaster::Draw(const CPixels& pixels, const CRect& clip, std::span<const CCurveStep> steps,
                        const CPlotScale& scale, double width, std::uint32_t colour,
                        std::span<const float> dashes) {
  if (clip.Width() <= 0 || clip.Height() <= 0) return;
  m_pixels = pixels;
  m_clip = clip;
  m_colour = colour;
  m_halfWidth = std::min(static_cast<float>(width), kMostWidth) / 2;
  m_dashes = dashes;
  m_dashLength = std::accumulate(dashes.begin(), dashes.end(), 0.0F);
  m_way = 0;
  m_covers.resize(kColumns);
  const auto height = static_cast<std::size_t>(clip.Height()) + 2;
  for (CCover& cover : m_covers)
    if (cover.steps.size() != height) cover.steps.assign(height, 0);
  m_first = m_end = clip.left;
  DrawSteps(steps, scale);
  PutBars();
  FinishBefore(m_clip.right);
}

// The steps of a column of pixels are drawn together.
void CCurveRaster::DrawSteps(std::span<const CCurveStep> steps, const CPlotScale& scale) {
  const double perMoment = scale.width / static_cast<double>(scale.range.to - scale.range.from);
  const double perValue = scale.height / scale.values.Span(), zero = scale.top + scale.values.high * perValue;
  const auto x = [&](CMoment moment) {
    return Near(scale.left + static_cast<double>(moment - scale.range.from) * perMoment);
  };
  const auto y = [=](float value) { return Near(zero - static_cast<double>(value) * perValue); };
  const double perPixel = 1 / perMoment;
  const auto pixel = static_cast<CMoment>(perPixel);
  CCurveStep whole;  // of the column
  CColumn column, before;
  CMoment end = 0;  // of the column
  bool hasColumn = false, hasBefore = false, isJoined = true;
  const auto draw = [&] {
    if (!hasColumn) return;
    column.right = whole.to == whole.from ? column.left : x(whole.to);
    column.first = y(whole.first);
    column.isDense = whole.values > 1;
    column.last = column.isDense ? y(whole.last) : column.first;
    column.top = column.isDense ? y(whole.greatest) : column.first;
    column.bottom = column.isDense ? y(whole.least) : column.first;
    Draw(column, hasBefore ? &before : nullptr);
    before = column;
    hasBefore = true;
  };
  for (const CCurveStep& step : steps) {
    isJoined = isJoined && step.isJoined;
    if (step.values == 0) {
      isJoined = false;  // no line leads over a stretch without values
      continue;
    }
    if (hasColumn && isJoined && step.from < end && step.to < end + pixel) {
      whole.to = step.to;
      whole.last = step.last;
      whole.least = std::min(whole.least, step.least);
      whole.greatest = std::max(whole.greatest, step.greatest);
      whole.values = 2;
      continue;
    }
    draw();
    whole = step;
    column.left = x(step.from);
    column.pixel = static_cast<int>(column.left);
    column.isJoined = isJoined;
    end = scale.range.from + RoundedUp((static_cast<double>(column.pixel + 1) - scale.left) * perPixel);
    hasColumn = isJoined = true;
  }
  draw();
}

// A column of many values is filled, as wide as the line at least; where it has one, or is apart from the one
// before, a line leads to it.
void CCurveRaster::Draw(const CColumn& column, const CColumn* before) {
  const bool isJoined = before && column.isJoined;
  const bool isBeside = isJoined && before->isDense && column.isDense && column.left - before->right < 2;
  float top = column.top, bottom = column.bottom;
  int from = column.pixel;
  if (isBeside) {
    top = std::min(top, before->last);
    bottom = std::max(bottom, before->last);
    from = std::min(from, static_cast<int>(before->right) + 1);
  } else if (isJoined) {
    FinishBefore(static_cast<int>(before->right - 2 * m_halfWidth) - 2);
    AddLine(before->right, before->last, column.left, column.first);
  }
  if (!column.isDense) return;
  if (!m_dashes.empty()) {
    const float fromX = isBeside ? before->right : column.left,
                fromY = isBeside ? before->last : column.first;
    m_way = std::fmod(m_way + std::hypot(column.right - fromX, column.last - fromY), m_dashLength);
    if (bottom - top < kFlat && !IsDrawnAt(m_way)) return;
  }
  const int end = static_cast<int>(column.right) + 1, beside = static_cast<int>(m_halfWidth);
  Fill(from, end, top - m_halfWidth, bottom + m_halfWidth);
  if (beside <= 0) return;
  Fill(from - beside, from, top, bottom);
  Fill(end, end + beside, top, bottom);
}

void CCurveRaster::Fill(int left, int right, float top, float bottom) {
  const auto height = static_cast<float>(m_clip.Height());
  top = std::clamp(top - static_cast<float>(m_clip.top), 0.0F, height);
  bottom = std::clamp(bottom - static_cast<float>(m_clip.top), 0.0F, height);
  if (top >= bottom) return;
  right = std::min(right, m_clip.right);
  for (int x = std::max(left, m_clip.left); x < right; ++x) {
    if (m_bars == kBars || x != m_firstBar + m_bars) PutBars();
    if (m_bars == 0) m_firstBar = x;
    m_tops[m_bars] = top;
    m_bottoms[m_bars++] = bottom;
  }
}

// Bars that follow each other are high at nearly the same rows: those are filled across all of them.
void CCurveRaster::PutBars() {
  const int count = std::exchange(m_bars, 0);
  int from = 0, to = count ? m_clip.Height() : 0;
  for (int i = 0; i < count; ++i) {
    from = std::max(from, static_cast<int>(m_tops[i]) + 1);
    to = std::min(to, static_cast<int>(m_bottoms[i]));
  }
  std::uint32_t* row = m_pixels.first + (m_clip.top + from) * m_pixels.row + m_firstBar;
  std::uint32_t colours[kBars];
  std::fill_n(colours, kBars, m_colour);
  if (count == kBars)  // of a length that the compiler knows
    for (int y = from; y < to; ++y, row += m_pixels.row) std::memcpy(row, colours, sizeof colours);
  else
    for (int y = from; y < to; ++y, row += m_pixels.row) std::fill_n(row, count, m_colour);
  for (int i = 0; i < count; ++i) PutBar(m_firstBar + i, m_tops[i], m_bottoms[i], from, to);
}

// A bar but for its rows from skipFrom to skipTo, which are full.
void CCurveRaster::PutBar(int x, float top, float bottom, int skipFrom, int skipTo) const {
  const int low = static_cast<int>(top), high = static_cast<int>(bottom);
  const float aboveBottom = bottom - static_cast<float>(high);
  const float belowTop = (high > low ? static_cast<float>(low + 1) : bottom) - top;
  std::uint32_t* const pixels = m_pixels.first + m_clip.top * m_pixels.row + x;
  const auto mix = [&](int y, float share) {
    std::uint32_t& pixel = pixels[y * m_pixels.row];
    pixel = Mixed(pixel, m_colour, static_cast<std::uint32_t>(share * 256));
  };
  mix(low, belowTop);
  const bool skips = skipFrom < skipTo;
  for (int y = low + 1; y < (skips ? skipFrom : high); ++y) pixels[y * m_pixels.row] = m_colour;
  for (int y = skips ? skipTo : high; y < high; ++y) pixels[y * m_pixels.row] = m_colour;
  if (high > low && aboveBottom >= kLeast) mix(high, aboveBottom);
}

// A line as slices of columns, each as high as the line is there.
void CCurveRaster::AddLine(float fromX, float fromY, float toX, float toY) {
  const float run = toX - fromX, rise = toY - fromY, length = std::hypot(run, rise);
  if (length < kLeast) return;
  const float way = std::exchange(m_way, m_dashes.empty() ? 0 : std::fmod(m_way + length, m_dashLength));
  const float half = m_halfWidth, beside = half * std::abs(rise) / length, above = half * run / length;
  const float top = std::min(fromY, toY) - above, bottom = std::max(fromY, toY) + above;
  const float left = std::max(fromX - beside, static_cast<float>(m_clip.left)),
              right = std::min(toX + beside, static_cast<float>(m_clip.right));
  if (run < kLeast) return AddBar(left, right, top, bottom);
  const float slope = rise / run, high = half * length / run;
  const int slices = std::clamp(static_cast<int>(2 * std::abs(slope)), 1, kMostSlices);
  for (float at = left; at < right;) {
    const float column = std::floor(at);
    FinishBefore(static_cast<int>(column - 2 * half) - 2);
    const float next =
        std::min(right, column + (std::floor((at - column) * static_cast<float>(slices) + kLeast) + 1) /
                                     static_cast<float>(slices));
    if (next <= at) break;
    const float middle = fromY + ((at + next) / 2 - fromX) * slope;
    if (m_dashes.empty() || IsDrawnAt(way + ((at + next) / 2 - fromX) / run * length))
      AddSpan(static_cast<int>(column), next - at, std::max(top, middle - high),
              std::min(bottom, middle + high));
    at = next;
  }
}

bool CCurveRaster::IsDrawnAt(float way) const {
  way = std::fmod(std::max(way, 0.0F), m_dashLength);
  bool isDrawn = true;
  for (const float dash : m_dashes) {
    if (way < dash) break;
    way -= dash;
    isDrawn = !isDrawn;
  }
  return isDrawn;
}

void CCurveRaster::AddBar(float left, float right, float top, float bottom) {
  left = std::max(left, static_cast<float>(m_clip.left));
  right = std::min(right, static_cast<float>(m_clip.right));
  for (float at = left; at < right;) {
    const float column = std::floor(at), next = std::min(right, column + 1);
    FinishBefore(static_cast<int>(column - 2 * m_halfWidth) - 2);
    AddSpan(static_cast<int>(column), next - at, top, bottom);
    at = next;
  }
}

void CCurveRaster::AddSpan(int column, float part, float top, float bottom) {
  const auto height = static_cast<float>(m_clip.Height());
  top = std::clamp(top - static_cast<float>(m_clip.top), 0.0F, height);
  bottom = std::clamp(bottom - static_cast<float>(m_clip.top), 0.0F, height);
  if (column < m_first || column >= m_clip.right || top >= bottom) return;
  m_end = std::max(m_end, column + 1);
  CCover& cover = m_covers[static_cast<std::size_t>(column % kColumns)];
  const int low = static_cast<int>(top), high = static_cast<int>(bottom);
  const float belowTop = top - static_cast<float>(low), belowBottom = bottom - static_cast<float>(high);
  float* const steps = cover.steps.data();
  steps[low] += part * (1 - belowTop);
  steps[low + 1] += part * belowTop;
  steps[high] -= part * (1 - belowBottom);
  steps[high + 1] -= part * belowBottom;
  cover.low = std::min(cover.low, low);
  cover.high = std::max(cover.high, high + 1);
}

void CCurveRaster::FinishBefore(int column) {
  for (; m_first < std::min(column, m_end); ++m_first) Finish(m_first);
  m_first = std::max(m_first, std::min(column, m_clip.right));
}

void CCurveRaster::Finish(int column) {
  CCover& cover = m_covers[static_cast<std::size_t>(column % kColumns)];
  const int low = cover.low, high = std::min(cover.high, m_clip.Height() - 1);
  float covered = 0;
  std::uint32_t* pixel = high < 0 ? nullptr : m_pixels.first + (m_clip.top + low) * m_pixels.row + column;
  for (int i = low; i <= high; ++i, pixel += m_pixels.row) {
    covered += cover.steps[static_cast<std::size_t>(i)];
    cover.steps[static_cast<std::size_t>(i)] = 0;
    if (covered < kLeast) continue;
    *pixel =
        covered > 1 - kLeast ? m_colour : Mixed(*pixel, m_colour, static_cast<std::uint32_t>(covered * 256));
  }
  for (int i = high + 1; i <= cover.high; ++i) cover.steps[static_cast<std::size_t>(i)] = 0;
  cover.low = INT32_MAX;
  cover.high = -1;
}

}  // namespace vastra
