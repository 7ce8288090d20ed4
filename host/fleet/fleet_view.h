// Who looks at the loggers of a fleet: what has come of them, and how it is shown.
#pragma once

#include <atomic>
#include <chrono>
#include <ostream>

#include "host/fleet/live_message.h"
#include "host/fleet/nats_link.h"
#include "host/fleet/told_once.h"

namespace vastra {

// When something came of a logger, and whether it was the last.
struct CLiveContact {
  using Time = std::chrono::steady_clock::time_point;
  static constexpr std::chrono::seconds kGone{5};  // a message comes each second

  void Note(const CLiveMessage& message, Time now) {
    heard = now;
    ended = message.ended;
  }
  bool IsGone(Time now) const { return ended || now - heard >= kGone; }
  // Why nothing is known any more, with the time since when; empty: something is.
  std::string Fault(Time now) const;

  Time heard{};
  std::optional<std::string> ended;
};

class CFleetView {
 public:
  using Time = CLiveContact::Time;

  virtual ~CFleetView() = default;
  virtual void Hear(const CFleetLogger& logger, const CLiveMessage& message, Time now) = 0;
  // Something is wrong with the servers or with what comes from them.
  virtual void Tell(const std::string& line) = 0;
  // What is due, also without a message, and when that is next.
  virtual void Turn(Time now) = 0;
  virtual Time Due() const = 0;
};

// The messages as they come, one line of JSON each.
class CJsonView : public CFleetView {
 public:
  CJsonView(std::ostream& out, CToldOnce& log) : m_out(out), m_log(log) {}
  void Hear(const CFleetLogger& logger, const CLiveMessage& message, Time now) override;
  void Tell(const std::string& line) override { m_log.Tell(line); }
  void Turn(Time) override {}
  Time Due() const override { return std::chrono::steady_clock::now() + std::chrono::seconds(1); }

 private:
  std::ostream& m_out;
  CToldOnce& m_log;
};

// Which loggers are shown; empty: all.
struct CLiveChoice {
  std::string site, node;
};
// Lets view hear the loggers until end is set and the link was woken, or out fails.
void WatchFleet(CNatsLink& link, const CLiveChoice& choice, CFleetView& view, const std::ostream& out,
                const std::atomic<bool>& end);

}  // namespace vastra
