// SECBrowseDirEdit: a field for the path of a folder, with a button that opens the folder chooser.
#pragma once

#include "vastra/ui/dialog.h"

class QPushButton;

namespace vastra {

class VASTRA_API SECBrowseDirEdit : public CEdit {
 public:
  // Attaches to the edit with caption of dialog's template. The button "..." is at its right end and after it
  // in the tab order.
  void SubclassDlgItem(const CDialog& dialog, const char* caption);

 protected:
  void OnSize(int cx, int cy) override;

 private:
  void OnBrowse();

  QPushButton* m_button = nullptr;  // destroyed with the edit
};

}  // namespace vastra
