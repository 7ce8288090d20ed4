// Links the windows as a stranger's host does. Without an application object none of them can be shown, so
// this only asks what can be asked before.
#include <vastra/windows.h>

using namespace vastra;

int main() {
  const bool isWindow = CTrendingDlg::classCTrendingDlg.IsDerivedFrom(RUNTIME_CLASS(CWnd));
  return isWindow && SetChooser(nullptr) == nullptr ? 0 : 1;
}
