// Drawing: contexts on windows and on pictures in memory, with pens, brushes and fonts. Coordinates are whole
// device-independent pixels; on a screen with a scale factor a picture has that resolution, too.
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

// A font request: the platform chooses the nearest font.
struct CFontRequest {
  int height = 0;          // of a character cell, pixels; below 0: of the letters only; 0: default
  int width = 0;           // of an average character, pixels, sign ignored; 0: default of the face
  int escapement = 0;      // tenths of a degree, counterclockwise
  int weight = 400;        // 400 normal, 700 bold
  const char* face = "";   // "": the default
  bool hasSerifs = false;  // if the face does not exist
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

  // Makes a picture of size pixels with the resolution of the screen of window; its contents are undefined.
  // 1, or 0 without a picture if there is no memory or size is empty.
  int CreateCompatibleBitmap(const CWnd& window, CSize size);
  void DeleteObject();
  bool IsCreated() const;
  CSize Size() const;                     // of CreateCompatible
  COLORREF GetPixel(CPoint point) const;  // of a point in it
  // Scrolls the picture by dy rows; the uncovered rows do not change. 1, or 0 without a change if dy rows are
  // not whole pixels of the screen.
  int ScrollRows(int dy);
  const QImage& Image() const { return *m_image; }
  QImage& Image() { return *m_image; }

 private:
  std::unique_ptr<QImage> m_image;
};

constexpr UINT TA_LEFT = 0, TA_RIGHT = 2, TA_CENTER = 6;

// A device context. The background of text is transparent until it is set. A new context has a black pen of
// width 1, the default font, and the text colour of the window, or black on a picture.
class VASTRA_API CDC {
 public:
  explicit CDC(CBitmap& bitmap);  // bitmap must exist as long as the context
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
  // By the alignment at is the left end, right end or middle of the upper edge of the text. A font with an
  // escapement turns the text around at.
  void TextOut(CPoint at, const CString& text);
  // At the upper left of rect, on one line, not clipped.
  void DrawText(const CString& text, const CRect& rect);
  // Copies picture; at: its upper left corner.
  void BitBlt(CPoint at, const CBitmap& picture);

 private:
  void Reset(COLORREF textColour);

  int PolylineOnPicture(std::span<const CPoint> points);

  std::unique_ptr<QPainter> m_painter;
  CBitmap* m_picture = nullptr;  // target; null: a window
  CPoint m_at;
  COLORREF m_textColour = 0;
  std::optional<COLORREF> m_ground;  // background of text
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
