// What an administrator of the servers has to set.
#include <algorithm>
#include <ostream>

#include "host/fleet/fleet_streams.h"

namespace vastra {
namespace {

using CSubjects = std::vector<std::string>;

struct CUser {
  std::string name;
  CSubjects publish, subscribe;
};

// A node may say things about itself alone, and receipts are none of its subjects.
CUser UserOf(const CFleetNode& node) {
  const auto own = [&](const char* kind) { return NodeSubject(kind, node); };
  return {node.site + "/" + node.name,
          {own("log") + ".>", own("live") + ".>", own("status"),
           NewestRequest(kReceiptStream, own("done")) + ".>"},
          {InboxOf(node) + ".>", own("done") + ".>", own("ask") + ".>"}};
}

// The server of a site may pass on what its nodes may say and hear.
CUser LeafOf(const std::string& site) {
  const auto all = [&](const char* kind) { return "vastra." + std::string(kind) + "." + Token(site) + ".>"; };
  return {site,
          {all("log"), all("live"), all("status"), NewestRequest(kReceiptStream, all("done"))},
          {"_INBOX." + Token(site) + ".>", all("done"), all("ask")}};
}

CUser Archive() {
  return {"archive",
          {"vastra.done.>", "vastra.ask.>", "$JS.ACK.>", StreamRequest("INFO", kLogStream),
           std::string("$JS.API.CONSUMER.DURABLE.CREATE.") + kLogStream + ".>",
           std::string("$JS.API.CONSUMER.MSG.NEXT.") + kLogStream + ".>"},
          {"_INBOX.vastra-archive.>"}};
}

CUser Looker() {
  return {"watch",
          {StreamRequest("INFO", kStatusStream), StreamRequest("INFO", kLogStream),
           StreamRequest("MSG.GET", kStatusStream)},
          {"_INBOX.vastra-watch.>", "vastra.live.>"}};
}

std::string Quoted(const std::string& text) {
  std::string quoted = "\"";
  for (const char byte : text) {
    if (byte == '"' || byte == '\\') quoted += '\\';
    quoted += byte;
  }
  return quoted + "\"";
}

void PrintList(const char* word, const CSubjects& subjects, std::ostream& out) {
  out << "            " << word << ": [";
  for (const std::string& one : subjects) out << (&one == subjects.data() ? "" : ", ") << Quoted(one);
  out << "]\n";
}

// The servers of the domain look for the short form, those at its leaves for the long one.
CSubjects InBoth(CSubjects subjects, const std::string& domain) {
  for (std::size_t i = 0; i < subjects.size(); ++i)
    if (std::string there = InDomain(subjects[i], domain); there != subjects[i])
      subjects.insert(subjects.begin() + static_cast<std::ptrdiff_t>(++i), std::move(there));
  return subjects;
}

void PrintUser(const CUser& user, const std::string& domain, std::ostream& out) {
  out << "      { user: " << Quoted(user.name) << ", password: \"...\", permissions: {\n";
  PrintList("publish", InBoth(user.publish, domain), out);
  PrintList("subscribe", user.subscribe, out);
  out << "      } }\n";
}

}  // namespace

void PrintServerSettings(const std::vector<CFleetNode>& nodes, const std::string& domain, std::ostream& out) {
  out << "# For the configuration of each server. Set the passwords, as bcrypt hashes.\n"
         "max_payload: 1MB                # at least 512 KB\n"
         "ping_interval: 10s              # leaf servers too: one that has stopped is left after 30 seconds\n"
         "jetstream: { store_dir: \"/var/lib/nats\", max_file_store: 100GB"
      << (domain.empty() ? "" : ", domain: " + domain)
      << " }\n"
         "tls: { cert_file: \"server.pem\", key_file: \"server.key\", ca_file: \"ca.pem\" }\n"
         "accounts: {\n"
         "  VASTRA: {\n"
         "    jetstream: enabled\n"
         "    users: [\n"
         "      { user: \"admin\", password: \"...\" }   # for vastra-fleet init\n";
  for (const CUser& user : {Archive(), Looker()}) PrintUser(user, domain, out);
  if (nodes.empty()) out << "      # and one for each node: vastra-fleet init --node SITE/NODE prints it\n";
  for (const CFleetNode& node : nodes)
    PrintUser(node.name.empty() ? LeafOf(node.site) : UserOf(node), domain, out);
  out << "    ]\n"
         "  }\n"
         "}\n"
         "# A receipt is as true as the password of the archive is secret. A stream without a limit of "
         "bytes\n"
         "# takes the disk of the servers while no archive runs: set max_file_store, or init --max-bytes.\n"
         "# sync_interval (2 minutes) is what a loss of power of all replicas at once can cost; nodes send "
         "it\n"
         "# again, for they have no receipt.\n";
}

}  // namespace vastra
