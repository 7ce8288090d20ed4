// What the main window keeps for each configuration: the windows that join its workspace.
#include "host/desktop/check_window.h"
#include "host/desktop/equation_editor.h"
#include "host/desktop/main_window.h"
#include "host/desktop/plant_view.h"

namespace vastra {
namespace {

template <class WINDOW>
std::optional<CString> StateIfVisible(const WINDOW* window) {
  return window && window->isVisible() ? std::optional(window->State()) : std::nullopt;
}

}  // namespace

void CMainWindow::JoinWorkspace() {
  m_workspace.Add({"plant", [this] { return std::optional(m_plant->State()); },
                   [this](const CString& state) { m_plant->SetState(state); }, [] {}});
  m_workspace.Add({"messages",
                   [this] { return m_messages.IsShown() ? std::optional(CString()) : std::nullopt; },
                   [this](const CString&) { m_messages.Show(); }, [this] { m_messages.Hide(); }});
  m_workspace.Add({"messageLog", [this] { return StateIfVisible(m_messages.LogWindow()); },
                   [this](const CString& state) {
                     ShowMessageLog();
                     m_messages.LogWindow()->SetState(state);
                   },
                   [this] {
                     if (m_messages.LogWindow()) m_messages.LogWindow()->close();
                   }});
  m_workspace.Add(
      {"check", [this] { return m_check && m_check->isVisible() ? std::optional(CString()) : std::nullopt; },
       [this](const CString&) { Check(); },
       [this] {
         if (m_check) m_check->close();
       }});
  m_workspace.Add({"accepted", [this] { return m_check ? std::optional(m_check->Accepted()) : std::nullopt; },
                   [this](const CString& accepted) { CheckWindow().SetAccepted(accepted); }, [] {}});
  m_workspace.Add({"equations",
                   [this] {
                     const bool isOpen = m_equations && m_equations->isVisible();
                     return isOpen ? std::optional(m_equations->Key()) : std::nullopt;
                   },
                   [this](const CString& key) { ShowEquations(key); },
                   [this] {
                     if (m_equations) m_equations->close();
                   }});
  m_workspace.Add({"values", [this] { return StateIfVisible(&m_values); },
                   [this](const CString& state) {
                     m_values.SetState(state);
                     m_values.BringUp();
                   },
                   [this] { m_values.close(); }});
  m_workspace.Add({"chart",
                   [this] {
                     const CChartWindow* chart = m_charts.LoggerWindow();
                     return chart && chart->isVisible() ? std::optional(StateText(chart->State()))
                                                        : std::nullopt;
                   },
                   [this](const CString& state) {
                     m_charts.ShowLogger();
                     m_charts.LoggerWindow()->SetState(StateFields(state));
                   },
                   [this] {
                     if (m_charts.LoggerWindow()) m_charts.LoggerWindow()->close();
                   }});
  m_workspace.Add({"trend", [this] { return m_views.TrendState(); },
                   [this](const CString& state) {
                     WarnOfView("trend", m_views.OpenTrend(Stages(), m_runner.RefreshPeriod(), state));
                   },
                   [this] { m_views.CloseTrend(); }});
  m_workspace.Add(
      {"grid", [this] { return m_views.GridState(); },
       [this](const CString& state) { WarnOfView("scan grid", m_views.OpenGrid(Stages(), state)); },
       [this] { m_views.CloseGrid(); }});
}

void CMainWindow::WarnOfView(const char* view, const CString& text) {
  if (!text.IsEmpty()) m_messages.Warn(CString(view) + ": " + text);
}

void CMainWindow::SaveWorkspace() {
  if (!m_document.Path().IsEmpty()) m_workspace.Save(m_document.Path());
}

void CMainWindow::OpenWorkspace() {
  if (!m_workspace.Open(m_document.Path())) return;
  raise();
  activateWindow();
}

}  // namespace vastra
