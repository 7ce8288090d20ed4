// SECBrowseDirEdit: a field for a folder's path, with a button that lets the user pick the folder.
#pragma once

#include "vastra/ui/dialog.h"

class QPushButton;

namespace vastra {

class VASTRA_API SECBrowseDirEdit : public CEdit {
 public:
  // Becomes the edit that dialog's template has under caption. The button, which is called "...", lies at its
  // right end and comes behind it in the order of the tab key.
  void SubclassDlgItem(const CDialog& dialog, const char* caption);

 protected:
  void OnSize(int cx, int cy) override;

 private:
  void OnBrowse();

  QPushButton* m_button = nullptr;  // goes with the edit
};

}  // namespace vastra
