#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "vastra/charts/curve_raster.h"

namespace vastra {
namespace {

constexpr int kWide = 60, kHigh = 40;
constexpr std::uint32_t kWhite = 0xFFFFFFFF, kBlack = 0xFF000000;

// A picture with a frame that nothing may touch; a moment is a pixel, and a value, from the bottom, too.
class CurveRaster : public ::testing::Test {
 protected:
  void Draw(const std::vector<CCurveStep>& steps, double width = 1, std::vector<float> dashes = {}) {
    m_pixels.assign(std::size_t{kWide} * kHigh, kWhite);
    const CPlotScale scale = {{0, 5000}, {0, 30}, 5, 5, 50, 30};
    CCurveRaster().Draw({m_pixels.data(), kWide}, {5, 5, kWide - 5, kHigh - 5}, steps, scale, width, kBlack,
                        dashes);
  }
  // From 0 to 1: how much of the pixel is covered, at a column and a height of the plot.
  double Cover(int x, int y) const {
    const std::size_t place = static_cast<std::size_t>((kHigh - 6 - y) * kWide + x + 5);
    return 1 - (m_pixels[place] & 0xFF) / 255.0;
  }
  double Ink(int fromX = 0, int toX = 50) const {
    double ink = 0;
    for (int x = fromX; x < toX; ++x)
      for (int y = 0; y < 30; ++y) ink += Cover(x, y);
    return ink;
  }
  bool IsFrameClean() const {
    for (int y = 0; y < kHigh; ++y)
      for (int x = 0; x < kWide; ++x) {
        const bool isInside = x >= 5 && x < kWide - 5 && y >= 5 && y < kHigh - 5;
        if (!isInside && m_pixels[static_cast<std::size_t>(y * kWide + x)] != kWhite) return false;
      }
    return true;
  }
  static CCurveStep Row(double x, float y, bool isJoined = true) {
    const auto moment = static_cast<CMoment>(x * 100);
    return {moment, moment, y, y, y, y, 1, isJoined};
  }

  std::vector<std::uint32_t> m_pixels;
};

TEST_F(CurveRaster, ALineHasTheAreaOfItsLengthAndWidth) {
  const struct {
    double fromX, toX;
    float fromY, toY;
    double width;
  } kLines[] = {{5, 45, 15, 15, 1}, {5, 45, 15.3F, 15.3F, 1.5}, {5, 45, 5, 25, 1},    {5.4, 40.7, 25, 8, 2},
                {20, 30, 2, 27, 1}, {20, 22, 27, 3, 1.5},       {20, 20.4, 3, 27, 1}, {3.2, 46.8, 3, 26, 4}};
  for (const auto& line : kLines) {
    Draw({Row(line.fromX, line.fromY), Row(line.toX, line.toY)}, line.width);
    const double length = std::hypot(line.toX - line.fromX, double(line.toY - line.fromY));
    EXPECT_NEAR(Ink() / (length * line.width), 1, 0.06) << line.fromX << " to " << line.toX;
    EXPECT_GT(
        Cover(static_cast<int>((line.fromX + line.toX) / 2), static_cast<int>((line.fromY + line.toY) / 2)),
        0.3);
    EXPECT_TRUE(IsFrameClean());
  }
}

// A wide line stays wide where it has several rows for each pixel.
TEST_F(CurveRaster, ADenseLineIsAsWideAsOneOfFewRows) {
  for (const float slope : {0.3F, 1.0F, 2.5F})
    for (const double width : {3.0, 4.5}) {
      std::vector<CCurveStep> line;
      for (double x = 10; x <= 20.01; x += 0.25)
        line.push_back(Row(x, 2 + slope * static_cast<float>(x - 10), x > 10));
      Draw(line, width);
      const double dense = Ink();
      Draw({line.front(), line.back()}, width);
      EXPECT_NEAR(dense / Ink(), 1, 0.2) << slope << " " << width;
    }
}

// A dash is as long as it should be, however the line is cut in rows and whatever its slope is.
TEST_F(CurveRaster, DashesFollowTheLine) {
  for (const double step : {0.7, 3.0, 40.0})
    for (const float slope : {0.0F, 0.5F, -0.6F}) {
      std::vector<CCurveStep> line;
      for (double x = 2; x <= 42.01; x += step)
        line.push_back(Row(x, (slope < 0 ? 28 : 3) + slope * static_cast<float>(x - 2), x > 2));
      Draw(line);
      const double whole = Ink();
      Draw(line, 1, {4, 2});
      EXPECT_NEAR(Ink() / whole, 0.667, 0.08) << step << " " << slope;
    }
}

// Columns of few or many rows, with gaps: each value is on a pixel that is drawn, a gap is empty.
TEST_F(CurveRaster, NoValueIsLostAndAGapIsEmpty) {
  std::mt19937 random(5);
  for (int round = 0; round < 300; ++round) {
    std::vector<CCurveStep> steps;
    std::vector<std::pair<int, int>> gaps;
    const int most = 1 << random() % 9;
    for (CMoment moment = -300; moment < 5300;) {
      const auto value = [&] { return static_cast<float>(random() % 300) / 10; };
      CCurveStep step = Row(double(moment) / 100, value());
      if (most < 100 && random() % 2) {
        step.to += most / 2;
        step.last = value();
        step.least = std::min({step.first, step.last, value()});
        step.greatest = std::max({step.first, step.last, value()});
        step.values = 3;
      }
      steps.push_back(step);
      moment = step.to + 1 + most;
      steps.back().isJoined = steps.size() > 1;
      if (random() % 30) continue;
      moment += 600;
      gaps.emplace_back(static_cast<int>(step.to / 100) + 2, static_cast<int>(moment / 100) - 2);
      const bool isAway = random() % 2;  // a row without a value is as good as none
      if (isAway) {
        steps.push_back(Row(double(step.to) / 100 + 1, 0));
        steps.back().values = 0;
      }
      steps.push_back(Row(double(moment) / 100, 15, isAway));
      moment += 1 + most;
    }
    Draw(steps);
    ASSERT_TRUE(IsFrameClean());
    for (std::size_t i = 1; i + 1 < steps.size(); ++i) {
      const CCurveStep& step = steps[i];
      const bool isFirst = !step.isJoined || steps[i - 1].values == 0,
                 isLast = !steps[i + 1].isJoined || steps[i + 1].values == 0;
      if (step.from < 0 || step.from >= 5000 || step.values == 0 || (isFirst && isLast && step.values == 1))
        continue;
      for (const float value : {step.least, step.greatest}) {
        // Half of a pixel to each side: a line can end between two pixels.
        double cover = 0;
        for (const double beside : {-0.5, 0.0, 0.5})
          for (const double above : {-0.5, 0.0, 0.5}) {
            const int x = static_cast<int>(std::floor(double(step.from) / 100 + beside)),
                      y = static_cast<int>(std::floor(double(value) + above));
            if (x >= 0 && x < 50 && y >= 0 && y < 30) cover = std::max(cover, Cover(x, y));
          }
        ASSERT_GT(cover, 0.2) << "round " << round << ": " << step.from << " " << value;
      }
    }
    for (const auto& [from, to] : gaps)
      ASSERT_EQ(Ink(std::max(from, 0), std::min(to, 50)), 0) << "round " << round << ": " << from;
  }
}

}  // namespace
}  // namespace vastra
