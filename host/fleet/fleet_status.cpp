#include "host/fleet/fleet_status.h"

#include <openssl/evp.h>

#include <algorithm>
#include <functional>
#include <map>
#include <sstream>

#include "host/common/shown_text.h"
#include "host/fleet/fleet_streams.h"
#include "host/fleet/text_table.h"

namespace vastra {
namespace {

using CClock = std::chrono::steady_clock;

constexpr std::chrono::seconds kReportPatience{5}, kChunkPatience{120};
constexpr const char* kReportKind = "report";

// The subjects in a stream come in pages.
void EachSubject(CNatsLink& link, const char* stream, const char* filter, std::chrono::seconds patience,
                 const std::function<void(const std::string&)>& visit) {
  std::uint64_t seen = 0;
  for (std::uint64_t total = 1; seen < total;) {
    const nlohmann::json info =
        link.Ask(StreamRequest("INFO", stream), {{"subjects_filter", filter}, {"offset", seen}}, patience);
    const auto state = info.find("state");
    if (state == info.end() || !state->contains("subjects")) break;
    const std::uint64_t before = seen;
    for (const auto& [subject, count] : (*state)["subjects"].items()) {
      visit(subject);
      ++seen;
    }
    total = info.value("total", std::uint64_t{0});
    if (seen == before) break;
  }
}

std::string Base64(const std::string& text) {
  std::string bytes(text.size(), '\0');  // more than needed
  const int size =
      EVP_DecodeBlock(reinterpret_cast<unsigned char*>(bytes.data()),
                      reinterpret_cast<const unsigned char*>(text.data()), static_cast<int>(text.size()));
  const std::size_t padding = text.ends_with("==") ? 2 : text.ends_with("=") ? 1 : 0;
  bytes.resize(size < 0 ? 0 : static_cast<std::size_t>(size) - padding);
  return bytes;
}

// The subject says which node it is, the report says the rest. The servers send it within JSON: its bytes as
// they are could be sent to the subject of a receipt.
void AddReport(const nlohmann::json& message, std::map<std::string, CJson>& nodes) {
  const std::string subject = message.value("subject", std::string());
  const std::vector<std::string_view> tokens = TokensOf(subject);
  constexpr std::size_t kTokens = 4;
  if (tokens.size() != kTokens) return;
  const std::optional<std::string> site = TextOfToken(tokens[2]), node = TextOfToken(tokens[3]);
  const std::optional<std::uint64_t> time = ServerTime(message.value("time", std::string()));
  if (!site || !node) return;
  CJson report = CJson::object();
  try {
    report = CJson(ParseJson(Base64(message.value("data", std::string()))));
  } catch (const CJsonFault&) {
    report["fault"] = "the report is not JSON";
  }
  if (!report.is_object()) report = CJson::object();
  report["site"] = *site;
  report["node"] = *node;
  constexpr double kNanoseconds = 1e9;
  if (time)
    report["contact"] = std::max(
        0.0, std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count() -
                 static_cast<double>(*time) / kNanoseconds);
  nodes[subject] = std::move(report);
}

void HearReport(const CNatsMessage& answer, std::map<std::string, CJson>& nodes) {
  try {
    AddReport(ParseJson(answer.Data()).at("message"), nodes);
  } catch (const CJsonFault&) {
  } catch (const nlohmann::json::exception&) {  // an error: the report was removed since the list was made
  }
}

std::map<std::string, CJson> Reports(CNatsLink& link) {
  std::map<std::string, CJson> nodes;
  std::vector<std::string> subjects;
  EachSubject(link, kStatusStream, "vastra.status.>", kReportPatience,
              [&](const std::string& subject) { subjects.push_back(subject); });
  const std::string answers = link.AnswerSubject(kReportKind);
  constexpr std::size_t kAtOnce = 500;
  for (std::size_t begin = 0; begin < subjects.size(); begin += kAtOnce) {
    const std::size_t end = std::min(subjects.size(), begin + kAtOnce);
    for (std::size_t i = begin; i < end; ++i)
      link.Publish(StreamRequest("MSG.GET", kStatusStream), JsonText({{"last_by_subj", subjects[i]}}),
                   answers + std::to_string(i));
    const CClock::time_point until = CClock::now() + kReportPatience;
    for (std::size_t heard = begin; heard < end && CClock::now() < until;)
      for (const CNatsMessage& message : link.Take(until)) {
        HearReport(message, nodes);
        ++heard;
      }
  }
  return nodes;
}

// Of each node, also of one that has not reported. The servers count no bytes of a subject.
void CountChunks(CNatsLink& link, std::map<std::string, CJson>& nodes) {
  for (auto& [subject, report] : nodes) report["chunks"] = 0;
  EachSubject(link, kLogStream, "vastra.log.>", kChunkPatience, [&](const std::string& subject) {
    const std::vector<std::string_view> tokens = TokensOf(subject);
    constexpr std::size_t kTokens = 4;
    if (tokens.size() < kTokens) return;
    const std::optional<std::string> site = TextOfToken(tokens[2]), node = TextOfToken(tokens[3]);
    if (!site || !node) return;
    CJson& report = nodes[NodeSubject("status", {*site, *node})];
    if (report.is_null()) report = {{"site", *site}, {"node", *node}, {"chunks", 0}};
    report["chunks"] = report["chunks"].get<std::uint64_t>() + 1;
  });
}

double NumberAt(const CJson& object, const char* key) {
  const auto found = object.find(key);
  return found != object.end() && found->is_number() ? found->get<double>() : 0;
}

std::string CountText(double count) {
  constexpr double kMost = 1e15;
  return std::to_string(static_cast<std::uint64_t>(std::clamp(count, 0.0, kMost)));
}

std::string SumText(const CJson& node, const char* key) {
  const auto found = node.find(key);
  if (found == node.end() || !found->is_object()) return "-";
  std::ostringstream text;
  text.precision(1);
  constexpr double kMega = 1e6;
  text << std::fixed << CountText(NumberAt(*found, "files")) << " (" << NumberAt(*found, "bytes") / kMega
       << " MB)";
  return text.str();
}

std::string AgeText(const CJson& node, const char* key) {
  const auto found = node.find(key);
  if (found == node.end() || !found->is_number()) return "-";
  return AgeWords(found->get<double>());
}

}  // namespace

CJson FleetStatus(CNatsLink& link, bool hasChunks) {
  CJson list = CJson::array();
  std::map<std::string, CJson> nodes = Reports(link);
  const nlohmann::json info = link.Ask(StreamRequest("INFO", kLogStream), nullptr, kReportPatience);
  if (hasChunks) CountChunks(link, nodes);
  for (auto& [subject, report] : nodes) list.push_back(std::move(report));
  const nlohmann::json state = info.value("state", nlohmann::json::object());
  return {{"servers",
           {{"messages", state.value("messages", std::uint64_t{0})},
            {"bytes", state.value("bytes", std::uint64_t{0})}}},
          {"nodes", std::move(list)}};
}

std::string FleetTable(const CJson& status, bool hasChunks) {
  std::vector<std::vector<std::string>> rows = {
      {"site", "node", "waiting", "sent", "archived", "lost", "oldest", "last contact"}};
  if (hasChunks) rows.front().emplace_back("chunks");
  for (const CJson& node : status["nodes"]) {
    rows.push_back({Printable(node["site"].get<std::string>()), Printable(node["node"].get<std::string>()),
                    SumText(node, "waiting"), SumText(node, "sent"), SumText(node, "archived"),
                    CountText(NumberAt(node, "lost")), AgeText(node, "oldest"), AgeText(node, "contact")});
    if (hasChunks) rows.back().push_back(CountText(NumberAt(node, "chunks")));
  }
  return status["nodes"].empty() ? "no node has reported yet\n" : TextTable(rows);
}

}  // namespace vastra
