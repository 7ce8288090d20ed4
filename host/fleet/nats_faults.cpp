#include "host/fleet/nats_faults.h"

#include <string_view>
#include <utility>

namespace vastra {
namespace {

constexpr const char* kOtherSigner = "--tls-ca is not who has signed the certificate of the server";
constexpr const char* kOtherName =
    "the certificate of the server is for other names: its subjectAltName needs the host of --server";
constexpr const char* kEndedByServer =
    "the line was cut, or the server has ended the connection: for the certificate of this client "
    "(--tls-cert), or because there are too many; its log says why";

// The words of the library, of OpenSSL or of the servers, and what to do.
constexpr std::pair<const char*, const char*> kHints[] = {
    {"Authorization Violation",
     "the servers do not accept the user: its password, or credentials that are too old or revoked "
     "(--creds), "
     "or its certificate (--tls-cert)"},
    {"Authentication Expired", "the credentials are too old: renew the file (--creds)"},
    {"Authentication Revoked", "the servers have revoked the credentials (--creds)"},
    {"Secure Connection not available", "the servers have no TLS, which tls:// and --tls-ca ask for"},
    {"certificate has expired", "the certificate of the server is too old"},
    {"address mismatch", kOtherName},
    {"ostname mismatch", kOtherName},
    {"unable to get local issuer", kOtherSigner},
    {"self-signed certificate", kOtherSigner},
    {"self signed certificate", kOtherSigner},
    {"Expected 'PONG', got ''", kEndedByServer},
    {"SSL_write error", kEndedByServer},
    {"SSL_read error", kEndedByServer},
    {"bad certificate", kEndedByServer},
    {"certificate required", kEndedByServer},
    {"connection closed", kEndedByServer},
    {"maximum connections", "raise max_connections of the servers, or let leaf nodes carry the connections"},
    {"No server available",
     "the connection is ended at once: is it the port for clients, 4222 without another?"},
    {"Timeout", "no server of NATS answers there, or most servers of its cluster are away"},
    {"No responders", "no JetStream there: it is off or away, or its domain is another one (--domain)"},
    {"JetStream not enabled for account", "the account of the user needs \"jetstream: enabled\""},
    {"stream not found", "vastra-fleet init makes it; in another JetStream domain it needs --domain"},
    {"invalid checksum", "--creds is damaged"},
    {"insufficient resources", "the storage of the servers is full: max_file_store"},
    {"insufficient storage", "--max-bytes, times the replicas, is more than the account or the servers have"},
    {"resource limits exceeded", "max_file of the account is used up: run an archive, or raise it"},
    {"maximum bytes exceeded", "the stream is full: run an archive, or raise it with init --max-bytes"},
    {"maximum number of streams", "a fleet needs three: raise max_streams of the account"},
    {"account limit max stream bytes", "raise the account's limit of a stream, or lower --max-bytes"},
    {"can not be updated", "somebody has made this consumer: delete it, and the archive makes it"},
    {"filtered consumer not unique",
     "another archive takes these sites; if it is no longer in use, delete its consumer of VASTRA_LOGS"},
    {"no suitable peers", "the cluster has fewer servers than --replicas, or some are away"},
    {"subjects overlap", "another stream has subjects below vastra.: remove it, or these subjects"},
    {"replicas > 1 not supported", "one server has --replicas 1"},
    {kDenied, "vastra-fleet init --print --node SITE/NODE prints what each user may say and hear"},
};

// "(conn.c:733): " before the words.
std::string WithoutPlace(std::string text) {
  const std::size_t begin = text.find('('), end = text.find("): ");
  const bool isPlace = begin != std::string::npos && end != std::string::npos &&
                       text.substr(begin, end - begin).find(".c:") != std::string::npos;
  return isPlace ? text.erase(begin, end + 3 - begin) : text;
}

std::string Common(const std::string& text) {
  constexpr std::pair<const char*, int> kCommon[] = {{"\"vastra.", 4}, {"\"$JS.ACK.", 2}};
  for (const auto& [begin, tokens] : kCommon) {
    const std::size_t quote = text.find(begin), last = text.rfind('"');
    std::size_t end = quote;
    for (int i = 0; i < tokens && end != std::string::npos; ++i) end = text.find('.', end + 1);
    if (quote != std::string::npos && end < last) return text.substr(0, end) + ".>" + text.substr(last);
  }
  return text;
}

}  // namespace

std::string FaultWords(std::string text) {
  text = WithoutPlace(std::move(text));
  if (text.find(kDenied) != std::string::npos) text = Common(text);
  for (const auto& [words, hint] : kHints)
    if (text.find(words) != std::string::npos) return text + " (" + hint + ")";
  return text;
}

}  // namespace vastra
