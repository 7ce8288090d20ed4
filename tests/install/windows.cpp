// Links the windows as an external host does. No window can be shown without an application object, so this
// only calls what needs none.
#include <vastra/windows.h>

using namespace vastra;

int main() {
  const bool isWindow = CTrendingDlg::classCTrendingDlg.IsDerivedFrom(RUNTIME_CLASS(CWnd));
  return isWindow && SetChooser(nullptr) == nullptr ? 0 : 1;
}
