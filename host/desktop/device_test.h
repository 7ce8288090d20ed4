// CDeviceTest: reads a device without a configuration, once or until it is stopped, on a thread of its own.
// The assistant for a new logger shows what was read. A driver that does not return keeps nobody waiting: its
// thread is left to itself and ends with the call.
#pragma once

#include <memory>
#include <vector>

#include "vastra/plc/driver_config.h"

namespace vastra {

class CDeviceTest {
 public:
  struct CState {
    bool isBusy = false;
    bool isOpen = false;        // the driver has opened the device, and reads it
    int reads = 0;              // that were good
    std::vector<float> values;  // of the last good read; empty: there was none
    double milliseconds = 0;    // that it took
    CString fault;              // why the last call failed; empty: it did not
  };

  CDeviceTest() = default;
  ~CDeviceTest() { Stop(); }
  CDeviceTest(const CDeviceTest&) = delete;
  CDeviceTest& operator=(const CDeviceTest&) = delete;

  // path: of the driver module. repeats: reads once a second until Stop; else a few times until a read is
  // good. False: the driver has not returned from an earlier call.
  bool Start(const CString& path, const DriverConfig& config, bool repeats);
  // Returns at once.
  void Stop();
  CState State() const;

 private:
  struct CShared;
  std::shared_ptr<CShared> m_shared;
};

}  // namespace vastra
