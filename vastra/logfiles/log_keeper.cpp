#include "vastra/logfiles/log_keeper.h"

#include "vastra/logfiles/keeper_state.h"
#include "vastra/logfiles/log_recovery.h"

namespace vastra {

CLogKeeper::CLogKeeper(const CLogPolicy& policy) : m_pState(std::make_shared<CKeeperState>(policy)) {}

CLogKeeper::~CLogKeeper() {
  for (const auto& track : m_pState->otherTracks) {
    track->Close();
    m_pState->Remove(track);
  }
  m_pState->Stop();
}

std::vector<CKeeperLine> CLogKeeper::RecoverOthers(CLogListener* listener) {
  return m_pState->policy.live ? RecoverForeignJournals(*m_pState, listener) : std::vector<CKeeperLine>();
}

std::vector<CKeeperLine> CLogKeeper::DeliverOthers(CLogListener* listener) {
  return DeliverForeign(*m_pState, listener);
}

std::vector<COtherLedger> CLogKeeper::Others() const {
  std::vector<COtherLedger> others;
  for (const auto& track : m_pState->otherTracks)
    others.push_back({track->Settings().logName, track->Settings().isSummary, track->Ledger()});
  return others;
}

void CLogKeeper::HoldLocks(bool isOn) {
  m_pState->holdsLocks = isOn;
  if (!isOn) m_pState->heldLocks.clear();
}

const CString& CLogKeeper::GetOpenFault() const { return m_pState->openFault; }
void CLogKeeper::ClearOpenFault() { m_pState->openFault.Empty(); }

}  // namespace vastra
