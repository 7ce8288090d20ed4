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

// The streams with the newest message of each subject, and the part of the chunks' limit that is theirs if
// the account asks for limits.
struct CNewestStream {
  const char *name, *subjects, *words;
  std::int64_t days, part;
};
constexpr CNewestStream kNewestStreams[] = {
    {kReceiptStream, "vastra.done.>", "receipts of an archive", 30, 20},
    {kStatusStream, "vastra.status.>", "the newest report of each node", 365, 100}};
constexpr std::int64_t kLeastBytes = 10'000'000;  // of these streams

CJson NewestStream(const CNewestStream& stream) {
  return {{"name", stream.name},
          {"description", stream.words},
          {"subjects", {stream.subjects}},
          {"retention", "limits"},
          {"discard", "old"},
          {"max_msgs_per_subject", 1},
          {"max_age", stream.days * 24 * 3600 * kSecond},
          {"max_msgs", -1},
          {"max_msg_size", -1},
          {"no_ack", false},
          {"duplicate_window", kSecond / 10},
          {"allow_direct", stream.name == kReceiptStream},
          {"storage", "file"}};
}

// What the account asks of streams with so many replicas, each of which counts.
struct CAccount {
  bool isLimitNeeded = false;  // of each stream
  std::int64_t most = -1;      // bytes of all limits together
  bool isOfReplicas = false;   // other numbers of replicas have limits of their own
};

CAccount AccountOf(const nlohmann::json& info, std::int64_t replicas) {
  const nlohmann::json none = nlohmann::json::object(), tiers = info.value("tiers", none);
  const nlohmann::json tier = tiers.value("R" + std::to_string(replicas), none);
  const nlohmann::json limits = (tiers.empty() ? info : tier).value("limits", none);
  return {limits.value("max_bytes_required", false), limits.value("max_storage", std::int64_t{-1}),
          !tiers.empty()};
}

// Nothing if there is none of this name.
nlohmann::json InfoOf(CNatsLink& link, const char* stream) {
  try {
    return link.Ask(StreamRequest("INFO", stream), nullptr, kStreamPatience);
  } catch (const CNatsFault& fault) {
    if (fault.Error() == CNatsFault::kNoStream) return nullptr;
    throw;
  }
}

struct CPlan {
  const char* name;
  CJson wish;
  const char* operation;  // null: nothing is to be done
  std::string words;
  std::string changes = {};  // each after "; "
};

std::int64_t LimitOf(const nlohmann::json& config) {
  return std::max(std::int64_t{0}, config.value("max_bytes", std::int64_t{0}));
}

// A full stream refuses what comes, so a first limit loses nothing of a stream that holds less.
void CheckFirstLimit(const char* name, std::int64_t wish, const nlohmann::json& state) {
  if (const std::int64_t held = state.value("bytes", std::int64_t{0}); wish < held)
    throw CNatsFault(
        std::string(name) + ": holds " + std::to_string(held) + " bytes, and a limit of " +
        std::to_string(wish) +
        " would be less; nothing was changed (run an archive first, or choose a larger --max-bytes)");
}

void CheckRaise(const char* name, const char* option, std::int64_t wish, std::int64_t have) {
  if (wish < have)
    throw CNatsFault(std::string(name) + ": " + option + " would be lowered from " + std::to_string(have) +
                     " to " + std::to_string(wish) +
                     "; nothing was changed (init only raises; with the servers' tools: nats stream edit " +
                     name + " " + option + "=" + std::to_string(wish) + ")");
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

// bytes: the limit; 0: as it is. That of another stream than the chunks' one is for one without a limit.
CPlan PlanOf(CNatsLink& link, const char* name, CJson wish, std::int64_t replicas, std::int64_t bytes) {
  constexpr std::int64_t kReplicas = 3;
  const nlohmann::json info = InfoOf(link, name);
  const nlohmann::json config = info.is_null() ? info : info.value("config", nlohmann::json::object());
  const std::int64_t copies = config.is_null() ? 0 : config.value("num_replicas", std::int64_t{1});
  const std::int64_t limit = config.is_null() ? 0 : LimitOf(config);
  wish["num_replicas"] = replicas > 0 ? replicas : std::max(copies, kReplicas);
  if (bytes > 0 && (name == kLogStream || limit == 0)) wish["max_bytes"] = bytes;
  if (config.is_null()) return {name, std::move(wish), "CREATE", "made"};
  CheckUse(name, wish, config);
  CheckRaise(name, "--replicas", wish["num_replicas"], copies);
  if (wish.contains("max_bytes") && limit > 0) CheckRaise(name, "--max-bytes", bytes, limit);
  if (wish.contains("max_bytes") && limit == 0)
    CheckFirstLimit(name, bytes, info.value("state", nlohmann::json::object()));
  return ChangeOf(name, wish, config);
}

std::int64_t ReplicasOf(const CPlan& plan) { return plan.wish["num_replicas"].get<std::int64_t>(); }

void CheckSum(const std::vector<CPlan>& plans, const CAccount& account) {
  const std::int64_t replicas = ReplicasOf(plans.front());
  std::int64_t sum = 0;
  for (const CPlan& plan : plans)
    if (!account.isOfReplicas || ReplicasOf(plan) == replicas) sum += LimitOf(plan.wish) * ReplicasOf(plan);
  const bool isDone =
      std::ranges::none_of(plans, [](const CPlan& plan) { return plan.operation != nullptr; });
  if (isDone || account.most <= 0 || sum <= account.most) return;
  const std::int64_t fits = LimitOf(plans.front().wish) - (sum - account.most) / replicas - 1;
  throw CNatsFault("the limits of the streams, times the replicas, are " + std::to_string(sum) +
                   " bytes, and the account may have " + std::to_string(account.most) +
                   "; nothing was changed (raise max_file of the account" +
                   (fits > 0 ? ", or --max-bytes is " + std::to_string(fits) + " at most" : "") + ")");
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
  const nlohmann::json info = link.Ask("$JS.API.INFO", nullptr, kStreamPatience);
  std::vector<CPlan> plans = {PlanOf(link, kLogStream, LogStream(), wishes.replicas, wishes.maxBytes)};
  const CAccount account = AccountOf(info, ReplicasOf(plans.front()));
  const std::int64_t limit = account.isLimitNeeded ? LimitOf(plans.front().wish) : 0;
  if (account.isLimitNeeded && limit == 0)
    throw CNatsFault(
        "the account asks for a limit of each stream (max_bytes_required): init needs --max-bytes");
  for (const CNewestStream& one : kNewestStreams)
    plans.push_back(PlanOf(link, one.name, NewestStream(one), wishes.replicas,
                           limit > 0 ? std::max(kLeastBytes, limit / one.part) : 0));
  CheckSum(plans, account);
  for (const CPlan& plan : plans) {
    if (plan.operation != nullptr)
      link.Ask(StreamRequest(plan.operation, plan.name), plan.wish, kStreamPatience);
    out << plan.name << ": " << plan.words << ", " << plan.wish["num_replicas"] << " replicas";
    if (const std::int64_t most = LimitOf(plan.wish); most > 0) out << ", at most " << most << " bytes";
    out << plan.changes << "\n";
  }
  if (account.isLimitNeeded) out << "the account asks for a limit of each stream (max_bytes_required)\n";
}

}  // namespace vastra
