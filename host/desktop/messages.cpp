#include "host/desktop/messages.h"

#include <QApplication>
#include <QWidget>

#include <algorithm>
#include <cstdio>

#include "vastra/console/console.h"
#include "vastra/console/console_conf_dlg.h"
#include "vastra/core/console_sink.h"
#include "vastra/core/link.h"
#include "vastra/ui/window.h"

namespace vastra {
namespace {

constexpr UINT kWindow = 0;
constexpr const char* kTitle = "Messages";

}  // namespace

CMessages::CMessages(CSettings& settings) : m_settings(settings) {
  CConsole::Instance()->Create(kWindow, kTitle, 80, 80, 720, 320, nullptr);
  Restore();
  Apply();
  CConsole::Instance()->AlwaysOnTop(kWindow, m_onTop);
  CLink::SetMessenger(&m_messenger);
}

CMessages::~CMessages() {
  CLink::SetMessenger(nullptr);
  CConsole::Release();
}

void CMessages::Show() { CConsole::Instance()->ShowWindow(kWindow, SW_SHOWNORMAL); }

void CMessages::Hide() { CConsole::Instance()->ShowWindow(kWindow, SW_HIDE); }

bool CMessages::IsShown() const {
  return std::ranges::any_of(QApplication::topLevelWidgets(), [](const QWidget* window) {
    return window->isVisible() && window->windowTitle() == kTitle;
  });
}

void CMessages::Warn(const CString& text, const CString& part) {
  WriteToConsole(kWindow, "Warning: " + (part.IsEmpty() ? text : part + ": " + text), kWarningColour, 0);
  m_log.AddMessage(DesktopLine(severityWarning, text.View(), part.View()));
}

void CMessages::Tell(const CString& text) {
  WriteToConsole(kWindow, text, kNoticeColour, 0);
  m_log.AddMessage(DesktopLine(severityNotice, text.View()));
}

void CMessages::Keep(const CRunMessage& message) {
  if (!AddsNothing(message)) m_log.AddMessage(LineOf(message));
}

void CMessages::ShowLog(const CMessageWindow::COpenPlace& openPlace) {
  if (!m_pLogWindow)
    m_pLogWindow = std::make_unique<CMessageWindow>(m_settings, "MessageLog", m_log, openPlace);
  m_pLogWindow->setWindowState(m_pLogWindow->windowState() & ~Qt::WindowMinimized);
  m_pLogWindow->show();
  m_pLogWindow->raise();
  m_pLogWindow->activateWindow();
}

void CMessages::Configure() {
  CConsoleConfDlg dialog;
  int CConsoleConfDlg::*const kinds[] = {&CConsoleConfDlg::m_fatal, &CConsoleConfDlg::m_error,
                                         &CConsoleConfDlg::m_warning, &CConsoleConfDlg::m_notice,
                                         &CConsoleConfDlg::m_debug};
  dialog.m_all = m_all;
  dialog.m_onTop = CConsole::Instance()->IsOnTop(kWindow);
  for (int i = 0; i < 5; ++i) dialog.*kinds[i] = m_all ? 0 : m_kinds[i];
  if (dialog.DoModal() != IDOK) return;
  m_all = dialog.m_all;
  m_onTop = dialog.m_onTop;
  for (int i = 0; i < 5; ++i) m_kinds[i] = dialog.*kinds[i];
  Apply();
  CConsole::Instance()->AlwaysOnTop(kWindow, m_onTop);
  if (dialog.m_clear) CConsole::Instance()->Clear(kWindow);
  Remember();
}

void CMessages::Apply() {
  const auto on = [this](int kind) { return m_all ? 1 : m_kinds[kind]; };
  m_messenger.SetFilters(on(0), on(1), on(2), on(3), on(4));
  m_messenger.SpeakToPeople(!m_isPlain && !on(4));
}

void CMessages::SetPlain(bool isPlain) {
  m_isPlain = isPlain;
  Apply();
}

void CMessages::Restore() {
  int all = 0, kinds[5] = {}, onTop = 0;
  if (std::sscanf(m_settings.Get("Messages"), "%d,%d,%d,%d,%d,%d,%d", &all, &kinds[0], &kinds[1], &kinds[2],
                  &kinds[3], &kinds[4], &onTop) != 7)
    return;
  m_all = all;
  m_onTop = onTop;
  std::copy(kinds, kinds + 5, m_kinds);
}

void CMessages::Remember() {
  CString value;
  value.Format("%d,%d,%d,%d,%d,%d,%d", m_all, m_kinds[0], m_kinds[1], m_kinds[2], m_kinds[3], m_kinds[4],
               m_onTop);
  m_settings.Set("Messages", value);
}

}  // namespace vastra
