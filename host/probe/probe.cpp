#include "host/probe/probe.h"

#include <algorithm>
#include <utility>

#include "host/probe/value_area.h"

namespace vastra {
namespace {

using namespace std::chrono_literals;

constexpr auto kRestAfterFailure = 100ms;  // after a failed read

// The calls to one driver.
class CProbing {
 public:
  CProbing(const CProbeRequest& request, const CDriverCalls& driver, CProbeObserver& observer)
      : m_request(request),
        m_driver(driver),
        m_observer(observer),
        m_area(request.config.variableCount),
        m_values(m_area.Values()) {}

  void Run() {
    if (!m_driver.Table().Open) return m_observer.OnFault("the driver offers no Open");
    if (!m_request.values.empty()) Write();
    if (m_request.values.empty() || m_request.reads > 0) Read();
  }

 private:
  bool Open(int mode) {
    DriverConfig config = m_request.config;
    config.plcType = m_driver.Id();
    const CDriverReply reply = m_driver.Open(config, mode, m_handle);
    m_observer.OnCall("Open", reply, {});
    if (reply.status != statusOk && CountMatters(config, mode, reply)) m_observer.OnCountMatters();
    return reply.status == statusOk;
  }

  // Whether the failed Open ends differently with one value more. Not tried if the status has another cause.
  bool CountMatters(DriverConfig config, int mode, const CDriverReply& failed) const {
    if (failed.status == statusInvalidMode || failed.status == statusNoMemory) return false;
    int handle = kNoHandle;
    ++config.variableCount;
    const CDriverReply reply = m_driver.Open(config, mode, handle);
    if (reply.status == statusOk) m_driver.Close(handle);
    return reply.status != failed.status || reply.words != failed.words;
  }

  void Write() {
    if (!Open(driverModeWrite)) return;
    if (m_driver.Table().Write) {
      std::ranges::copy(m_request.values, m_values.begin());
      m_observer.OnCall("Write", m_driver.Write(m_values, m_handle), m_request.values);
      CheckArea();
    } else {
      m_observer.OnFault("the driver offers no Write");
    }
    m_driver.Close(m_handle);
  }

  void Read() {
    if (!Open(driverModeRead)) return;
    if (m_driver.Table().Read)
      ReadAll();
    else if (m_request.reads > 0)
      m_observer.OnFault("the driver offers no Read");
    m_driver.Close(m_handle);
  }

  // Reports the first fault.
  void CheckArea() {
    const CString fault = m_area.FindFault();
    if (!fault.IsEmpty() && !std::exchange(m_hasLeft, true)) m_observer.OnFault("the driver: " + fault);
  }

  void ReadAll() {
    bool goesOn = m_observer.BeginReads();
    for (std::int64_t i = 0; i < m_request.reads && goesOn; ++i) {
      std::ranges::fill(m_values, 0.0f);
      const CDriverReply reply = m_driver.Read(m_values, m_handle);
      const bool isGood = reply.status == statusOk;
      m_observer.OnCall("Read", reply, isGood ? m_values : std::span<float>());
      CheckArea();
      goesOn = m_observer.Rest(isGood || i + 1 == m_request.reads ? 0ms : kRestAfterFailure);
    }
    m_observer.EndReads();
  }

  const CProbeRequest& m_request;
  const CDriverCalls& m_driver;
  CProbeObserver& m_observer;
  const CValueArea m_area;
  const std::span<float> m_values;  // within the area
  int m_handle = kNoHandle;
  bool m_hasLeft = false;  // the values
};

}  // namespace

CString ProbeDriver(const CProbeRequest& request, CProbeObserver& observer) {
  CString reason;
  const CDriverCalls driver(LoadModule(request.path, &reason));
  if (!driver.IsDriver()) return reason.IsEmpty() ? "no GetDriverHeader" : reason;
  if (observer.OnFacts({driver.Id(), driver.Name(), driver.Version()}))
    CProbing(request, driver, observer).Run();
  return {};
}

CString ProbeModule(const CProbeRequest& request, CProbeObserver& observer) {
  const CContractResult result =
      TestContract({.path = request.path,
                    .config = request.config,
                    .values = request.values,
                    .limit = request.limit,
                    .onFacts = [&](const CDriverFacts& facts) { return observer.OnFacts(facts); },
                    .onFinding = [&](const CRuleFinding& finding) { return observer.OnFinding(finding); }});
  if (!result.noDriver.IsEmpty() || result.isStopped) return result.noDriver;
  if (result.end.IsEmpty()) return ProbeDriver(request, observer);
  observer.OnFault("the driver is not opened here, since in the test " + result.end);
  return {};
}

}  // namespace vastra
