// A node on a driver, for tests that look at values.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tests/support/recorder.h"
#include "vastra/plc/driver_factory.h"
#include "vastra/plc/plc_link.h"

namespace vastra {

inline int Open(CPlcLink& link, const DriverConfig& config, UINT count, UINT mode = CLink::modeRead) {
  auto* own = new CPlcLinkConfig;
  own->m_config = config;
  own->m_config.variableCount = count;
  CLinkConfigList configs;
  configs.AddTail(own);
  return link.Open(configs, mode);
}

class CDriverNode {
 public:
  CDriverNode(CRecorder& recorder, int id, const DriverConfig& config, UINT count,
              UINT mode = CLink::modeRead)
      : m_recorder(recorder),
        m_link(CDriverFactory::Instance()->NewDriver(CDriverFactory::Instance()->GetDriverIndex(id))) {
    Open(*m_link, config, count, mode);
    fault = m_recorder.TakeFaults();
  }
  std::vector<float> Read() {
    CLogSample sample;
    m_link->Read(sample);
    fault = m_recorder.TakeFaults();
    return {sample.m_values.begin(), sample.m_values.end()};
  }
  bool Write(const std::vector<float>& values) {
    CLogSample sample;
    for (const float value : values) sample.m_values.Add(value);
    const bool done = m_link->Write(sample) == 1;
    fault = m_recorder.TakeFaults();
    return done;
  }

  std::string fault;  // the line of the last operation if that failed

 private:
  CRecorder& m_recorder;
  std::unique_ptr<CPlcLink> m_link;
};

}  // namespace vastra
