// Drawing: contexts on windows and on pictures in memory, with the pens, brushes and fonts they are given.
// Coordinates are whole pixels of the window's own scale; on a finer screen a picture is finer too.
#pragma once

#include <memory>
#include <optional>
#include <span>

#include "vastra/platform/string.h"
#include "vastra/ui/geometry.h"

class QFont;
class QImage;
class QPainter;

namespace vastra {

class CWnd;

constexpr COLORREF RGB(int red, int green, int blue) {
  return static_cast<COLORREF>(red) | static_cast<COLORREF>(green) << 8 | static_cast<COLORREF>(blue) << 16;
}

// A solid pen.
struct CPen {
  int width = 1;
  COLORREF colour = 0;
};

// A solid brush.
struct CBrush {
  COLORREF colour = 0;
};

// What a font is to be: the platform finds the nearest.
struct CFontRequest {
  int height = 0;          // of a character cell, pixels; below 0: of the letters alone; 0: the default's
  int width = 0;           // of an average character, pixels, its sign ignored; 0: as the face has it
  int escapement = 0;      // tenths of a degree, counterclockwise
  int weight = 400;        // 400 normal, 700 bold
  const char* face = "";   // "": the default
  bool hasSerifs = false;  // where there is no such face
};

class VASTRA_API CFont {
 public:
  CFont();  // the default font of windows
  explicit CFont(const CFontRequest& request);
  CFont(const CFont& other);
  CFont& operator=(const CFont& other);
  ~CFont();

  int Height() const;  // of a line, pixels
  int Escapement() const { return m_escapement; }
  const QFont& Font() const { return *m_font; }

 private:
  std::unique_ptr<QFont> m_font;
  int m_escapement = 0;
};

// A picture in memory.
class VASTRA_API CBitmap {
 public:
  CBitmap();
  ~CBitmap();
  CBitmap(const CBitmap&) = delete;
  CBitmap& operator=(const CBitmap&) = delete;

  // A new picture of size pixels, as fine as the screen of window; what it shows is undefined. 1, or 0 if
  // there is no room for it or size is empty: there is then no picture.
  int CreateCompatibleBitmap(const CWnd& window, CSize size);
  void DeleteObject();
  bool IsCreated() const;
  CSize Size() const;                     // as asked for
  COLORREF GetPixel(CPoint point) const;  // of a point in it
  // Moves what it shows by dy rows; the rows that come free keep what they had. 1, or 0 if those are no whole
  // pixels of the screen: nothing has moved.
  int ScrollRows(int dy);
  const QImage& Image() const { return *m_image; }
  QImage& Image() { return *m_image; }

 private:
  std::unique_ptr<QImage> m_image;
};

constexpr UINT TA_LEFT = 0, TA_RIGHT = 2, TA_CENTER = 6;

// A context. Texts are drawn on a transparent ground until one is set. A fresh context has a black pen of
// width 1, the default font, and the window's text colour; on a picture that is black.
class VASTRA_API CDC {
 public:
  explicit CDC(CBitmap& bitmap);  // draws into bitmap, which outlives the context
  explicit CDC(CWnd& window);     // only while the window paints
  ~CDC();
  CDC(const CDC&) = delete;
  CDC& operator=(const CDC&) = delete;

  void SaveDC();
  void RestoreDC();
  void IntersectClipRect(const CRect& rect);

  void SelectObject(const CPen& pen);
  void SelectObject(const CFont& font);
  void SetTextColor(COLORREF colour);
  void SetBkColor(COLORREF colour) { m_ground = colour; }
  void SetTextAlign(UINT align) { m_align = align; }

  void FillRect(const CRect& rect, const CBrush& brush);
  void MoveTo(CPoint point) { m_at = point; }
  void LineTo(CPoint point);
  void Polyline(std::span<const CPoint> points);
  // With the alignment: at is the left end, the right end or the middle of the text's upper edge. A font with
  // an escapement turns the text about at.
  void TextOut(CPoint at, const CString& text);
  // At the upper left of rect, on one line, not cut off at its edges.
  void DrawText(const CString& text, const CRect& rect);
  // Copies picture, its upper left corner at at.
  void BitBlt(CPoint at, const CBitmap& picture);

 private:
  void Reset(COLORREF textColour);

  int PolylineOnPicture(std::span<const CPoint> points);

  std::unique_ptr<QPainter> m_painter;
  CBitmap* m_picture = nullptr;  // that is drawn into; null: a window
  CPoint m_at;
  COLORREF m_textColour = 0;
  std::optional<COLORREF> m_ground;  // of texts
  UINT m_align = TA_LEFT;
  int m_escapement = 0;
  struct CSaved {
    COLORREF textColour;
    std::optional<COLORREF> ground;
    UINT align;
    int escapement;
  };
  std::unique_ptr<CSaved> m_saved;
};

}  // namespace vastra
