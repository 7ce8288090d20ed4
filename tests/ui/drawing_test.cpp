#include "vastra/ui/drawing.h"

#include "tests/support/windows.h"
#include "vastra/ui/window.h"

namespace vastra {
namespace {

constexpr COLORREF kWhite = 0xFFFFFF;

// The smallest rectangle around what draw adds to a white picture of 100 by 100.
QRect DrawnBy(const std::function<void(CDC&)>& draw) {
  CWnd none;
  CBitmap picture;
  picture.CreateCompatibleBitmap(none, {100, 100});
  CDC dc(picture);
  dc.FillRect({0, 0, 100, 100}, {kWhite});
  draw(dc);
  QRect box;
  for (int y = 0; y < 100; ++y)
    for (int x = 0; x < 100; ++x)
      if (picture.GetPixel({x, y}) != kWhite) box |= QRect(x, y, 1, 1);
  return box;
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
