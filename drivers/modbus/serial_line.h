// CSerialLine: a serial line with the devices on it. All nodes of the process that name it share it and use
// it in turn, since their requests and replies meet on the same wire.
#pragma once

#include <array>
#include <mutex>

#include "library.h"

namespace modbus {

class CSerialLine : public CLine {
 public:
  explicit CSerialLine(const CEndpoint& endpoint);
  ~CSerialLine() override { CSerialLine::Drop(); }

  const CEndpoint& Endpoint() const { return m_endpoint; }
  bool IsConnected() override;
  CResult Connect(const CSettings& settings, CTime until, bool wary) override;
  CResult Exchange(const CSettings& settings, const CFrame& request, CFrame& reply) override;
  void Drop() override;

 private:
  CResult Open(const CSettings& settings);
  CResult Ask(const CSettings& settings, const CFrame& request, CFrame& reply);
  CResult Send(int unit, const CFrame& request);
  CResult TakeReply(const CSettings& settings, const CFrame& request, CTime deadline, CFrame& reply);
  // Whether data comes before `until`. A device that sends without end is not read for ever.
  bool Hears(CTime until) const;
  // Discards data up to the late reply of unit, or until `until`.
  void AwaitLateReply(int unit, CTime until);
  void Close();

  const CEndpoint m_endpoint;
  const CClock::duration m_silence;  // between two packets

  std::mutex m_lock;  // of the rest
  CContext m_context;
  bool m_isOpen = false;
  CTime m_quietUntil;
  std::array<CTime, kLastSerialUnit + 1> m_lateUntil;  // by unit: until when its late reply may come
};

}  // namespace modbus
