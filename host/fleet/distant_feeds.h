// CDistantFeeds: a feed on this machine for each logger of a fleet, at FOLDER/SITE.NODE.LOGGER/feed, so that
// whatever shows loggers of this machine can show distant ones. A feed goes when nothing has come of its
// logger for a minute.
#pragma once

#include <map>
#include <memory>

#include "host/feed/feed_port.h"
#include "host/fleet/distant_content.h"
#include "host/fleet/live_gate.h"

namespace vastra {

class CDistantFeeds : public CFleetView {
 public:
  // Makes the folder, and removes what a killed watch has left in it. Throws
  // std::filesystem::filesystem_error.
  CDistantFeeds(const std::string& folder, CToldOnce& log);
  ~CDistantFeeds() override;

  void Hear(const CFleetLogger& logger, const CLiveMessage& message, Time now) override;
  void Tell(const std::string& line) override { m_log.Tell(line); }
  // Serves the readers until something is to be done or some time has passed.
  void Turn(Time now) override;
  Time Due() const override { return {}; }

 private:
  struct CFeedOfOne {
    CFeedOfOne(const CFleetLogger& from, const std::string& path)
        : logger(from), content(from), port(CString(path), content) {}
    const CFleetLogger logger;
    CDistantContent content;
    CFeedPort port;
  };

  // Null if it cannot be made, which was told.
  std::unique_ptr<CFeedOfOne> Make(const CFleetLogger& logger, const std::string& name);
  void Remove(const std::string& name);
  void RemoveGone(Time now);

  static constexpr std::size_t kMostFeeds = 200;

  const std::string m_folder;
  CToldOnce& m_log;
  CLiveGate m_gate{kMostFeeds};
  std::map<std::string, std::unique_ptr<CFeedOfOne>> m_feeds;  // by the names of their folders
  std::vector<pollfd> m_polled;
  Time m_removeDue{};
};

}  // namespace vastra
