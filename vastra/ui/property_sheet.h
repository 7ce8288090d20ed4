// CPropertySheet: a dialog of pages with tabs, and OK, Cancel and Apply. A page can refuse to be left or
// applied.
//
//   CPropertySheet sheet("Configuration");
//   sheet.AddPage(input);
//   if (sheet.DoModal() == IDOK) ...
#pragma once

#include "vastra/ui/dialog.h"

class QTabWidget;

namespace vastra {

// A page: made from a dialog template, whose title is on the tab. Its window exists while the sheet is open;
// OnInitDialog is called before the sheet is shown.
class VASTRA_API CPropertyPage : public CDialog {
  DECLARE_DYNAMIC(CPropertyPage)
 public:
  explicit CPropertyPage(const CDialogTemplate& model) : CDialog(model) {}

  // Called before the page is left or applied. 1: it has read its controls; 0: it refuses, after a message to
  // the user.
  virtual int OnKillActive() { return 1; }
  // Called when the user applies the sheet: 1, or 0 if the page refuses, after a message to the user.
  virtual int OnApply() { return 1; }

 private:
  friend class CPropertySheet;
};

class VASTRA_API CPropertySheet : public CDialog {
  DECLARE_DYNAMIC(CPropertySheet)
 public:
  // parent null: the active window.
  explicit CPropertySheet(const char* title, CWnd* parent = nullptr);

  // A sheet has at least one page. page must exist as long as the sheet.
  void AddPage(CPropertyPage& page) { m_pages.push_back(&page); }
  // IDOK: every page has accepted. IDCANCEL also after an Apply.
  int DoModal() override;
  // Index of the active page, from 0 in the order of AddPage.
  int GetActiveIndex() const { return m_active; }
  // Activates page index if the active page can be left; only while the sheet is open.
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
