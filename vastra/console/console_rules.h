// The rules of a console without a window. CConsoleStore: its lines and the position of the view.
// CConsoleRows: the rows of a picture to be drawn again. CConsolePlace: the saved place as a string.
#pragma once

#include <cstdint>
#include <deque>

#include "vastra/platform/string.h"
#include "vastra/ui/geometry.h"

namespace vastra {

// The client area: its height and the height of a line, pixels.
struct CConsoleArea {
  int height = 0;
  int line = 1;  // 1 or more

  bool operator==(const CConsoleArea&) const = default;
};

// The newest lines with their colours, and the view: its top line, the scroll position, and whether it
// follows new lines. Position and top line correspond until the height of the window changes.
class CConsoleStore {
 public:
  static constexpr int kMaxLines = 200;
  static constexpr int kPage = 5;  // lines, independent of the height of the window
  static constexpr int kNone = -1;

  struct CLine {
    CString text;
    COLORREF colour;
  };

  // Adds a line at the end. A view at the end follows it.
  void Add(const CString& text, COLORREF colour, CConsoleArea area);
  void Clear();
  // code: the action of the scroll bar, SB_...
  void Scroll(UINT code, int position);
  // Called after painting: notes whether the last line was visible. New lines do not change that, so the
  // result is the same whether they are painted one by one or together.
  void Paint(CConsoleArea area);

  int GetCount() const { return static_cast<int>(m_lines.size()); }
  const CLine& GetLine(int index) const { return m_lines[static_cast<std::size_t>(index)]; }
  // Index of the top line; kNone if the view is empty or after the last line.
  int GetTop() const { return m_top; }
  // The number of the top line, or of the next new line. Lines are numbered in order and keep their numbers.
  std::int64_t GetTopNumber() const { return m_removedCount + (m_top == kNone ? GetCount() : m_top); }
  bool IsAtEnd() const { return m_atEnd; }
  int GetScrollPos() const { return m_position; }
  int GetScrollMax() const { return m_maxPosition; }  // the minimum is 0

 private:
  int LineAt(int position) const { return position < GetCount() ? position : kNone; }
  void Advance();

  std::deque<CLine> m_lines;        // oldest first
  std::int64_t m_removedCount = 0;  // number of lines that were dropped or cleared
  int m_top = kNone;
  int m_position = 0;
  int m_maxPosition = kMaxLines;
  bool m_atEnd = true;
};

// The rows in a picture of a store. When the view scrolls, rows that are completely in the picture are moved
// and not drawn again.
class CConsoleRows {
 public:
  struct CStep {
    int moved;     // rows by which the picture scrolls up
    int firstRow;  // drawing starts here after that, down to the end
  };
  // Returns what has to be done so that the picture shows store.
  CStep Show(const CConsoleStore& store, CConsoleArea area);
  // The contents of the picture are invalid.
  void Forget() { m_first = m_end = 0; }

 private:
  CConsoleArea m_area;
  std::int64_t m_first = 0, m_end = 0;  // the numbers of the lines with complete rows
};

// "x,y,width,height".
struct CConsolePlace {
  int x = 0, y = 0, width = 0, height = 0;

  CString ToText() const;
  // Reads the leading numbers that are valid and within the limits of screens; the others do not change.
  void TakeFrom(const CString& text);
};

}  // namespace vastra
