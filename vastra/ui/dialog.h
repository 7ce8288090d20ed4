// CDialog: a dialog made from a template, run modally or left open. Its controls are found by their captions.
//
//   constexpr CControl kControls[] = {{CControl::edit, "New Variable", {7, 17, 150, 14}}, ...};
//   constexpr CDialogTemplate kTemplate = {"Insert Variable", {164, 60}, kControls};
//
// Templates measure in dialog units: a fourth of the average width and an eighth of the height of a character
// of the dialog's font.
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
    firstRadioButton,  // begins a group of which one is checked
    radioButton,       // belongs to the group begun before it
    edit,
    numberEdit,     // takes digits alone
    multiLineEdit,  // Return makes a new line
    listBox,        // one entry can be marked
    multiListBox,   // several can
    dragListBox,    // one can, and dragged
    comboBox,       // one of a list that drops down
    comboEdit,      // that, or a text that is typed
    tabs,           // of the pages of a property sheet
    grid,           // for a CGXGridWnd
    frame,          // sunken edges
    area,           // a place without edges
  };
  // Edges that follow the right or the bottom edge of the dialog when it is resized.
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
  // What a button, a box, a group or a text shows; a text breaks its lines if there is room for two. Of the
  // others, which show none, their name for finding them and for screen readers: that of the text or the
  // group they stand in.
  const char* caption;
  struct {
    int x, y, cx, cy;
  } place;
  int growth = stay;
};

struct CDialogTemplate {
  const char* title;
  CSize size;
  std::span<const CControl> controls;  // in the order of the tab key
  // blocksParent: a modal run keeps the user from its parent alone, not from all other windows.
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

  // Runs the dialog until it ends, and gives the result of EndDialog; IDCANCEL if its parent takes it along.
  virtual int DoModal();
  // Makes a window that stays open, hidden at first. It goes with its parent; null: the active window, or
  // what that belongs to if it is a dialog. 1, or 0 if it ended itself in OnInitDialog: it is destroyed then,
  // and the object too if its PostNcDestroy deletes it.
  int Create(CWnd* parent = nullptr);
  // Ends a modal run with result; destroys a window that was left open.
  void EndDialog(int result);

  // The control of a caption. That it is there is the template's business.
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
  // Gives the controls their places.
  void OnSize(int cx, int cy) override;
  void OnClose() override { OnCancel(); }

  enum class ENotify { clicked, doubleClicked, focused, selected };
  // Calls handler when that happens to the control of caption; OK and Cancel have their own operations.
  // selected: the user has chosen an entry of a combo box.
  void On(const char* caption, std::function<void()> handler, ENotify what = ENotify::clicked);

  // The whole number, from low to high, that the edit of caption shows: 1. Or 0, when the user has been told
  // the bounds, and the edit has the focus.
  int ReadNumber(const char* caption, UINT low, UINT high, UINT& value) const;
  void ShowNumber(const char* caption, UINT value) const;

  // Makes the controls of the template in widget, which becomes the window; and takes it away again.
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
  // What the window and its handlers hold of the dialog: null once the window has gone.
  std::shared_ptr<CDialog*> m_self;
  QButtonGroup* m_radios = nullptr;  // of the last group begun
  bool m_modal = false;              // a modal run is under way
  bool m_ended = false;
  int m_result = 0;
};

}  // namespace vastra
