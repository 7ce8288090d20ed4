// What a console holds and where in it its view stands, apart from any window: CConsoleStore. Which rows of a
// picture of it are to be drawn anew: CConsoleRows. How its place is kept as a text: CConsolePlace.
#pragma once

#include <cstdint>
#include <deque>

#include "vastra/platform/string.h"
#include "vastra/ui/geometry.h"

namespace vastra {

// The client area: its height and that of a line, pixels.
struct CConsoleArea {
  int height = 0;
  int line = 1;  // 1 or more

  bool operator==(const CConsoleArea&) const = default;
};

// The newest lines, each with its colour, and the view on them: the line at its top, the scroll position, and
// whether it follows new lines. Position and top line go together until the window's height changes.
class CConsoleStore {
 public:
  static constexpr int kMaxLines = 200;
  static constexpr int kPage = 5;  // lines, however high the window is
  static constexpr int kNone = -1;

  struct CLine {
    CString text;
    COLORREF colour;
  };

  // A new line at the end. A view that stands at the end moves on with it.
  void Add(const CString& text, COLORREF colour, CConsoleArea area);
  void Clear();
  // What the user asked of the scroll bar, an SB_ code.
  void Scroll(UINT code, int position);
  // The view was painted: finds out whether its end was in it. Lines alone never change that, so that it does
  // not matter whether they are painted one by one or together.
  void Paint(CConsoleArea area);

  int GetCount() const { return static_cast<int>(m_lines.size()); }
  const CLine& GetLine(int index) const { return m_lines[static_cast<std::size_t>(index)]; }
  // Index of the line at the top, kNone if the view is empty or lies behind the last line.
  int GetTop() const { return m_top; }
  // The number of the line at the top, or of the next one to come. Lines are numbered as they come, for good.
  std::int64_t GetTopNumber() const { return m_gone + (m_top == kNone ? GetCount() : m_top); }
  bool IsAtEnd() const { return m_atEnd; }
  int GetScrollPos() const { return m_position; }
  int GetScrollMax() const { return m_maxPosition; }  // the range begins at 0

 private:
  int LineAt(int position) const { return position < GetCount() ? position : kNone; }
  void Advance();

  std::deque<CLine> m_lines;  // oldest first
  std::int64_t m_gone = 0;    // lines that were dropped or cleared
  int m_top = kNone;
  int m_position = 0;
  int m_maxPosition = kMaxLines;
  bool m_atEnd = true;
};

// What a picture of a store shows. When the view moves on, rows that are wholly in the picture are moved, not
// drawn again.
class CConsoleRows {
 public:
  struct CStep {
    int moved;     // rows by which the picture goes up
    int firstRow;  // where drawing begins behind that: all below is drawn
  };
  // The picture is to show store; what it takes.
  CStep Show(const CConsoleStore& store, CConsoleArea area);
  // The picture shows nothing of use.
  void Forget() { m_first = m_end = 0; }

 private:
  CConsoleArea m_area;
  std::int64_t m_first = 0, m_end = 0;  // the numbers of the lines whose rows are whole
};

// "x,y,width,height".
struct CConsolePlace {
  int x = 0, y = 0, width = 0, height = 0;

  CString ToText() const;
  // Takes as many leading numbers as can be read and lie within what screens may be; the others stay.
  void TakeFrom(const CString& text);
};

}  // namespace vastra
