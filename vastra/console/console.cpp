#include "vastra/console/console.h"

#include "vastra/console/console_wnd.h"
#include "vastra/ui/application.h"

namespace vastra {
namespace {

constexpr const char* kKey = "Software\\Vastra\\Console";

unsigned short KeyOf(UINT id) { return static_cast<unsigned short>(id); }

CString ValueName(unsigned short key) {
  CString name;
  name.Format("Console%d", key);
  return name;
}

}  // namespace

SingletonSmartPtr<CConsole> CConsole::m_pInstance;

CConsole* CConsole::Instance() {
  if (!m_pInstance) m_pInstance = new CConsole;
  return m_pInstance;
}

void CConsole::Release() {
  delete static_cast<CConsole*>(m_pInstance);
  m_pInstance = nullptr;
}

CConsole::CConsole() : m_formerSink(SetConsoleSink(this)) {
  m_registry.OpenUserKey(kKey);
  AtApplicationEnd(&Release);  // at process exit it is too late for windows
}

CConsole::~CConsole() {
  SetConsoleSink(m_formerSink);
  Delete();
  m_registry.CloseKey();
}

void CConsole::Delete() {
  while (!m_windows.IsEmpty()) {
    const auto [key, window] = *m_windows.begin();
    const CRect place = window->GetNormalPlace();
    const CConsolePlace kept = {place.left, place.top, place.Width(), place.Height()};
    if (window->Widget()) m_registry.SetString(ValueName(key), kept.ToText());
    Remove(key, window);
  }
}

CConsoleWnd* CConsole::Find(UINT id) {
  const std::lock_guard lock(m_lock);
  CConsoleWnd* window = nullptr;
  return m_windows.Lookup(KeyOf(id), window) ? window : nullptr;
}

void CConsole::Remove(unsigned short key, CConsoleWnd* window) {
  {
    const std::lock_guard lock(m_lock);
    m_windows.RemoveKey(key);
  }
  window->Destroy();
  delete window;
}

int CConsole::Create(UINT id, const CString& title, int x, int y, int width, int height, CWnd* parent) {
  if (Find(id)) return 0;
  CConsolePlace place = {x, y, width, height};
  const CString name = ValueName(KeyOf(id));
  CString kept;
  if (!m_registry.GetStringValue(name, kept)) {
    kept = place.ToText();
    m_registry.SetString(name, kept);
  }
  place.TakeFrom(kept);
  auto* window = new CConsoleWnd;
  window->Create(title, place.x, place.y, place.width, place.height, parent);
  const std::lock_guard lock(m_lock);
  m_windows.SetAt(KeyOf(id), window);
  return 1;
}

int CConsole::Destroy(UINT id) {
  CConsoleWnd* window = Find(id);
  if (!window) return 0;
  Remove(KeyOf(id), window);
  return 1;
}

int CConsole::ShowWindow(UINT id, int command) {
  CConsoleWnd* window = Find(id);
  if (!window) return 0;
  window->ShowWindow(command);
  return 1;
}

int CConsole::GetWindowName(UINT id, CString& name) {
  CConsoleWnd* window = Find(id);
  if (!window) return 0;
  name = window->GetWindowText();
  return 1;
}

int CConsole::SetWindowName(UINT id, const CString& name) {
  CConsoleWnd* window = Find(id);
  if (!window) return 0;
  window->SetWindowText(name);
  return 1;
}

void CConsole::Clear(UINT id) {
  if (CConsoleWnd* window = Find(id)) window->Clear();
}

void CConsole::AlwaysOnTop(UINT id, int onTop) {
  CConsoleWnd* window = Find(id);
  if (!window) return;
  window->SetTopMost(onTop != 0);
  window->m_onTop = onTop != 0;
}

int CConsole::IsOnTop(UINT id) {
  const CConsoleWnd* window = Find(id);
  return window ? window->m_onTop : 0;
}

// A worker locks the table while it adds its line, so that the window cannot be destroyed. The thread of the
// windows must not: its line is painted, during which the toolkit can call other code.
int CConsole::Write(UINT id, const CString& text, COLORREF colour, DWORD reserved) {
  std::unique_lock lock(m_lock);
  CConsoleWnd* window = nullptr;
  if (!m_windows.Lookup(KeyOf(id), window)) return 0;
  if (window->IsOnItsThread()) lock.unlock();
  window->Write(text, colour, reserved);
  return 1;
}

}  // namespace vastra
