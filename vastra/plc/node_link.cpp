#include "vastra/plc/node_link.h"

#include <algorithm>
#include <atomic>
#include <limits>
#include <mutex>
#include <utility>

namespace vastra {

IMPLEMENT_DYNAMIC(CNodeConfig, CLinkConfig)

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::seconds;

const CString kNodeTypeName = "CNodeLink";
constexpr float kNoValue = std::numeric_limits<float>::quiet_NaN();
constexpr seconds kFirstPause{1}, kLongestPause{30};  // before a node is opened again

constexpr CFault kNobody = {severityError, "No node answers."};
constexpr CFault kNodeDuplicated = {severityFatal, "Variable names were duplicated."};
constexpr CFault kNotClosed = {severityWarning, "The driver has not closed its connection."};

CString InSeconds(Clock::duration time) {
  CString text;
  text.Format("%.1f s", std::chrono::duration<double>(time).count());
  return text;
}

}  // namespace

// The chain of a node and what it has to do. While a worker has it, nobody else touches it.
class CNodeLink::CNode : public CNodeTask {
 public:
  enum class EWork { open, transfer, close };

  explicit CNode(CLink* chain) : m_chain(chain) {}
  // The lines of a node that was left to the workers go nowhere.
  ~CNode() override {
    const CLineRecord::CScope scope(m_record);
    m_chain.reset();
  }

  void Work() override try {
    const CLineRecord::CScope scope(m_record);
    m_succeeded = m_work == EWork::close ? Close() : Open() && (m_work == EWork::open || Transfer());
  } catch (...) {  // no memory
    m_succeeded = false;
  }

  std::unique_ptr<CLink> m_chain;
  decltype(CNodeConfig::m_inner) m_inner;
  UINT m_mode = modeNotOpened;
  EWork m_work = EWork::open;
  CLogSample m_sample;
  CLineRecord m_record;
  UINT m_notFinite = 0;                 // values of the last write
  std::atomic<bool> m_mayWrite{false};  // false: nothing is written, also if the call is one that is late
  bool m_isOpen = false;
  bool m_succeeded = false;
  std::atomic<const char*> m_call{"open"};  // of the driver, that runs or was the last

  // At any time: what is written if the node can be written to.
  void SetNewest(const CLogSample& sample) {
    const std::lock_guard lock(m_mutex);
    m_newest = sample;
    m_mayWrite = true;
  }

 private:
  int Open() {
    if (m_isOpen) return 1;
    m_call = "open";
    CLinkConfigList configs;
    m_inner(configs, m_notFinite);
    m_isOpen = m_chain->Open(configs, m_mode) != 0;
    if (m_isOpen) BeginCall();
    return m_isOpen;
  }

  int Transfer() {
    m_call = m_mode == modeRead ? "read" : "write";
    if (m_mode == modeRead) return m_chain->Read(m_sample);
    {
      const std::lock_guard lock(m_mutex);
      m_sample = m_newest;
    }
    return m_mayWrite && m_chain->Write(m_sample);
  }

  int Close() {
    m_call = "close";
    m_chain->Close();
    m_isOpen = false;
    return 1;
  }

  std::mutex m_mutex;
  CLogSample m_newest;  // guarded by m_mutex
};

void CNodeGroup::Gather(const CLogSample* toWrite) {
  const auto begin = Clock::now();
  m_asked.clear();
  for (CNodeLink* link : m_links)
    if (link->Prepare(toWrite, begin)) m_asked.push_back(link);
  Work(CNodeWorkers::EWait::scan);
  const auto now = Clock::now();
  FindSlowest();
  m_lastTime = now - begin;
  m_areAllAway = true;
  for (CNodeLink* link : m_links) {
    link->TakeState(now);
    if (link->m_answer != CNodeLink::EAnswer::answered) continue;
    if (m_areAllAway) m_time = link->m_pNode->m_sample.m_time;
    m_areAllAway = false;
  }
}

void CNodeGroup::Withhold() {
  for (CNodeLink* link : m_links) link->m_pNode->m_mayWrite = false;
}

void CNodeGroup::Work(CNodeWorkers::EWait wait) {
  for (const bool isProbed : {false, true})  // those that nobody waits for are the last on a shared line
    for (CNodeLink* link : m_asked) {
      if (link->m_isProbed != isProbed) continue;
      link->m_pNode->m_record.Clear();
      if (m_pWorkers)
        m_pWorkers->Start(link->m_pNode, isProbed);
      else
        link->m_pNode->Work();
    }
  if (m_pWorkers) {
    m_tasks.clear();
    for (const CNodeLink* link : m_asked) m_tasks.push_back(link->m_pNode);
    m_pWorkers->Wait(m_tasks, wait, [this](const CNodeTask& task, CNodeWorkers::Span rest) {
      for (CNodeLink* link : m_asked)
        if (link->m_pNode.get() == &task) link->SendWaiting(rest);
    });
    m_tasks.clear();
  }
  for (CNodeLink* link : m_asked) link->TakeAnswer();
}

void CNodeGroup::CloseAll(const std::vector<CNodeLink*>& links) {
  m_asked.clear();
  for (CNodeLink* link : links) {
    std::erase(m_links, link);
    if (!link->m_pNode) continue;
    if (m_pWorkers && !m_pWorkers->Recall(*link->m_pNode)) continue;
    link->m_isProbed = false;
    link->m_pNode->m_work = CNodeLink::CNode::EWork::close;
    link->m_pNode->m_call = "close";
    if (link->m_pNode->m_isOpen) m_asked.push_back(link);
  }
  Work(CNodeWorkers::EWait::close);
  for (CNodeLink* link : links)
    if (m_pWorkers && link->m_pNode) link->LeaveTo(*m_pWorkers);
}

// Nobody waits for a node that is away.
void CNodeGroup::FindSlowest() {
  m_pSlowest = nullptr;
  if (!m_pWorkers) return;
  Clock::duration longest{-1};
  for (const CNodeLink* link : m_asked) {
    const Clock::duration time = link->m_isProbed ? longest : m_pWorkers->Elapsed(*link->m_pNode);
    if (time <= longest) continue;
    m_pSlowest = link;
    longest = time;
  }
}

std::vector<CNodeState> CNodeGroup::States() const {
  std::vector<CNodeState> states;
  for (const CNodeLink* link : m_links)
    if (link->m_state) states.push_back(*link->m_state);
  return states;
}

CNodeGroup::CSlowest CNodeGroup::Slowest() const {
  if (!m_pSlowest) return {};
  return {m_pSlowest->m_name, m_lastTime};
}

CNodeLink* CNodeLink::Create(CLink* component) { return component ? new CNodeLink(component) : nullptr; }

CNodeLink::CNodeLink(CLink* component) : CLink(kNodeTypeName), m_pNode(std::make_shared<CNode>(component)) {}

CNodeLink::~CNodeLink() {
  CNodeLink::Close();
  if (m_pNode) m_pNode->m_chain.reset();  // here, so that its lines go to the messenger
}

int CNodeLink::Open(CTypedPtrList<CObList, CLinkConfig*>& configs, UINT mode) {
  BeginOpen();
  if (!m_pNode) return Fail(functionOpen, fault::noComponent);
  const std::unique_ptr<CLinkConfig> config =
      TakeConfig(configs, RUNTIME_CLASS(CNodeConfig), fault::badConfig);
  if (!config) return 0;
  if (!Configure(static_cast<CNodeConfig&>(*config), mode)) return Fail(functionOpen, kNodeDuplicated);
  const bool waits = m_absent == EAbsent::fail && mode == modeRead;
  if ((!m_group || waits) && !OpenNow()) return FailCall(functionOpen);
  m_mode = mode;
  if (m_group) m_group->m_links.push_back(this);
  return End(functionOpen);
}

int CNodeLink::Configure(CNodeConfig& config, UINT mode) {
  m_group = config.m_group;
  m_absent = config.m_absent;
  m_count = config.m_varNames.GetSize();
  m_names = config.m_varNames;
  m_hasAlive = !config.m_aliveVar.IsEmpty() && mode == modeRead;
  if (m_hasAlive && FindIn(m_names, config.m_aliveVar) >= 0) return 0;
  if (m_hasAlive) m_names.Add(config.m_aliveVar);
  m_pNode->m_inner = config.m_inner;
  m_pNode->m_line = config.m_line;
  m_pNode->m_mode = mode;
  m_pNode->m_work = CNode::EWork::open;
  m_isGathered = m_isProbed = m_isLate = m_isAway = false;
  m_state.reset();
  m_openDue = {};
  m_openPause = seconds(0);
  m_last.RemoveAll();
  m_last.SetSize(m_count);
  std::fill_n(m_last.GetData(), m_count, kNoValue);
  return 1;
}

// With the group's workers, or here if the chain only serves for its names.
int CNodeLink::OpenNow() {
  if (m_group) {
    m_group->m_asked = {this};
    m_group->Work(CNodeWorkers::EWait::scan);
  } else {
    m_pNode->Work();
    m_answer = m_pNode->m_succeeded ? EAnswer::answered : EAnswer::failed;
  }
  SendRecord();
  return m_answer == EAnswer::answered;
}

void CNodeLink::Close() {
  Begin(functionClose);
  if (m_group && m_pNode) m_group->CloseAll({this});
  if (!m_group && m_pNode) m_pNode->m_work = CNode::EWork::close, m_pNode->Work();
  if (m_pNode) SendRecord();
  m_group.reset();
  m_mode = modeNotOpened;
  if (std::exchange(m_isUnclosed, false))
    Fail(functionClose, kNotClosed);
  else
    End(functionClose);
}

void CNodeLink::LeaveTo(CNodeWorkers& workers) {
  m_pNode->m_mayWrite = false;
  std::shared_ptr<CNodeTask> task = std::move(m_pNode);
  m_isUnclosed = workers.Abandon(task) && !m_isAway;
  if (task) m_pNode = std::static_pointer_cast<CNode>(task);
}

// Whether the node has something to do in this scan.
bool CNodeLink::Prepare(const CLogSample* toWrite, Time now) {
  const CNodeWorkers* const workers = m_group->m_pWorkers;
  m_isGathered = true;
  m_answer = EAnswer::none;
  if (toWrite) m_pNode->SetNewest(*toWrite);
  if (workers && !workers->IsIdle(*m_pNode)) return false;
  if (std::exchange(m_isLate, false) && !m_pNode->m_isOpen) PauseOpening(now);
  if (!m_pNode->m_isOpen && now < m_openDue) return false;
  m_pNode->m_work = CNode::EWork::transfer;
  // A call that succeeded after nobody waited for it any more: the device is there, but slower than the
  // grace.
  const bool isThere = workers && m_pNode->m_succeeded && workers->Elapsed(*m_pNode) <= workers->Patience();
  m_isProbed = workers && m_isAway && !isThere;
  return true;
}

void CNodeLink::TakeAnswer() {
  using EEnd = CNodeWorkers::EEnd;
  const CNodeWorkers* workers = m_group->m_pWorkers;
  const EEnd end = workers ? workers->EndOf(*m_pNode) : EEnd::ended;
  if (end == EEnd::ended)
    m_answer = m_pNode->m_succeeded ? EAnswer::answered : EAnswer::failed;
  else
    m_answer = end == EEnd::overdue ? EAnswer::overdue : EAnswer::blocked;
  m_isLate = m_answer == EAnswer::overdue;
}

// After a scan: whether the node is present.
void CNodeLink::TakeState(Time now) {
  if (m_answer == EAnswer::failed && !m_pNode->m_isOpen) PauseOpening(now);
  if (m_answer == EAnswer::answered) m_openPause = seconds(0);
  if (m_answer == EAnswer::answered && m_absent == EAbsent::hold)
    std::copy_n(m_pNode->m_sample.m_values.GetData(), m_count, m_last.GetData());
  NoteState(now);
  if (!IsTolerant()) return;
  if (m_answer == EAnswer::answered && m_isAway) BeBack(now);
  if (m_answer != EAnswer::answered && !m_isAway) BeAway(now);
}

void CNodeLink::PauseOpening(Time now) {
  m_openPause = std::clamp(2 * m_openPause, kFirstPause, kLongestPause);
  m_openDue = now + m_openPause;
}

// The state changes when the node goes or comes back, and when its next opening is put off.
void CNodeLink::NoteState(Time now) {
  const bool isUp = m_answer == EAnswer::answered;
  const bool isPutOff = !isUp && m_openDue > now && m_answer == EAnswer::failed;
  const bool isOther = !m_state || m_state->isUp != isUp;
  if (!isOther && !isPutOff) return;
  CNodeState state;
  _ftime(state.since);
  if (isPutOff) {
    const auto due = 1000 * std::int64_t{state.since.time} + state.since.millitm +
                     std::chrono::duration_cast<std::chrono::milliseconds>(m_openDue - now).count();
    state.next = state.since;
    state.next->time = static_cast<std::int32_t>(due / 1000);
    state.next->millitm = static_cast<std::uint16_t>(due % 1000);
  }
  if (!isOther) state.since = m_state->since;
  state.name = m_name;
  state.isUp = isUp;
  state.hasAnswered = isUp || (m_state && m_state->hasAnswered);
  if (!isUp) state.reason = WhyAway();
  m_state = state;
  m_group->m_isChanged = true;
}

void CNodeLink::BeAway(Time now) {
  const char function = m_mode == modeRead ? functionRead : functionWrite;
  m_isAway = true;
  m_awaySince = now;
  Begin(function);
  const CString line = "is away: " + WhyAway();
  Fail(function, {severityError, line});
}

void CNodeLink::BeBack(Time now) {
  m_isAway = false;
  const CString line = "is back after " + InHours(now - m_awaySince);
  Send(m_mode == modeRead ? functionRead : functionWrite, {severityNotice, line});
}

CString CNodeLink::WhyAway() const {
  const CString call = m_pNode->m_call.load();
  if (m_answer == EAnswer::blocked)
    return m_pNode->m_line.IsEmpty() ? CString("no thread was free for it")
                                     : CString("its line waits for a node that does not answer");
  if (m_answer == EAnswer::none) return "the driver has still not returned from " + call;
  if (m_answer == EAnswer::overdue)
    return "the driver has not returned from " + call + " after " +
           InSeconds(m_group->m_pWorkers->Elapsed(*m_pNode));
  const CString* failure = m_pNode->m_record.FirstFailure();
  return failure ? call + ": " + *failure : "not enough memory";
}

void CNodeLink::SendWaiting(CNodeWorkers::Span rest) const {
  const CString line = "the stop waits for the driver to return from " + CString(m_pNode->m_call.load()) +
                       ", at most " + InSeconds(rest);
  Send(m_mode == modeWrite ? functionWrite : functionRead, {severityNotice, line});
}

// Sends the lines of the links inside. BeAway has reported the failure of a node that may be away: its other
// lines only pass the filter for all operations.
void CNodeLink::SendRecord() {
  if (m_answer == EAnswer::overdue || m_answer == EAnswer::none) return;
  int filters[5];
  m_pMessenger->GetFilters(filters[0], filters[1], filters[2], filters[3], filters[4]);
  const bool isReported = m_mode != modeNotOpened && IsTolerant() && m_answer == EAnswer::failed;
  if (!isReported || filters[4]) m_pNode->m_record.SendTo(*m_pMessenger);
  m_pNode->m_record.Clear();
}

int CNodeLink::BeginTransfer(char function, const CLogSample* toWrite) {
  Begin(function);
  if (m_mode == modeNotOpened || !m_group) return Fail(function, fault::notOpened);
  if (!m_isGathered) m_group->Gather(toWrite);
  m_isGathered = false;
  SendRecord();
  return 1;
}

// The failure of a node that may not be away.
int CNodeLink::FailCall(char function) {
  if (m_answer == EAnswer::failed)
    return Fail(function, function == functionOpen ? fault::componentOpen : fault::componentRead);
  const CString line = WhyAway();
  return Fail(function, {severityError, line});
}

int CNodeLink::Read(CLogSample& sample) {
  if (!BeginTransfer(functionRead, nullptr)) return 0;
  if (m_answer != EAnswer::answered && !IsTolerant()) return FailCall(functionRead);
  if (m_group->m_areAllAway) return Fail(functionRead, kNobody);
  FillIn(sample);
  return End(functionRead);
}

// The time is that of the first node that is present: a concat link uses that of its first component.
void CNodeLink::FillIn(CLogSample& sample) {
  const bool answers = m_answer == EAnswer::answered;
  const float* values = answers ? m_pNode->m_sample.m_values.GetData() : m_last.GetData();
  sample.m_time = m_group->m_time;
  sample.m_values.SetSize(m_names.GetSize());
  std::copy_n(values, m_count, sample.m_values.GetData());
  if (m_hasAlive) sample.m_values[m_count] = answers;
}

int CNodeLink::Write(CLogSample& sample) {
  if (!BeginTransfer(functionWrite, &sample)) return 0;
  End(functionWrite);  // the lines are sent: that of BeAway once, that of values that are not finite
  return m_answer == EAnswer::answered && m_pNode->m_notFinite == 0;
}

}  // namespace vastra
