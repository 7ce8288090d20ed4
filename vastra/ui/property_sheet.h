// CPropertySheet: a dialog of pages behind tabs, with OK, Cancel and Apply. A page may refuse to be left and
// to be applied.
//
//   CPropertySheet sheet("Configuration");
//   sheet.AddPage(input);
//   if (sheet.DoModal() == IDOK) ...
#pragma once

#include "vastra/ui/dialog.h"

class QTabWidget;

namespace vastra {

// A page: a template like that of a dialog, whose title stands on the tab. Its window is there while the
// sheet is open; OnInitDialog runs before the sheet is shown.
class VASTRA_API CPropertyPage : public CDialog {
  DECLARE_DYNAMIC(CPropertyPage)
 public:
  explicit CPropertyPage(const CDialogTemplate& model) : CDialog(model) {}

  // The page is about to be left or applied: 1, and it has taken over what its controls show, or 0 if it
  // refuses, when it has told why.
  virtual int OnKillActive() { return 1; }
  // The user applies the sheet: 1, or 0 if the page refuses, when it has told why.
  virtual int OnApply() { return 1; }

 private:
  friend class CPropertySheet;
};

class VASTRA_API CPropertySheet : public CDialog {
  DECLARE_DYNAMIC(CPropertySheet)
 public:
  // parent null: the active window.
  explicit CPropertySheet(const char* title, CWnd* parent = nullptr);

  // A sheet has at least one page. The pages stay the caller's and are there as long as the sheet.
  void AddPage(CPropertyPage& page) { m_pages.push_back(&page); }
  // IDOK: every page has accepted. IDCANCEL also after an Apply.
  int DoModal() override;
  // Index of the page in front, from 0 in the order of AddPage.
  int GetActiveIndex() const { return m_active; }
  // Brings page index to the front if that in front may be left; only while the sheet is open.
  void SetActivePage(int index);

 protected:
  void OnInitDialog() override;
  void OnOK() override;
  // Every page has accepted an Apply or an OK.
  virtual void OnApplied() {}

 private:
  void PutButtonsLast();
  int Apply();
  void Show(int index);

  CDialogTemplate m_own;
  std::vector<CControl> m_controls;
  std::vector<CPropertyPage*> m_pages;
  QTabWidget* m_tabs = nullptr;
  int m_active = 0;
};

}  // namespace vastra
