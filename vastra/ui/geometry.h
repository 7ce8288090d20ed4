// Points, sizes and rectangles in whole pixels. The right and the bottom edge do not belong to a rectangle.
#pragma once

namespace vastra {

struct CPoint {
  int x = 0;
  int y = 0;

  bool operator==(const CPoint&) const = default;
};

struct CSize {
  int cx = 0;
  int cy = 0;

  bool operator==(const CSize&) const = default;
};

struct CRect {
  int left = 0;
  int top = 0;
  int right = 0;
  int bottom = 0;

  static CRect Of(CPoint corner, CSize size) {
    return {corner.x, corner.y, corner.x + size.cx, corner.y + size.cy};
  }

  int Width() const { return right - left; }
  int Height() const { return bottom - top; }
  CPoint TopLeft() const { return {left, top}; }
  CSize Size() const { return {Width(), Height()}; }
  bool IsEmpty() const { return right <= left || bottom <= top; }
  bool PtInRect(CPoint point) const {
    return point.x >= left && point.x < right && point.y >= top && point.y < bottom;
  }
  bool Meets(const CRect& other) const {
    return left < other.right && other.left < right && top < other.bottom && other.top < bottom;
  }
  CRect Moved(int dx, int dy) const { return {left + dx, top + dy, right + dx, bottom + dy}; }

  bool operator==(const CRect&) const = default;
};

}  // namespace vastra
