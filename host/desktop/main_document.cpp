// The document of the main window: new, opened, saved, left.
#include <QDir>
#include <QMenu>
#include <QMessageBox>

#include "host/common/configuration_json.h"
#include "host/desktop/check_window.h"
#include "host/desktop/equation_editor.h"
#include "host/desktop/main_window.h"
#include "vastra/platform/file_system.h"
#include "vastra/ui/text.h"

namespace vastra {
namespace {

constexpr const char* kConfigurationFilter =
    "Configurations (*.json *.vst)|*.json;*.vst|All Files (*.*)|*.*||";

}  // namespace

void CMainWindow::New() {
  if (HasOpenDialog() || !MayLoseChanges()) return;
  SaveWorkspace();
  m_document.New();
  m_charts.Leave();
  m_messages.Log().Open("");
  StartChoosersIn(m_document.Folder());
  if (m_check) m_check->Forget();
  UseConfiguration();
  TakeState();
  ShowEquationsAgain();
}

void CMainWindow::AskToOpen() {
  if (HasOpenDialog() || !MayLoseChanges()) return;
  CFileQuestion question;
  question.filter = kConfigurationFilter;
  question.mustExist = true;
  CString path;
  if (ChooseFile(question, path)) Open(path);
}

void CMainWindow::ShowRecent() {
  m_recent->clear();
  for (const CString& path : m_settings.Recent()) {
    AddAction(m_recent, "", {}, [this, path] {
      if (!HasOpenDialog() && MayLoseChanges()) Open(path);
    })->setText(ToScreen(path).replace('&', "&&"));
  }
}

bool CMainWindow::Save() { return m_document.Path().IsEmpty() ? AskToSave() : SaveTo(m_document.Path()); }

bool CMainWindow::SaveTo(const CString& path) {
  AskForVersion(path);
  const CString fault = m_document.Save(path);
  if (!fault.IsEmpty()) {
    AfxMessageBox(fault);
    return false;
  }
  m_settings.AddRecent(m_document.Path());
  m_messages.Log().MoveTo(m_document.Path());
  StartChoosersIn(m_document.Folder());
  ShowState();
  ShowLost();
  return true;
}

// Shows the settings that a configuration file cannot hold.
void CMainWindow::ShowLost() {
  CString text;
  for (const CString& lost : m_document.Lost()) text += "\n" + lost;
  if (!text.IsEmpty()) AfxMessageBox(m_document.Path() + ":" + text);
}

// Offers the newest version if the version of the document cannot hold a setting.
void CMainWindow::AskForVersion(const CString& path) {
  CString text;
  for (const CString& lost : m_document.LostToVersion(path)) text += "\n" + lost;
  if (text.IsEmpty()) return;
  text += "\n\nA file of version " + CString(std::to_string(kVersionNewest)) + " can. Save it as one?";
  if (AfxMessageBox(path + ":" + text, MB_YESNO | MB_ICONQUESTION) == IDYES) m_document.UseNewestVersion();
}

bool CMainWindow::AskToSave() {
  CFileQuestion question;
  question.save = question.asksToOverwrite = true;
  question.defaultExtension = "json";
  question.name = m_document.Path();
  question.filter = kConfigurationFilter;
  CString path;
  return ChooseFile(question, path) && SaveTo(path);
}

// Asks whether to save the changes; false: the user has cancelled.
bool CMainWindow::MayLoseChanges() {
  if (m_equations && !m_equations->MayLeave()) return false;
  if (!m_document.IsChanged()) return true;
  switch (
      AfxMessageBox("Save the changes to " + m_document.Title() + "?", MB_YESNOCANCEL | MB_ICONQUESTION)) {
    case IDYES:
      return Save();
    case IDNO:
      return true;
    default:
      return false;
  }
}

}  // namespace vastra
