#include "vastra/stages/log_facade.h"

namespace vastra {

int CLogFacade::SetCallBack(int threaded, HWND wnd, UINT message) {
  m_threaded = threaded;
  m_notifyWnd = wnd;
  m_notifyMessage = message;
  return 1;
}

}  // namespace vastra
