// The equation editor of the main window.
#include "host/desktop/equation_editor.h"
#include "host/desktop/main_window.h"

namespace vastra {

CEquationEditor& CMainWindow::EquationEditor() {
  if (!m_equations)
    m_equations = std::make_unique<CEquationEditor>(CEquationEditor::CListener{
        .places = [this] { return EquationPlaces(m_document.Configuration(), m_names); },
        .words = [this](const CString& key) { return Words().Place(key); },
        .apply = [this](const CString& key, const CString& text) { return ApplyEquations(key, text); },
        .live = [this] { return m_runner.Run().LiveState(); }});
  return *m_equations;
}

// key: of a place, such as "outputs[1].enableText"; another one: the place that was shown last.
void CMainWindow::ShowEquations(const CString& key) {
  if (m_document.IsOpen()) EquationEditor().Open(key);
}

bool CMainWindow::HasEquations(const CString& key) {
  for (const CEquationPlace& place : EquationPlaces(m_document.Configuration(), m_names))
    if (place.Has(key)) return true;
  return false;
}

// A list that was empty is not in use until its mark is set; the check says so.
bool CMainWindow::ApplyEquations(const CString& key, const CString& text) {
  if (!m_edit->isEnabled()) {
    AfxMessageBox("The logger is starting or stopping: apply the equations when it has.");
    return false;
  }
  CConfiguration edited = m_document.Configuration();
  if (!SetEquations(edited, key, text)) return false;
  TakeEdited(std::move(edited));
  return true;
}

void CMainWindow::ShowEquationsAgain() {
  if (m_equations && m_equations->isVisible()) m_equations->ShowConfiguration();
}

}  // namespace vastra
