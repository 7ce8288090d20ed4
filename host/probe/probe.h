// Probing a driver: opens a driver module without a configuration, writes and reads, and reports each call. A
// module that is given by its file can be tested for the rules of drivers first. The command probe calls
// this.
#pragma once

#include <cstdint>

#include "host/probe/contract.h"
#include "host/probe/driver_calls.h"

namespace vastra {

struct CProbeRequest {
  CString path;                    // of the module, absolute
  DriverConfig config;             // plcType is set from the driver's ID
  std::vector<float> values;       // to write, variableCount of them; empty: nothing is written
  std::int64_t reads = 1;          // 0 only opens the driver
  std::chrono::seconds limit{10};  // of a call in the contract test
};

// Receives what a probe finds, in order.
class CProbeObserver {
 public:
  virtual ~CProbeObserver() = default;

  // Before the first finding, and again before the first call. False ends the probe.
  virtual bool OnFacts(const CDriverFacts& facts) = 0;
  // For each rule of the contract test. False ends the probe.
  virtual bool OnFinding(const CRuleFinding& finding) = 0;
  // values: what was written or read, empty for a failed read.
  virtual void OnCall(const char* call, const CDriverReply& reply, std::span<const float> values) = 0;
  // Why a call was not made.
  virtual void OnFault(const CString& words) = 0;
  // After a failed Open that ends differently with another number of values.
  virtual void OnCountMatters() = 0;
  // Before the first read and after the last one, so that the host can catch signals in between. BeginReads
  // returns false if no read is wanted any more.
  virtual bool BeginReads() = 0;
  virtual void EndReads() = 0;
  // After each read: waits for time. False ends the reads.
  virtual bool Rest(std::chrono::milliseconds time) = 0;
};

// Opens, writes and reads the driver. Returns an empty text, or why the module is not a driver.
CString ProbeDriver(const CProbeRequest& request, CProbeObserver& observer);

// Tests the module for the rules of drivers, and then probes it as ProbeDriver does. A driver that crashed or
// hung in the test is not opened in this process. Returns as ProbeDriver.
CString ProbeModule(const CProbeRequest& request, CProbeObserver& observer);

}  // namespace vastra
