// CDialog: a dialog made from a template, modal or modeless. Its controls are found by their captions.
//
//   constexpr CControl kControls[] = {{CControl::edit, "New Variable", {7, 17, 150, 14}}, ...};
//   constexpr CDialogTemplate kTemplate = {"Insert Variable", {164, 60}, kControls};
//
// Templates use dialog units: a quarter of the average width and an eighth of the height of a character of
// the dialog's font.
#pragma once

#include <functional>
#include <memory>
#include <span>

#include "vastra/platform/prompt.h"
#include "vastra/ui/controls.h"

class QButtonGroup;

namespace vastra {

struct CControl {
  enum EKind {
    groupBox,
    text,
    button,
    defaultButton,
    checkBox,
    firstRadioButton,  // starts a group, of which one button is checked
    radioButton,       // belongs to the group before it
    edit,
    numberEdit,     // accepts digits only
    multiLineEdit,  // Return inserts a line end
    listBox,        // single selection
    multiListBox,   // multiple selection
    dragListBox,    // single selection, entries can be dragged
    comboBox,       // a drop-down list
    comboEdit,      // the same, or a typed text
    tabs,           // of the pages of a property sheet
    grid,           // for a CGXGridWnd
    frame,          // an area with sunken edges
    area,           // an area without edges
  };
  // Edges that move with the right or bottom edge of the dialog when it is resized.
  enum EGrow {
    stay = 0,
    moveX = 1,
    moveY = 2,
    growX = 4,
    growY = 8,
    grow = growX | growY,
    move = moveX | moveY
  };

  EKind kind;
  // The text of a button, box, group or label; a label breaks its lines if there is room for two. Of other
  // controls the name by which they are found, and for screen readers: that of their label or group.
  const char* caption;
  struct {
    int x, y, cx, cy;
  } place;
  int growth = stay;
};

struct CDialogTemplate {
  const char* title;
  CSize size;
  std::span<const CControl> controls;  // in tab order
  // blocksParent: the modal dialog blocks its parent window only, not all windows.
  enum EStyle { fixed = 0, resizable = 1, minimizeBox = 2, blocksParent = 4 };
  int style = fixed;
};

class VASTRA_API CDialog : public CWnd {
  DECLARE_DYNAMIC(CDialog)
 public:
  // parent null: the active window.
  explicit CDialog(const CDialogTemplate& model, CWnd* parent = nullptr) : m_model(model), m_parent(parent) {}
  ~CDialog() override;
  int DestroyWindow() override;

  // Runs the dialog until it ends. Returns the result of EndDialog; IDCANCEL if its parent is destroyed.
  virtual int DoModal();
  // Creates a hidden modeless window. It is destroyed with its parent; null: the active window, or the owner
  // of that if it is a dialog. 1, or 0 if OnInitDialog ended the dialog: then the window is destroyed, and so
  // is the object if its PostNcDestroy deletes it.
  int Create(CWnd* parent = nullptr);
  // Ends a modal dialog with result; destroys a modeless one.
  void EndDialog(int result);

  // The control with caption, which the template must have.
  CButton& Button(const char* caption) const { return Control<CButton>(caption); }
  CStatic& Text(const char* caption) const { return Control<CStatic>(caption); }
  CEdit& Edit(const char* caption) const { return Control<CEdit>(caption); }
  CListBox& List(const char* caption) const { return Control<CListBox>(caption); }
  CComboBox& Combo(const char* caption) const { return Control<CComboBox>(caption); }
  CWnd& Place(const char* caption) const { return Control<CWnd>(caption); }  // of a frame or an area

 protected:
  const CDialogTemplate& Model() const { return m_model; }
  virtual void OnInitDialog() {}
  virtual void OnOK() { EndDialog(IDOK); }
  virtual void OnCancel() { EndDialog(IDCANCEL); }
  // Places the controls.
  void OnSize(int cx, int cy) override;
  void OnClose() override { OnCancel(); }

  enum class ENotify { clicked, doubleClicked, focused, selected };
  // Calls handler when the event happens to the control with caption; OK and Cancel have operations of their
  // own. selected: the user has chosen an entry of a combo box.
  void On(const char* caption, std::function<void()> handler, ENotify what = ENotify::clicked);

  // Reads the whole number in the edit with caption: 1. 0 if it is not from low to high: a message tells the
  // user the bounds, and the edit gets the focus.
  int ReadNumber(const char* caption, UINT low, UINT high, UINT& value) const;
  void ShowNumber(const char* caption, UINT value) const;

  // Creates the controls of the template in widget, which becomes the window; and releases it.
  void Fill(QWidget* widget);
  void Release();

 private:
  class CWidget;
  friend class CWidget;
  struct CItem {
    const CControl* model;
    std::unique_ptr<CWnd> window;
  };

  template <class T>
  T& Control(const char* caption) const {
    for (const CItem& item : m_items)
      if (CString(item.model->caption) == caption)
        if (T* found = dynamic_cast<T*>(item.window.get())) return *found;
    NoSuchControl(caption);
  }
  [[noreturn]] static void NoSuchControl(const char* caption);
  CWidget* Make(QWidget* parent);
  void AddControl(const CControl& model, QWidget& parent);
  void Leave();

  const CDialogTemplate& m_model;
  CWnd* m_parent;
  std::vector<CItem> m_items;
  // The reference of the window and its handlers to the dialog: null after the window is destroyed.
  std::shared_ptr<CDialog*> m_self;
  QButtonGroup* m_radios = nullptr;  // the present group
  bool m_modal = false;              // during DoModal
  bool m_ended = false;
  int m_result = 0;
};

}  // namespace vastra
