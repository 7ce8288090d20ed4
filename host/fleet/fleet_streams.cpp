#include "host/fleet/fleet_streams.h"

#include <ctime>
#include <ostream>

namespace vastra {
namespace {

constexpr std::chrono::seconds kStreamPatience{10};
constexpr std::int64_t kSecond = 1'000'000'000;  // the servers count nanoseconds

// One message of each subject. A repeat of a chunk is refused; a receipt or a report takes the place of the
// one before.
CJson LogStream() {
  return {{"name", kLogStream},
          {"description", "chunks of logs, until an archive has them"},
          {"subjects", {"vastra.log.>"}},
          {"retention", "workqueue"},
          {"discard", "new"},
          {"discard_new_per_subject", true},
          {"max_msgs_per_subject", 1},
          {"duplicate_window", kSecond / 10},
          {"storage", "file"}};
}

CJson NewestStream(const char* name, const char* subjects, const char* words, std::int64_t days) {
  return {{"name", name},
          {"description", words},
          {"subjects", {subjects}},
          {"retention", "limits"},
          {"discard", "old"},
          {"max_msgs_per_subject", 1},
          {"max_age", days * 24 * 3600 * kSecond},
          {"duplicate_window", kSecond / 10},
          {"allow_direct", name == kReceiptStream},
          {"storage", "file"}};
}

// -1 and 0 are no limit.
bool IsLower(std::int64_t wish, std::int64_t have) { return wish > 0 && (have <= 0 || wish < have); }

std::optional<nlohmann::json> ConfigOf(CNatsLink& link, const char* stream) {
  try {
    return link.Ask(StreamRequest("INFO", stream), nullptr, kStreamPatience).at("config");
  } catch (const CNatsFault& fault) {
    if (std::string_view(fault.what()) == "stream not found") return std::nullopt;
    throw;
  } catch (const nlohmann::json::exception& fault) {
    throw CNatsFault(std::string(stream) + ": " + fault.what());
  }
}

struct CPlan {
  const char* name;
  CJson wish;
  const char* operation;  // null: nothing is to be done
  std::string words;
};

void RefuseLower(const char* name, const char* what, std::int64_t wish, std::int64_t have) {
  throw CNatsFault(std::string(name) + ": " + what + " would be lowered from " +
                   (have <= 0 ? std::string("no limit") : std::to_string(have)) + " to " +
                   std::to_string(wish) + "; nothing was changed");
}

CPlan PlanOf(CNatsLink& link, const char* name, CJson wish, const CStreamWishes& wishes) {
  wish["num_replicas"] = wishes.replicas;
  const bool isLog = name == kLogStream;
  if (isLog && wishes.maxBytes > 0) wish["max_bytes"] = wishes.maxBytes;
  const std::optional<nlohmann::json> config = ConfigOf(link, name);
  if (!config) return {name, std::move(wish), "CREATE", "made"};
  const std::int64_t replicas = config->value("num_replicas", std::int64_t{1});
  const std::int64_t bytes = config->value("max_bytes", std::int64_t{-1});
  if (config->value("retention", std::string()) != wish["retention"])
    throw CNatsFault(std::string(name) + ": is there already, with another retention than \"" +
                     wish["retention"].get<std::string>() + "\"");
  if (wishes.replicas < replicas) RefuseLower(name, "replicas", wishes.replicas, replicas);
  if (isLog && IsLower(wishes.maxBytes, bytes))
    RefuseLower(name, "the limit of bytes", wishes.maxBytes, bytes);
  CJson changed = CJson(*config);  // what an administrator has set besides stays
  for (const char* key :
       {"num_replicas", "max_bytes", "max_msgs_per_subject", "discard", "discard_new_per_subject"})
    if (wish.contains(key)) changed[key] = wish[key];
  if (nlohmann::json(changed) == *config) return {name, changed, nullptr, "is there"};
  return {name, changed, "UPDATE", "changed"};
}

}  // namespace

std::string StreamRequest(const char* operation, const char* stream) {
  return std::string("$JS.API.STREAM.") + operation + "." + stream;
}

std::string NewestRequest(const char* stream, const std::string& subject) {
  return std::string("$JS.API.DIRECT.GET.") + stream + "." + subject;
}

std::string InboxOf(const CFleetNode& node) { return "_INBOX." + Token(node.site) + "." + Token(node.name); }

std::optional<std::uint64_t> ServerTime(const std::string& text) {
  std::tm parts = {};
  const char* const rest = ::strptime(text.c_str(), "%Y-%m-%dT%H:%M:%S", &parts);
  if (rest == nullptr) return std::nullopt;
  std::uint64_t fraction = 0, unit = kSecond;
  for (const char* digit = rest + 1; *rest == '.' && *digit >= '0' && *digit <= '9' && unit > 1; ++digit) {
    unit /= 10;
    fraction += unit * static_cast<std::uint64_t>(*digit - '0');
  }
  return static_cast<std::uint64_t>(::timegm(&parts)) * kSecond + fraction;
}

void MakeStreams(CNatsLink& link, const CStreamWishes& wishes, std::ostream& out) {
  constexpr std::int64_t kReceiptDays = 30, kStatusDays = 365;
  const CPlan plans[] = {
      PlanOf(link, kLogStream, LogStream(), wishes),
      PlanOf(link, kReceiptStream,
             NewestStream(kReceiptStream, "vastra.done.>", "receipts of an archive", kReceiptDays), wishes),
      PlanOf(link, kStatusStream,
             NewestStream(kStatusStream, "vastra.status.>", "the newest report of each node", kStatusDays),
             wishes)};
  for (const CPlan& plan : plans) {
    if (plan.operation != nullptr)
      link.Ask(StreamRequest(plan.operation, plan.name), plan.wish, kStreamPatience);
    out << plan.name << ": " << plan.words << ", " << plan.wish["num_replicas"] << " replicas\n";
  }
}

}  // namespace vastra
