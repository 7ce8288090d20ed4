// The part of CFileLink that leaves its logs to a keeper.
#include <chrono>
#include <string>
#include <thread>

#include "vastra/logfiles/file_link.h"
#include "vastra/logfiles/keeper_state.h"
#include "vastra/logfiles/log_time.h"

namespace vastra {
namespace {

constexpr int kTriesToHold = 50;
constexpr std::chrono::milliseconds kHoldPause{1};

constexpr double kLeastStep = 1;  // seconds that the clock goes back before the log ends

// The key of the lock and the journals. Outputs with the same name and naming that save different forms get
// different keys, by their order.
CString KeyOf(const CTrackSettings& settings, const CKeeperState& keeper) {
  const CString kind = settings.isSummary ? "summary" : "output";
  CString key = LogKey(kind, settings.logName, settings.naming);
  for (int i = 2; keeper.HasKey(key); ++i)
    key = LogKey(kind + CString(std::to_string(i)), settings.logName, settings.naming);
  return key;
}

}  // namespace

const CFault* CFileLink::OpenTrack() {
  CKeeperState& keeper = m_pKeeper->State();
  CTrackSettings settings;
  settings.isSummary = m_isSummary;
  settings.logName = m_logName;
  settings.naming = {m_directory,    m_usePrefix ? m_prefix : CString(),
                     m_nameVariable, m_dwordName != 0,
                     m_extension,    m_saveRp != 0,
                     m_saveCsv != 0};
  settings.varNames = m_varNames;
  settings.maxLogs = m_maxLogs;
  settings.maxSamples = m_maxSamples;
  settings.retention = m_retention;
  const auto track = std::make_shared<CLogTrack>(keeper, settings);
  keeper.openFault = track->Lock(KeyOf(settings, keeper));
  if (keeper.openFault.IsEmpty() && !keeper.Add(track))
    keeper.openFault = "the system has no thread that could write the logs";
  m_keptFault = {severityFatal, keeper.openFault};
  if (!keeper.openFault.IsEmpty()) return &m_keptFault;
  m_pTrack = track;
  m_keptLedger = {};
  track->Recover(true);
  Deliver();
  return nullptr;
}

// A clock that goes back ends the log, so that each log is in the order of time. Throws std::bad_alloc.
void CFileLink::AppendToTrack(const CLogSample& sample) {
  CKeeperState& keeper = m_pKeeper->State();
  const double step = keeper.policy.live ? m_pTrack->ClockStep(sample) : 0;
  if (step > kLeastStep) {
    m_pTrack->EndLog();
    CString text;
    text.Format("The clock went back by %.3f s, to %s: the log ends", step,
                ShowTime(sample.m_time).Std().c_str());
    if (keeper.IsNewStep(sample.m_time)) Send(functionWrite, {severityNotice, text});
  }
  if (m_pTrack->NamesOtherLog(sample)) m_pTrack->EndLog();
  m_isTrackFull = m_pTrack->Append(sample);
}

const CFault* CFileLink::FlushTrack() {
  if (m_pTrack->IsEmpty()) return &kept::emptyLog;
  m_pTrack->EndLog();
  return nullptr;
}

void CFileLink::Deliver() {
  if (!m_pTrack) return;
  const auto report = [this](char severity, const CString& text) {
    if (severity == severityNotice) return Send(functionFlush, {severity, text});
    Begin(functionFlush);
    Send(functionFlush, {severity, text});
  };
  for (CTrackEvent& event : m_pTrack->TakeEvents()) {
    event.saved.log = event.unsaved.log = m_listenerLog;
    if (event.kind == CTrackEvent::line) report(event.severity, event.text);
    if (event.kind == CTrackEvent::notSaved)
      report(severityError, "Couldn't save file " + event.unsaved.path + ": " + event.unsaved.reason);
    if (!m_pListener) continue;
    if (event.kind == CTrackEvent::closed) m_pListener->LogClosed(event.saved);
    if (event.kind == CTrackEvent::grew) m_pListener->LogGrew(event.saved);
    if (event.kind == CTrackEvent::notSaved) m_pListener->LogNotSaved(event.unsaved);
  }
}

void CFileLink::EndKept() {
  if (!m_pTrack) return;
  m_pTrack->Close();
  Deliver();
  m_keptLedger = m_pTrack->Ledger();
  m_pKeeper->State().Remove(m_pTrack);
  if (m_pKeeper->State().holdsLocks) HoldLock();
  m_pTrack.reset();
}

// A thread of the keeper can have the track for a moment. One that waits for a dead disk keeps the lock.
void CFileLink::HoldLock() {
  for (int i = 0; i < kTriesToHold && m_pTrack.use_count() > 1; ++i) std::this_thread::sleep_for(kHoldPause);
  if (m_pTrack.use_count() == 1) m_pTrack->HoldLock();
}

CLogLedger CFileLink::GetLedger() const {
  CLogLedger ledger = m_account.Ledger();
  ledger += m_pTrack ? m_pTrack->Ledger() : m_keptLedger;
  return ledger;
}

std::uint64_t CFileLink::TakenCount() const {
  return m_account.Ledger().taken + (m_pTrack ? m_pTrack->TakenCount() : m_keptLedger.taken);
}

}  // namespace vastra
