#include "vastra/stages/log_input.h"

#include <algorithm>
#include <vector>

#include "vastra/core/concat_link.h"
#include "vastra/plc/driver_factory.h"
#include "vastra/stages/node_chain.h"

namespace vastra {
namespace {

constexpr int kLinksOfANode = 3;

std::unique_ptr<CFileConfig> ReplayConfig(const CStringList& files) {
  auto config = std::make_unique<CFileConfig>();
  for (const CString& file : files) config->m_files.AddTail(file);
  return config;
}

}  // namespace

IMPLEMENT_DYNCREATE(CInputThread, CWinThread)

int CLogInput::Open() {
  if (m_open) Close();
  CStringArray names;
  if (MayNodesBeAway() && !PreGetInitialVarNames(names)) return 0;  // wrong settings are no absence
  CChain chain;
  CFileLink* replay = nullptr;
  if (m_options.m_simulating)
    replay = chain.Add(CFileLink::Create(nullptr), "InputFileLink", ReplayConfig(m_options.m_inputFiles));
  else if (!BuildNodes(chain, 1))
    return 0;
  if (m_options.m_preprocess)
    chain.Add(CEquatorLink::Create(chain.Pass()), "InputPreprocessEquatorLink",
              EquatorConfig({}, m_options.m_preEquations, m_options.m_preNewVars));
  m_pHeadLink = chain.Open(CLink::modeRead);
  if (!m_pHeadLink) return 0;
  m_pFileLink = replay;
  m_areUp.reset();
  m_haveAnswered = false;
  m_isNodeChange = true;
  m_open = 1;
  return 1;
}

bool CLogInput::IsGuarded() const {
  const auto& nodes = m_options.m_plcNodes;
  return m_pWorkers || std::any_of(nodes.begin(), nodes.end(), [](const CPlcNodeConfig* node) {
           return node->m_absent != EAbsent::fail || !node->m_aliveVar.IsEmpty();
         });
}

bool CLogInput::MayNodesBeAway() const {
  const auto& nodes = m_options.m_plcNodes;
  return !m_options.m_simulating && std::any_of(nodes.begin(), nodes.end(), [](const CPlcNodeConfig* node) {
    return node->m_absent != EAbsent::fail;
  });
}

// Builds from the last node to the first. Each new node is the first component of a concat link around those
// built before, so the values are in the order of the nodes.
int CLogInput::BuildNodes(CChain& chain, int useDriver) {
  if (IsGuarded()) return BuildGuarded(chain, useDriver);
  CDriverFactory& drivers = *CDriverFactory::Instance();
  for (POSITION pos = m_options.m_plcNodes.GetTailPosition(); pos;) {
    const CPlcNodeConfig& node = *m_options.m_plcNodes.GetPrev(pos);
    const int driver = drivers.GetDriverIndex(node.m_driver.plcType);
    if (driver < 0) continue;
    std::unique_ptr<CLink> rest = chain.TakeHead();
    if (!AddNode(chain, node, driver, useDriver)) return 0;
    if (rest)
      chain.Add(CConcatLink::Create(chain.Pass(), rest.release()), "Concat " + drivers.GetDriverName(driver),
                ConcatConfig(kLinksOfANode));
  }
  return !chain.IsEmpty();
}

int CLogInput::BuildGuarded(CChain& chain, int useDriver) {
  std::vector<const CPlcNodeConfig*> nodes;
  for (const CPlcNodeConfig* node : m_options.m_plcNodes)
    if (CDriverFactory::Instance()->GetDriverIndex(node->m_driver.plcType) >= 0) nodes.push_back(node);
  std::shared_ptr<CNodeGroup> group;
  if (useDriver) group = m_group = std::make_shared<CNodeGroup>(m_pWorkers);
  return !nodes.empty() && BuildTree(chain, nodes, group);
}

// A tree of concat links with half of the nodes on each side: closing it takes a time in proportion to the
// number of nodes and their depth, and a list of a thousand nodes is as deep as long.
int CLogInput::BuildTree(CChain& chain, std::span<const CPlcNodeConfig* const> nodes,
                         const std::shared_ptr<CNodeGroup>& group) {
  CDriverFactory& drivers = *CDriverFactory::Instance();
  const int driver = drivers.GetDriverIndex(nodes[0]->m_driver.plcType);
  if (nodes.size() == 1) return AddGuardedNode(chain, *nodes[0], driver, group);
  const std::size_t half = nodes.size() / 2;
  if (!BuildTree(chain, nodes.subspan(half), group)) return 0;
  std::unique_ptr<CLink> rest = chain.TakeHead();
  if (!BuildTree(chain, nodes.first(half), group)) return 0;
  const auto linksOfFirst = static_cast<int>(2 * half - 1);
  chain.Add(CConcatLink::Create(chain.Pass(), rest.release()), "Concat " + drivers.GetDriverName(driver),
            ConcatConfig(linksOfFirst));
  return 1;
}

void CLogInput::Close() {
  if (m_group) m_group->Close();
  delete m_pHeadLink;
  m_pHeadLink = nullptr;
  m_pFileLink = nullptr;
  m_group.reset();
  m_open = 0;
}

int CLogInput::Read(CLogSample& sample) {
  if (!m_open) return 0;
  if (!m_threaded) return ReadNow(sample);
  return CInputThread::Start(RUNTIME_CLASS(CInputThread), this, sample, m_notifyWnd, m_notifyMessage);
}

int CLogInput::Work(CLogSample& sample) { return m_pHeadLink ? ReadNow(sample) : 0; }

int CLogInput::ReadNow(CLogSample& sample) {
  const int result = m_pHeadLink->Read(sample);
  if (m_group || m_areUp == (result != 0)) return result;
  m_areUp = result != 0;
  m_haveAnswered = m_haveAnswered || result;
  m_upSince = sample.m_time;
  if (!result) _ftime(m_upSince);
  m_isNodeChange = true;
  return result;
}

bool CLogInput::TakeNodeChange() {
  const bool isGroupChange = m_group && m_group->TakeChange();
  return std::exchange(m_isNodeChange, false) || isGroupChange;
}

std::vector<CNodeState> CLogInput::NodeStates() const {
  std::vector<CNodeState> states;
  if (m_group) return m_group->States();
  if (m_options.m_simulating || !m_areUp) return states;
  for (const CPlcNodeConfig* node : m_options.m_plcNodes)
    states.push_back(
        {node->m_nodeName, *m_areUp, m_upSince, *m_areUp ? "" : "the read failed", {}, m_haveAnswered});
  return states;
}

int CLogInput::GetVarNames(CStringArray& names) { return m_open ? m_pHeadLink->GetVarNames(names) : 0; }

int CLogInput::PreGetInitialVarNames(CStringArray& names) {
  if (m_open) return 0;
  CChain chain;
  if (m_options.m_simulating)
    chain.Add(CFileLink::Create(nullptr), "Getting variable names from selected files",
              ReplayConfig(m_options.m_inputFiles));
  else if (!BuildNodes(chain, 0))
    return 0;
  const std::unique_ptr<CLink> head(chain.Open(CLink::modeRead));
  return head && head->GetVarNames(names);
}

int CLogInput::IsFinished() const { return Replay() ? Replay()->Finished() : 0; }

UINT CLogInput::FilesRead() const { return Replay() ? Replay()->GetCurrentFile() : 0; }

UINT CLogInput::TotalFilesToRead() const { return Replay() ? Replay()->GetTotalFiles() : 0; }

float CLogInput::PercentCompleted() const {
  const UINT total = TotalFilesToRead();
  return total ? static_cast<float>(FilesRead()) / static_cast<float>(total) : 0.0f;
}

float CLogInput::PartOfLog() const {
  const CFill fill = Replay() ? Replay()->GetFill() : CFill();
  return fill.m_total ? 1.0f - static_cast<float>(fill.m_samples) / static_cast<float>(fill.m_total) : 0.0f;
}

}  // namespace vastra
