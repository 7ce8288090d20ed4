#include "vastra/ui/drawing.h"

#include "tests/support/windows.h"
#include "vastra/ui/window.h"

namespace vastra {
namespace {

constexpr COLORREF kWhite = 0xFFFFFF, kRed = RGB(255, 0, 0);

// The smallest rectangle around what draw adds to a white picture of 100 by 100, whose rows then move by dy.
QRect DrawnBy(const std::function<void(CDC&)>& draw, int dy = 0) {
  CWnd none;
  CBitmap picture;
  picture.CreateCompatibleBitmap(none, {100, 100});
  CDC dc(picture);
  dc.FillRect({0, 0, 100, 100}, {kWhite});
  draw(dc);
  picture.ScrollRows(dy);
  QRect box;
  for (int y = 0; y < 100; ++y)
    for (int x = 0; x < 100; ++x)
      if (picture.GetPixel({x, y}) != kWhite) box |= QRect(x, y, 1, 1);
  return box;
}

TEST(Drawing, ShapesEndAtTheirEdgesOrAtTheClipUntilItIsRestored) {
  for (const int dy : {-30, 0, 30})
    EXPECT_EQ(DrawnBy([](CDC& dc) { dc.FillRect({9, 40, 30, 60}, {kRed}); }, dy), QRect(9, 40 + dy, 21, 20));
  for (const bool restores : {false, true}) {
    const auto draw = [&](CDC& dc) {
      dc.SaveDC();
      dc.IntersectClipRect({0, 0, 15, 15});
      if (restores) dc.RestoreDC();
      dc.MoveTo({10, 10}), dc.LineTo({90, 10});
    };
    EXPECT_EQ(DrawnBy(draw), QRect(10, 10, restores ? 81 : 5, 1));
  }
}

TEST(Drawing, ATextIsPlacedByItsAlignmentAndItsAngle) {
  const struct {
    UINT align;
    int escapement;
    QRect room;  // the text at 50, 50 is inside
  } kCases[] = {{TA_LEFT, 0, {49, 50, 51, 25}},
                {TA_RIGHT, 0, {0, 50, 51, 25}},
                {TA_CENTER, 0, {25, 50, 50, 25}},
                {TA_RIGHT, 900, {50, 49, 25, 51}}};  // reads upward, ends at the point
  for (const auto& row : kCases) {
    const QRect text = DrawnBy([&](CDC& dc) {
      dc.SelectObject(
          CFont({.height = 20, .escapement = row.escapement, .face = "Times", .hasSerifs = true}));
      dc.SaveDC();
      dc.SelectObject(CFont());
      dc.RestoreDC();
      dc.SetTextAlign(row.align);
      dc.TextOut({50, 50}, "1234");
    });
    EXPECT_TRUE(row.room.contains(text)) << row.align << " " << row.escapement;
  }
}

TEST(Drawing, AFontHasTheRequestedHeightAndWidth) {
  EXPECT_NEAR(CFont({.height = 30, .face = "Times"}).Height(), 30, 2);
  const auto widthAt = [](int width) {
    const auto draw = [&](CDC& dc) {
      dc.SelectObject(CFont({.height = 20, .width = width, .face = "Times"}));
      dc.TextOut({0, 0}, "0000");
    };
    return DrawnBy(draw).width();
  };
  EXPECT_GT(widthAt(12), widthAt(5) * 3 / 2);
  EXPECT_EQ(widthAt(-8), widthAt(8));
}

}  // namespace
}  // namespace vastra
