// The controls of dialogs. A dialog makes them from its template and finds them by caption.
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

// A field of one or of many lines. The text that was set keeps its bytes until the user edits it. Lines that
// are typed end with "\r\n".
class VASTRA_API CEdit : public CWnd {
 public:
  CEdit() = default;
  explicit CEdit(QWidget* widget);  // a line edit or a plain text edit
  void SetWindowText(const CString& text) override;
  CString GetWindowText() const override;
  // Marks count characters from the byte at offset of GetWindowText on, and scrolls them into view.
  void SelectAt(int offset, int count);
  CString GetSelectedText() const;
  void SelectAll();

 private:
  CString m_text;  // as set
};

// A list of texts. Indexes run from 0 to below GetCount().
class VASTRA_API CListBox : public CWnd {
 public:
  explicit CListBox(QListWidget* widget);
  static QListWidget* NewWidget(QWidget* parent);
  int GetCount() const;
  CString GetText(int index) const;
  int AddString(const CString& text);  // at the end; its index
  void SetText(int index, const CString& text);
  void DeleteString(int index);
  void ResetContent();
  int Find(const CString& text) const;  // byte for byte; -1: not there
  // The first entry behind index after that is text as a whole, whatever the letter case. The search goes on
  // at the top, up to after itself; -1: there is none.
  int FindStringExact(int after, const CString& text) const;
  // Of a list in which one entry can be marked; -1: none.
  int GetCurSel() const;
  void SetCurSel(int index);
  // Of a list in which several can.
  std::vector<int> GetSelItems() const;  // in order
  void SelectAll();

  void SetTexts(const CStringArray& texts);  // in place of what it holds
  CStringArray GetTexts() const;             // top to bottom
};

// A list whose entries can be dragged to another place, or moved there with Ctrl and the arrow keys.
class VASTRA_API CDragListBox : public CListBox {
 public:
  using CListBox::CListBox;
  static QListWidget* NewWidget(QWidget* parent);
};

// A list that drops down, of which one entry is selected; one that can be typed in, too.
class VASTRA_API CComboBox : public CWnd {
 public:
  explicit CComboBox(QComboBox* widget);
  // What is shown: an entry with the bytes it was added with, or what was typed.
  void SetWindowText(const CString& text) override;  // of one that can be typed in
  CString GetWindowText() const override;
  int GetCount() const;
  CString GetText(int index) const;
  int AddString(const CString& text);  // at the end; its index
  int GetCurSel() const;               // -1: none, or what is shown has been typed
  void SetCurSel(int index);
  int Find(const CString& text) const;  // byte for byte; -1: not there
};

}  // namespace vastra
