// CItemDlg: what the dialogs of a log output and of a summary have in common. Whoever runs one fills the
// public fields and reads m_config behind OK.
#pragma once

#include "vastra/config/output_config.h"
#include "vastra/config/summary_config.h"
#include "vastra/support/browse_edit.h"

namespace vastra {

class CInputPage;
class CSmartPage;

// Captions that both templates have.
constexpr const char* kItemName = "Name:";
constexpr const char* kItemPath = "Path:";
constexpr const char* kItemVariables = "Variable List...";
constexpr const char* kItemEnable = "Enable Equations...";
constexpr const char* kItemText = "Write Text Files";

template <class TConfig>
class CItemDlg : public CDialog {
 public:
  // The pages in front, which tell what variables there are; null: none.
  CSmartPage* m_pSmartPage = nullptr;
  CInputPage* m_pInputPage = nullptr;
  TConfig m_config;  // in and out; of a new item without numbers

 protected:
  // binary: the caption of the box for binary files. most, samples: of the two numbers.
  CItemDlg(const CDialogTemplate& model, const char* binary, const char* most, const char* samples,
           UINT TConfig::*mostFiles, CWnd* parent);

  void OnInitDialog() override;
  void OnOK() override;
  // Takes over what the controls show: 1, or 0 if a number is none, as the user was told.
  virtual int TakeFields();

  // 0, when the stages have told why.
  int Offered(CStringArray& names) const;
  void EditVariables();
  void EditEquations(CString& text, CStringArray& equations);
  // Begins with a proposal, which stays there if the user gives the editor up.
  void EditEnableEquations();

 private:
  const char *m_binary, *m_most, *m_samples;
  UINT TConfig::*m_mostFiles;
  SECBrowseDirEdit m_path;
};

}  // namespace vastra
