// CItemDlg: the common part of the dialogs of a log output and of a summary. CItemPage fills the public
// fields, runs the dialog and reads m_config after OK.
#pragma once

#include "vastra/config/output_config.h"
#include "vastra/config/summary_config.h"
#include "vastra/support/browse_edit.h"

namespace vastra {

class CInputPage;
class CSmartPage;

// Captions in both templates.
constexpr const char* kItemName = "Name:";
constexpr const char* kItemPath = "Path:";
constexpr const char* kItemVariables = "Variable List...";
constexpr const char* kItemEnable = "Enable Equations...";
constexpr const char* kItemText = "Write Text Files";

template <class TConfig>
class CItemDlg : public CDialog {
 public:
  // The pages that provide the variables; null: none.
  CSmartPage* m_pSmartPage = nullptr;
  CInputPage* m_pInputPage = nullptr;
  TConfig m_config;  // in and out; the numbers of a new item are 0

 protected:
  // Captions: binary of the check box for binary files, most and samples of the two number edits.
  CItemDlg(const CDialogTemplate& model, const char* binary, const char* most, const char* samples,
           UINT TConfig::*mostFiles, CWnd* parent);

  void OnInitDialog() override;
  void OnOK() override;
  // Reads the controls into m_config: 1. Or 0: a number is not valid, and the user was told.
  virtual int TakeFields();

  // The variables to choose from. 0: a stage has reported why they are not known.
  int Offered(CStringArray& names) const;
  void EditVariables();
  void EditEquations(CString& text, CStringArray& equations);
  // Without a text it proposes one, which stays even if the user cancels the editor.
  void EditEnableEquations();

 private:
  const char *m_binary, *m_most, *m_samples;
  UINT TConfig::*m_mostFiles;
  SECBrowseDirEdit m_path;
};

}  // namespace vastra
