// CTcpLine: the TCP connection of one node. Connecting has several steps, and a later call can continue it,
// so that a dead device does not delay the other nodes.
//
// The driver makes and checks the head of a packet itself. The library neither numbers a request that it gets
// as a frame nor checks unit and length of a reply, and a value must not come from another device or request.
#pragma once

#include <cstdint>
#include <iterator>
#include <optional>
#include <string>

#include "library.h"
#include "resolver.h"

namespace modbus {

class CTcpLine : public CLine {
 public:
  CTcpLine(const std::string& host, const std::string& port);
  ~CTcpLine() override { CTcpLine::Drop(); }

  bool IsConnected() override;
  CResult Connect(const CSettings& settings, CTime until, bool wary) override;
  CResult Exchange(const CSettings& settings, const CFrame& request, CFrame& reply) override;
  void Drop() override;

 private:
  // How long a step may wait for the device now, and how it is to be judged.
  struct CPatience {
    CTime until;
    bool wary;
  };
  using CStep = CResult (CTcpLine::*)(const CSettings& settings, const CPatience& patience);

  CResult TakeSteps(const CSettings& settings, const CPatience& patience);
  CResult ConnectAnew(const CSettings& settings, bool wary);
  // The steps of connecting, in their order.
  CResult Resolve(const CSettings& settings, const CPatience& patience);
  CResult Dial(const CSettings& settings, const CPatience& patience);
  CResult Settle(const CSettings& settings, const CPatience& patience);
  CResult Prove(const CSettings& settings, const CPatience& patience);
  static constexpr CStep kSteps[] = {&CTcpLine::Resolve, &CTcpLine::Dial, &CTcpLine::Settle,
                                     &CTcpLine::Prove};
  static constexpr int kConnected = static_cast<int>(std::size(kSteps));

  CResult BeginDialling(const CAddress& address);
  CResult DialOutcome(CTime until);
  void Hang();
  // Data that came without a request: 0 none, 1 some, -1 the connection has ended.
  int Peek() const;
  // Whether the name server or the device has not replied yet to the attempt. The time-out counts from the
  // begin of the attempt: if a hundred nodes open together, only the first dead one waits.
  bool IsAwaited() const;
  // Whether the device has closed its side and no data is left to read.
  bool HasClosed() const;
  CResult Send(int unit, const CFrame& request);
  // The reply to what was sent last; pending if nothing of it is there at `until`. It is complete at
  // deadline.
  CResult TakeReply(int unit, const CFrame& request, CTime until, CTime deadline, CFrame& reply);
  CResult Ask(const CSettings& settings, const CFrame& request, CFrame& reply);
  // result, or failed with words once the present step has lasted for the time-out.
  CResult UntilDeadline(CResult result, const CSettings& settings, const char* words) const;

  CResolver m_resolver;
  CContext m_context;
  int m_socket = -1;
  int m_step = 0;                // what is to be done next; kConnected: nothing
  std::optional<CTime> m_begun;  // when the present step was; none: no attempt is under way
  std::size_t m_next = 0;        // address to dial
  std::uint16_t m_number = 0;    // of the last request
  bool m_asked = false;          // the proof, and nothing else since
};

}  // namespace modbus
