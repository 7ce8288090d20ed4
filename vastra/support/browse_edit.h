// SECBrowseDirEdit: a field for a folder's path, with a button that lets the user pick the folder.
#pragma once

#include "vastra/ui/dialog.h"

namespace vastra {

class VASTRA_API SECBrowseDirEdit : public CEdit {
 public:
  // Takes the place that dialog's template has for an edit under caption; its right end becomes the button,
  // which is called "..." and comes behind the edit in the order of the tab key.
  void SubclassDlgItem(const CDialog& dialog, const char* caption);

 private:
  void OnBrowse();
};

}  // namespace vastra
