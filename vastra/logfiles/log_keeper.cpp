#include "vastra/logfiles/log_keeper.h"

namespace vastra {

class CKeeperState {
 public:
  explicit CKeeperState(const CLogPolicy& policy) : m_policy(policy) {}

  const CLogPolicy m_policy;
  CString m_openFault;
  std::vector<COtherLedger> m_others;
};

CLogKeeper::CLogKeeper(const CLogPolicy& policy) : m_pState(std::make_shared<CKeeperState>(policy)) {}
CLogKeeper::~CLogKeeper() = default;

std::vector<CString> CLogKeeper::RecoverOthers(CLogListener*) { return {}; }
const std::vector<COtherLedger>& CLogKeeper::Others() const { return m_pState->m_others; }
const CString& CLogKeeper::GetOpenFault() const { return m_pState->m_openFault; }

}  // namespace vastra
