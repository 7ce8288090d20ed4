#include "host/fleet/fleet_streams.h"

#include <algorithm>
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
          {"max_age", 0},
          {"max_msgs", -1},
          {"max_msg_size", -1},
          {"max_consumers", -1},
          {"no_ack", false},
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
          {"max_msgs", -1},
          {"max_msg_size", -1},
          {"no_ack", false},
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
    if (fault.Error() == CNatsFault::kNoStream) return std::nullopt;
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
  std::string changes = {};  // each after "; "
};

void RefuseLower(const char* name, const char* what, std::int64_t wish, std::int64_t have) {
  throw CNatsFault(std::string(name) + ": " + what + " would be lowered from " +
                   (have <= 0 ? std::string("no limit") : std::to_string(have)) + " to " +
                   std::to_string(wish) +
                   "; nothing was changed (init only raises; the servers' tools can lower it)");
}

// The value of a key. Times in seconds.
std::string ValueText(const std::string& key, const nlohmann::json& value) {
  if (value.is_null()) return "not set";
  if (!value.is_number() || (key != "max_age" && key != "duplicate_window")) return JsonText(CJson(value));
  return JsonText(CJson(value.get<double>() / static_cast<double>(kSecond))) + " s";
}

// Without these a stream cannot carry a fleet.
void CheckUse(const char* name, const CJson& wish, const nlohmann::json& config) {
  for (const char* key : {"retention", "subjects", "storage", "no_ack"})
    if (const nlohmann::json have = config.value(key, nlohmann::json());
        have != nlohmann::json(wish[key]) && !(have.is_null() && wish[key] == false))
      throw CNatsFault(std::string(name) + ": is there already, but its " + key + " is " +
                       ValueText(key, have) + " and should be " + JsonText(wish[key]) +
                       "; nothing was changed (delete it with the servers' tools, and init makes it)");
}

bool IsRaised(const std::string& key) {
  constexpr const char* kRaised[] = {"num_replicas", "max_bytes",    "max_msgs_per_subject",
                                     "discard",      "allow_direct", "discard_new_per_subject"};
  return std::ranges::find(kRaised, key) != std::end(kRaised);
}

// What an administrator has set besides stays.
CPlan ChangeOf(const char* name, const CJson& wish, const nlohmann::json& config) {
  CPlan plan = {name, CJson(config), nullptr, "is there"};
  for (const auto& [key, value] : wish.items()) {
    const nlohmann::json have = config.value(key, nlohmann::json());
    const bool isOff = (have.is_null() && value == false) || key == "description";
    if (isOff || have == nlohmann::json(value)) continue;
    if (IsRaised(key)) {
      plan.wish[key] = value;
      plan.operation = "UPDATE";
      plan.words = "changed";
      plan.changes += "; " + key + " is now " + JsonText(value) + ", was " + ValueText(key, have);
    } else {
      plan.changes += "; " + key + " stays " + ValueText(key, have) + ", a new one has " +
                      ValueText(key, nlohmann::json(value));
    }
  }
  return plan;
}

CPlan PlanOf(CNatsLink& link, const char* name, CJson wish, const CStreamWishes& wishes) {
  constexpr std::int64_t kReplicas = 3;
  const std::optional<nlohmann::json> config = ConfigOf(link, name);
  const std::int64_t replicas = config ? config->value("num_replicas", std::int64_t{1}) : 0;
  const bool isLog = name == kLogStream;
  wish["num_replicas"] = wishes.replicas > 0 ? wishes.replicas : std::max(replicas, kReplicas);
  if (isLog && wishes.maxBytes > 0) wish["max_bytes"] = wishes.maxBytes;
  if (!config) return {name, std::move(wish), "CREATE", "made"};
  CheckUse(name, wish, *config);
  const std::int64_t bytes = config->value("max_bytes", std::int64_t{-1});
  if (wish["num_replicas"] < replicas) RefuseLower(name, "replicas", wishes.replicas, replicas);
  if (isLog && IsLower(wishes.maxBytes, bytes))
    RefuseLower(name, "the limit of bytes", wishes.maxBytes, bytes);
  return ChangeOf(name, wish, *config);
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
    out << plan.name << ": " << plan.words << ", " << plan.wish["num_replicas"] << " replicas" << plan.changes
        << "\n";
  }
}

}  // namespace vastra
