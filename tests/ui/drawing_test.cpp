#include "vastra/ui/drawing.h"

#include <gtest/gtest.h>

#include "tests/support/windows.h"

namespace vastra {
namespace {

constexpr COLORREF kWhite = 0xFFFFFF, kRed = RGB(255, 0, 0);

// A white picture of 100 by 100.
class CPicture : public CBitmap {
 public:
  CPicture() {
    CWnd none;
    CreateCompatibleBitmap(none, {100, 100});
    CDC(*this).FillRect({0, 0, 100, 100}, {kWhite});
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

TEST(Drawing, ShapesEndAtTheirEdgesOrAtTheClip) {
  const struct {
    const char* what;
    void (*draw)(CDC&);
    CRect box;
  } cases[] = {{"a filled rectangle lacks its right and bottom edge",
                [](CDC& dc) {
                  dc.FillRect({10, 20, 30, 40}, {kRed});
                },
                {10, 20, 30, 40}},
               {"nothing passes the clip",
                [](CDC& dc) {
                  dc.SaveDC();
                  dc.IntersectClipRect({0, 0, 15, 15});
                  dc.MoveTo({10, 10}), dc.LineTo({90, 10});
                },
                {10, 10, 15, 11}},
               {"the clip ends with the saved context",
                [](CDC& dc) {
                  dc.SaveDC();
                  dc.IntersectClipRect({0, 0, 15, 15});
                  dc.RestoreDC();
                  dc.MoveTo({10, 10}), dc.LineTo({90, 10});
                },
                {10, 10, 91, 11}}};
  for (const auto& [what, draw, box] : cases) {
    CPicture picture;
    {
      CDC dc(picture);
      draw(dc);
    }
    EXPECT_EQ(picture.Drawn(), box) << what;
  }
}

TEST(Drawing, ATextIsPlacedByItsAlignmentAndItsAngle) {
  const struct {
    UINT align;
    int escapement;
    CRect room;  // the text at 50, 50 is inside
  } cases[] = {{TA_LEFT, 0, {49, 50, 100, 75}},
               {TA_RIGHT, 0, {0, 50, 51, 75}},
               {TA_CENTER, 0, {25, 50, 75, 75}},
               {TA_RIGHT, 900, {50, 49, 75, 100}},  // reads upward, ends at the point
               {TA_LEFT, 900, {50, 0, 75, 51}}};
  for (const auto& [align, escapement, room] : cases) {
    CPicture picture;
    {
      CDC dc(picture);
      dc.SelectObject(CFont({.height = 20, .escapement = escapement, .face = "Times", .hasSerifs = true}));
      dc.SaveDC();
      dc.SelectObject(CFont());
      dc.RestoreDC();
      dc.SetTextAlign(align);
      dc.TextOut({50, 50}, "1234");
    }
    const CRect drawn = picture.Drawn();
    EXPECT_FALSE(drawn.IsEmpty());
    EXPECT_TRUE(drawn.left >= room.left && drawn.top >= room.top && drawn.right <= room.right &&
                drawn.bottom <= room.bottom)
        << align << " " << escapement << ": " << drawn.left << " " << drawn.top << " " << drawn.right << " "
        << drawn.bottom;
  }
}

TEST(Drawing, AFontHasTheRequestedHeightAndWidth) {
  EXPECT_NEAR(CFont({.height = 30, .face = "Times"}).Height(), 30, 2);
  const auto widthAt = [](int width) {
    CPicture picture;
    {
      CDC dc(picture);
      dc.SelectObject(CFont({.height = 20, .width = width, .face = "Times"}));
      dc.TextOut({0, 0}, "0000");
    }
    return picture.Drawn().Width();
  };
  EXPECT_GT(widthAt(12), widthAt(5) * 3 / 2);
  EXPECT_EQ(widthAt(-8), widthAt(8));
}

TEST(Drawing, RowsOfAPictureMoveBothWays) {
  for (const int dy : {-30, 30}) {
    CPicture picture;
    CDC(picture).FillRect({0, 40, 100, 50}, {kRed});
    picture.ScrollRows(dy);
    EXPECT_EQ(picture.GetPixel({5, 45 + dy}), kRed) << dy;
    EXPECT_EQ(picture.GetPixel({5, 39 + dy}), kWhite) << dy;
    EXPECT_EQ(picture.GetPixel({5, 50 + dy}), kWhite) << dy;
  }
}

TEST(Drawing, APictureOfAnImpossibleSizeIsNotCreated) {
  CWnd none;
  CBitmap picture;
  for (const CSize size : {CSize{0, 10}, {10, -1}, {1 << 30, 1 << 30}}) {
    EXPECT_EQ(picture.CreateCompatibleBitmap(none, size), 0);
    EXPECT_FALSE(picture.IsCreated());
  }
}

}  // namespace
}  // namespace vastra
