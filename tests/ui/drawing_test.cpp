#include "vastra/ui/drawing.h"

#include "tests/support/windows.h"

namespace vastra {
namespace {

constexpr COLORREF kWhite = 0xFFFFFF, kRed = RGB(255, 0, 0);

// A white picture of 100 by 100, with what draw adds.
class CPicture : public CBitmap {
 public:
  explicit CPicture(const std::function<void(CDC&)>& draw) {
    CWnd none;
    CreateCompatibleBitmap(none, {100, 100});
    CDC dc(*this);
    dc.FillRect({0, 0, 100, 100}, {kWhite});
    draw(dc);
  }

  // The smallest rectangle around all drawn pixels.
  CRect Drawn() const {
    CRect box{100, 100, 0, 0};
    for (int y = 0; y < 100; ++y)
      for (int x = 0; x < 100; ++x)
        if (GetPixel({x, y}) != kWhite)
          box = {std::min(box.left, x), std::min(box.top, y), std::max(box.right, x + 1),
                 std::max(box.bottom, y + 1)};
    return box;
  }
};

TEST(Drawing, ShapesEndAtTheirEdgesOrAtTheClipUntilItIsRestored) {
  const CPicture filled([](CDC& dc) { dc.FillRect({10, 20, 30, 40}, {kRed}); });
  EXPECT_EQ(filled.Drawn(), (CRect{10, 20, 30, 40}));
  for (const bool restores : {false, true}) {
    const CPicture clipped([&](CDC& dc) {
      dc.SaveDC();
      dc.IntersectClipRect({0, 0, 15, 15});
      if (restores) dc.RestoreDC();
      dc.MoveTo({10, 10}), dc.LineTo({90, 10});
      if (!restores) dc.RestoreDC();
    });
    EXPECT_EQ(clipped.Drawn(), (CRect{10, 10, restores ? 91 : 15, 11}));
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
                {TA_RIGHT, 900, {50, 49, 25, 51}},  // reads upward, ends at the point
                {TA_LEFT, 900, {50, 0, 25, 51}}};
  for (const auto& row : kCases) {
    const CPicture text([&](CDC& dc) {
      dc.SelectObject(
          CFont({.height = 20, .escapement = row.escapement, .face = "Times", .hasSerifs = true}));
      dc.SaveDC();
      dc.SelectObject(CFont());
      dc.RestoreDC();
      dc.SetTextAlign(row.align);
      dc.TextOut({50, 50}, "1234");
    });
    const CRect box = text.Drawn();
    EXPECT_TRUE(row.room.contains(QRect(box.left, box.top, box.Width(), box.Height())))
        << row.align << " " << row.escapement;
  }
}

TEST(Drawing, AFontHasTheRequestedHeightAndWidth) {
  EXPECT_NEAR(CFont({.height = 30, .face = "Times"}).Height(), 30, 2);
  const auto widthAt = [](int width) {
    const CPicture text([&](CDC& dc) {
      dc.SelectObject(CFont({.height = 20, .width = width, .face = "Times"}));
      dc.TextOut({0, 0}, "0000");
    });
    return text.Drawn().Width();
  };
  EXPECT_GT(widthAt(12), widthAt(5) * 3 / 2);
  EXPECT_EQ(widthAt(-8), widthAt(8));
}

TEST(Drawing, RowsOfAPictureMoveBothWays) {
  for (const int dy : {-30, 30}) {
    CPicture picture([](CDC& dc) { dc.FillRect({0, 40, 100, 50}, {kRed}); });
    picture.ScrollRows(dy);
    EXPECT_EQ(picture.Drawn(), (CRect{0, 40 + dy, 100, 50 + dy}));
  }
}

TEST(Drawing, APictureOfAnImpossibleSizeIsNotCreated) {
  CWnd none;
  CBitmap picture;
  for (const CSize size : {CSize{0, 10}, {10, -1}, {1 << 30, 1 << 30}})
    EXPECT_EQ(picture.CreateCompatibleBitmap(none, size) + picture.IsCreated(), 0);
}

}  // namespace
}  // namespace vastra
