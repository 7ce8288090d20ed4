#include "host/desktop/device_test.h"

#include <condition_variable>
#include <limits>
#include <mutex>
#include <thread>

#include "host/probe/probe.h"

namespace vastra {

struct CDeviceTest::CShared {
  mutable std::mutex mutex;
  std::condition_variable stopped;
  bool isStopped = false;
  CState state;
};

namespace {

using namespace std::chrono_literals;

constexpr int kAttempts = 3;  // a driver can report the cause of a failure with the next call
constexpr auto kBetweenReads = 1000ms;

CString FaultOf(const CDriverReply& reply) {
  if (!reply.words.IsEmpty()) return reply.words;
  const CString meaning = StatusMeaning(reply.status);
  return meaning.IsEmpty() ? StatusName(reply.status) : meaning;
}

// Writes what a probe finds into the state. On the thread of the test.
template <class SHARED>
class CTestObserver : public CProbeObserver {
 public:
  CTestObserver(std::shared_ptr<SHARED> shared, bool repeats)
      : m_shared(std::move(shared)), m_repeats(repeats) {}

  bool OnFacts(const CDriverFacts&) override { return GoesOn(); }
  bool OnFinding(const CRuleFinding&) override { return GoesOn(); }
  void OnCall(const char*, const CDriverReply& reply, std::span<const float> values) override {
    const std::lock_guard lock(m_shared->mutex);
    auto& state = m_shared->state;
    state.fault = reply.status == statusOk ? CString() : FaultOf(reply);
    state.isOpen = state.isOpen || reply.status == statusOk;
    if (values.empty()) return;
    state.values.assign(values.begin(), values.end());
    state.milliseconds = reply.milliseconds;
    ++state.reads;
  }
  void OnFault(const CString& words) override { SetFault(words); }
  void OnCountMatters() override {}
  bool BeginReads() override { return GoesOn(); }
  void EndReads() override {}
  bool Rest(std::chrono::milliseconds time) override {
    std::unique_lock lock(m_shared->mutex);
    if (!m_repeats && m_shared->state.reads > 0) return false;
    m_shared->stopped.wait_for(lock, m_repeats ? kBetweenReads : time, [&] { return m_shared->isStopped; });
    return !m_shared->isStopped;
  }
  void SetFault(const CString& words) {
    const std::lock_guard lock(m_shared->mutex);
    m_shared->state.fault = words;
  }

 private:
  bool GoesOn() const {
    const std::lock_guard lock(m_shared->mutex);
    return !m_shared->isStopped;
  }

  const std::shared_ptr<SHARED> m_shared;
  const bool m_repeats;
};

}  // namespace

bool CDeviceTest::Start(const CString& path, const DriverConfig& config, bool repeats) {
  Stop();
  if (State().isBusy) return false;
  m_shared = std::make_shared<CShared>();
  m_shared->state.isBusy = true;
  CProbeRequest request;
  request.path = path;
  request.config = config;
  request.reads = repeats ? std::numeric_limits<std::int64_t>::max() : kAttempts;
  std::thread([shared = m_shared, request, repeats] {
    CTestObserver observer(shared, repeats);
    const CString noDriver = ProbeDriver(request, observer);
    if (!noDriver.IsEmpty()) observer.SetFault(noDriver);
    const std::lock_guard lock(shared->mutex);
    shared->state.isBusy = false;
  }).detach();
  return true;
}

void CDeviceTest::Stop() {
  if (!m_shared) return;
  const std::lock_guard lock(m_shared->mutex);
  m_shared->isStopped = true;
  m_shared->stopped.notify_all();
}

CDeviceTest::CState CDeviceTest::State() const {
  if (!m_shared) return {};
  const std::lock_guard lock(m_shared->mutex);
  return m_shared->state;
}

}  // namespace vastra
