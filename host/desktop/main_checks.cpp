// Starts of the main window: the check before a start and on request, faults of a start, and the restart with
// a changed configuration.
#include <QApplication>

#include "host/common/driver_search.h"
#include "host/desktop/check_window.h"
#include "host/desktop/configuration_sheet.h"
#include "host/desktop/main_window.h"
#include "host/run/open_fault.h"

namespace vastra {
namespace {

// The first message of a run that is a failure; empty: there is none.
CString FirstFailure(const CRun& run) {
  for (const auto& kept : run.Live().messages)
    if (kept->severity == severityFatal || kept->severity == severityError)
      return CString(MessageText({kept->time, severityNotice, kept->function, kept->link, kept->name,
                                  kept->text}));  // without the kind
  return {};
}

}  // namespace

CPlaceWords CMainWindow::Words() {
  return CPlaceWords(m_document.Configuration(), [this](int plcType, const CString& field) {
    return m_driverCaptions.Find(plcType, field);
  });
}

CCheckWindow& CMainWindow::CheckWindow() {
  if (!m_check)
    m_check = new CCheckWindow({.open = [this](const CString& key) { OpenPlace(key); },
                                .check = [this] { CheckAgain(); },
                                .start = [this] { Start(); }},
                               this);
  return *m_check;
}

// Of the document, which can have changes that the run does not have.
std::vector<CCheckEntry> CMainWindow::CheckDocument() {
  const CRun& run = m_runner.Run();
  return CheckEntries(run, run.PlanOf(m_document.Stored()), Words());
}

void CMainWindow::ShowCheck(const std::vector<CCheckEntry>& entries, bool asksToStart) {
  CheckWindow().SetEntries(entries, asksToStart);
  CheckWindow().BringUp();
}

void CMainWindow::Check() {
  if (m_edit->isEnabled()) ShowCheck(CheckDocument(), false);
}

// The sheet has changed the configuration: the list shows what is left.
void CMainWindow::CheckAgain() {
  if (m_check && m_check->isVisible()) m_check->SetEntries(CheckDocument(), m_check->AsksToStart());
}

void CMainWindow::OpenPlace(const CString& place) {
  if (!m_edit->isEnabled()) return;  // the stages open or close
  if (HasEquations(place)) return ShowEquations(place);
  if (place.Left(5) == "trend") return ShowTrend();
  EditConfiguration(place);
}

// asks: the user is there, and confirms warnings that are new.
void CMainWindow::StartRun(bool asks) {
  if (!m_document.IsOpen() || m_runner.State() != CRunner::EState::stopped || HasOpenDialog()) return;
  m_restarts = false;
  UseConfiguration();
  const std::vector<CCheckEntry> entries = CheckEntries(m_runner.Run(), m_runner.Run().Plan(), Words());
  if (HasError(entries)) return RefuseStart(entries);
  if (asks && !CheckWindow().AreAccepted(entries)) return ShowCheck(entries, true);
  if (m_check) m_check->close();
  for (const CString& fault : FindModuleFaults()) m_messages.Warn(fault);
  for (const CCheckEntry& entry : entries) m_messages.Warn(entry.text, entry.place);
  if (LeavesOutWriting(m_document.Configuration(), RunOptions()))
    m_messages.Tell(
        "Plc Write: a replay writes to no PLC; the menu Run, Replay Writes to PLCs, changes that");
  m_messages.Messenger().HoldBoxes(true);  // a fault of the start has one box, see ShowOpenFault
  m_runner.Start();
}

void CMainWindow::RefuseStart(const std::vector<CCheckEntry>& entries) {
  for (const CCheckEntry& entry : entries)
    if (entry.isError) m_messages.KeepFault(entry.text, entry.place);
  SetStartFault(entries.front().Line());
  ShowCheck(entries, true);
}

void CMainWindow::ShowOpenFault() {
  const CString line = m_runner.Run().OpenFault();
  CPlaceWords::CFault fault = Words().Fault(line);
  if (line.Find(WhyNotOpened({})) >= 0)
    if (const CString failure = FirstFailure(m_runner.Run()); !failure.IsEmpty()) fault.text = failure;
  m_messages.KeepFault(fault.text, fault.place);
  SetStartFault(fault.Line());
  AfxMessageBox(fault.Line());
}

// The plant shows the reason until the next start.
void CMainWindow::SetStartFault(const CString& reason) {
  m_startFault = reason;
  ShowPlant();
}

void CMainWindow::OfferRestart() {
  if (AfxMessageBox("The logger is running: the changes apply at the next start.\n\nRestart it now?",
                    MB_YESNO | MB_ICONQUESTION | MB_DEFBUTTON2) == IDYES)
    Restart();
}

// A configuration that cannot start does not end the run of the former one.
void CMainWindow::Restart() {
  if (m_runner.State() != CRunner::EState::running) return;
  const std::vector<CCheckEntry> entries = CheckDocument();
  if (HasError(entries)) return ShowCheck(entries, false);
  m_restarts = true;
  m_runner.Stop();
}

// The second half of a restart, when the run has ended and no dialog is open.
void CMainWindow::StartAgain() {
  if (m_restarts && m_runner.State() == CRunner::EState::stopped && !QApplication::activeModalWidget())
    Start();
}

}  // namespace vastra
