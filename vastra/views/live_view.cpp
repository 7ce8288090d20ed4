#include "vastra/views/live_view.h"

#include <utility>

#include "vastra/platform/chooser.h"
#include "vastra/screens/trend_facade_dlg.h"
#include "vastra/stages/log_input.h"
#include "vastra/stages/log_trendings.h"
#include "vastra/views/var_selection_dlg.h"

namespace vastra {

// Keeps the object while its window can be destroyed.
class CLiveView::CStay {
 public:
  explicit CStay(CLiveView& view) : m_view(view), m_wasBusy(std::exchange(view.m_isBusy, true)) {}
  ~CStay() {
    if (m_wasBusy) return;
    m_view.m_isBusy = false;
    if (m_view.m_isDestroyed) delete &m_view;
  }
  CStay(const CStay&) = delete;
  CStay& operator=(const CStay&) = delete;

 private:
  CLiveView& m_view;
  const bool m_wasBusy;
};

void CLiveView::OnButton(const char* caption, std::function<void()> handler) {
  On(caption, [this, handler = std::move(handler)] {
    const CStay stay(*this);
    handler();
  });
}

// After the window its owner can destroy the stages.
void CLiveView::PostNcDestroy() {
  m_isDestroyed = true;
  m_pTrendings = nullptr;
  if (!m_isBusy) delete this;
}

void CLiveView::Tell(const char* text) {
  if (text) AfxMessageBox(text, "Message", MB_ICONEXCLAMATION);
}

void CLiveView::ResetVarNames() {
  const CStay stay(*this);
  TakeNames();
}

void CLiveView::TakeNames() {
  const CTrendConfig& options = *m_pTrendings->GetOptions();
  m_allNames = options.m_baseVars;
  m_allNames.Append(options.m_extraVars);
  CalcVarIndex();
  OnNamesReset();
}

void CLiveView::CalcVarIndex() {
  m_ready = 0;
  if (MapNames(m_selected, m_allNames, m_index) != 0) {
    m_selected = NamesWithPlace(m_selected, m_index);
    CalcVarIndex();  // no name is missing now
    OnNamesLost();
    Tell(m_kind.removed);
    RedrawAll();
  }
  OnIndexed();
  m_ready = 1;
}

int CLiveView::ReadSample() {
  return m_pTrendings && m_pTrendings->Read(&m_sample) && !m_sample.m_values.IsEmpty();
}

int CLiveView::EditSelection() {
  TakeNames();
  if (m_isDestroyed) return 0;
  if (m_allNames.IsEmpty()) {
    Tell("No variables available.");
    return 0;
  }
  CVarSelectionDlg dialog(this);
  dialog.m_pAvailable = &m_allNames;
  dialog.m_pSelected = &m_selected;
  dialog.m_max = m_kind.limit;
  return dialog.DoModal() == IDOK;
}

// Between the steps a box can be open, so each step finds the sibling again.
void CLiveView::Configure() {
  CTrendFacadeDlg dialog(this);
  dialog.SetInputPointers(m_pInput, m_pTrendings);
  if (dialog.DoModal() != IDOK) return;
  CTrendConfig chosen;
  dialog.GetConfiguration(chosen);
  m_ready = 0;
  if (CLiveView* sibling = Sibling()) sibling->m_ready = 0;
  ReopenStage(chosen.m_extraVars);
  if (CLiveView* sibling = Sibling()) sibling->ResetVarNames();  // makes it ready
  m_ready = 1;
}

void CLiveView::ReopenStage(const CStringArray& extraVars) {
  CStringArray names;
  const bool isOpen = m_pTrendings->IsOpen();
  if (isOpen) {
    if (!m_pInput->GetVarNames(names)) {
      Tell("Modification couldn't be done due to internal error.");
      return;
    }
    m_pTrendings->Close();
  }
  CStringArray& options = m_pTrendings->GetOptions()->m_extraVars;
  if (!(options == extraVars)) {
    options = extraVars;
    m_pTrendings->OptionsChanged();
  }
  if (isOpen) m_pTrendings->Open(names);
  TakeNames();
}

void CLiveView::ToggleFreeze() {
  m_frozen = !m_frozen;
  Button("Freeze").SetWindowText(m_frozen ? "Unfreeze" : "Freeze");
}

int CLiveView::AskFile(bool save, CString& path) const {
  CFileQuestion question;
  question.save = question.asksToOverwrite = save;
  question.filter = m_kind.filter;
  if (save) {
    question.defaultExtension = m_kind.extension;
    question.name = m_kind.fileName;
  }
  return ChooseFile(question, path);
}

}  // namespace vastra
