#include "host/fleet/fleet_view.h"

#include <ctime>

#include "host/common/json_text.h"
#include "host/common/shown_text.h"
#include "vastra/platform/time.h"

namespace vastra {
namespace {

std::string ClockWords(std::chrono::system_clock::time_point time) {
  const std::tm local = CTime(std::chrono::system_clock::to_time_t(time)).GetLocalTm();
  char text[64];
  std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &local);
  return text;
}

void HearLive(const CNatsMessage& message, CFleetView& view) {
  const std::optional<CFleetLogger> logger = ParseLiveSubject(message.Subject());
  if (!logger) return view.Tell("messages of no logger are left out");
  try {
    view.Hear(*logger, ParseLive(message.Data()), std::chrono::steady_clock::now());
  } catch (const CLiveFault&) {
    view.Tell(logger->node.site + "/" + logger->node.name +
              ": messages that are not about a logger are left out");
  }
}

}  // namespace

std::string CLiveContact::Fault(Time now) const {
  constexpr std::size_t kLongestWords = 200;
  if (!IsGone(now)) return "";
  const auto since = std::chrono::system_clock::now() -
                     std::chrono::duration_cast<std::chrono::system_clock::duration>(now - heard);
  const std::string why =
      ended ? OneLine(Shortened(ended->c_str(), kLongestWords)) : "nothing comes from its machine";
  return "gone since " + ClockWords(since) + ": " + why;
}

void CJsonView::Hear(const CFleetLogger& logger, const CLiveMessage& message, Time) {
  m_out << "{\"site\":" << JsonText(logger.node.site) << ",\"node\":" << JsonText(logger.node.name)
        << ",\"logger\":" << JsonText(logger.name);
  for (std::size_t i = 0; i < kLiveLines.size(); ++i)
    if (!message.lines[i].text.empty()) m_out << ",\"" << kLiveLines[i] << "\":" << message.lines[i].text;
  if (message.ended) m_out << ",\"ended\":" << JsonText(*message.ended);
  m_out << '}' << std::endl;
}

void WatchFleet(CNatsLink& link, const CLiveChoice& choice, CFleetView& view, const std::ostream& out,
                const std::atomic<bool>& end) {
  const auto part = [](const std::string& name) { return name.empty() ? "*" : Token(name); };
  link.ListenLossy("vastra.live." + part(choice.site) + "." + part(choice.node) + ".*");
  while (!end && out) {
    for (const CNatsMessage& message : link.Take(view.Due())) HearLive(message, view);
    for (const std::string& fault : link.TakeFaults()) view.Tell("servers: " + fault);
    view.Turn(std::chrono::steady_clock::now());
  }
}

}  // namespace vastra
