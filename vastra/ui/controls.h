// The controls of dialogs. A dialog creates them from its template and finds them by caption.
#pragma once

#include <vector>

#include "vastra/platform/array.h"
#include "vastra/ui/window.h"

class QComboBox;
class QLabel;
class QAbstractButton;
class QListWidget;

namespace vastra {

// A push button, a check box or a radio button.
class VASTRA_API CButton : public CWnd {
 public:
  explicit CButton(QAbstractButton* widget);
  void SetWindowText(const CString& text) override;
  CString GetWindowText() const override;
  void SetCheck(int check);
  int GetCheck() const;
};

class VASTRA_API CStatic : public CWnd {
 public:
  explicit CStatic(QLabel* widget);
  void SetWindowText(const CString& text) override;
  CString GetWindowText() const override;
};

// A field of one or more lines. A text that was set keeps its bytes until the user edits it. Typed lines end
// with "\r\n".
class VASTRA_API CEdit : public CWnd {
 public:
  CEdit() = default;
  explicit CEdit(QWidget* widget);  // a line edit or a plain text edit
  void SetWindowText(const CString& text) override;
  CString GetWindowText() const override;
  // Selects count characters from the byte offset in GetWindowText on and scrolls them into view.
  void SelectAt(int offset, int count);
  CString GetSelectedText() const;
  void SelectAll();

 private:
  CString m_text;  // that was set
};

// A list of strings. Indexes are from 0 to GetCount() - 1.
class VASTRA_API CListBox : public CWnd {
 public:
  explicit CListBox(QListWidget* widget);
  static QListWidget* NewWidget(QWidget* parent);
  int GetCount() const;
  CString GetText(int index) const;
  int AddString(const CString& text);  // at the end; returns its index
  void SetText(int index, const CString& text);
  void DeleteString(int index);
  void ResetContent();
  int Find(const CString& text) const;  // byte for byte; -1: not found
  // The first entry after index after that equals text, ignoring case. The search continues at the top, up to
  // and including after; -1: not found.
  int FindStringExact(int after, const CString& text) const;
  // Of a list with single selection; -1: none.
  int GetCurSel() const;
  void SetCurSel(int index);
  // Of a list with multiple selection.
  std::vector<int> GetSelItems() const;  // in order
  void SelectAll();

  void SetTexts(const CStringArray& texts);  // replaces all entries
  CStringArray GetTexts() const;             // top to bottom
};

// A list whose entries can be moved by dragging, or with Ctrl and the arrow keys.
class VASTRA_API CDragListBox : public CListBox {
 public:
  using CListBox::CListBox;
  static QListWidget* NewWidget(QWidget* parent);
};

// A drop-down list; some can be typed in.
class VASTRA_API CComboBox : public CWnd {
 public:
  explicit CComboBox(QComboBox* widget);
  // The shown text: an entry, with the bytes that were added, or the typed text.
  void SetWindowText(const CString& text) override;  // only if it can be typed in
  CString GetWindowText() const override;
  int GetCount() const;
  CString GetText(int index) const;
  int AddString(const CString& text);  // at the end; returns its index
  int GetCurSel() const;               // -1: none, or a typed text
  void SetCurSel(int index);
  int Find(const CString& text) const;  // byte for byte; -1: not found
};

}  // namespace vastra
