#include "host/fleet/nats_faults.h"

#include <string_view>
#include <utility>

namespace vastra {
namespace {

constexpr const char* kOtherSigner = "--tls-ca is not who has signed the certificate of the server";
constexpr const char* kEndedByServer =
    "the server has ended the connection: for the certificate of this client (--tls-cert), or because there "
    "are too many; its log says why";

// The words of the library, of OpenSSL or of the servers, and what to do.
constexpr std::pair<const char*, const char*> kHints[] = {
    {"Authorization Violation",
     "the servers do not accept the user, its password or its certificate (--creds, --tls-cert)"},
    {"Authentication Expired", "the credentials are too old (--creds)"},
    {"unable to get local issuer", kOtherSigner},
    {"self-signed certificate", kOtherSigner},
    {"self signed certificate", kOtherSigner},
    {"Expected 'PONG', got ''", kEndedByServer},
    {"bad certificate", kEndedByServer},
    {"certificate required", kEndedByServer},
    {"connection closed", kEndedByServer},
    {"No server available",
     "nothing answers there, the name is not known, or the connection is ended at once"},
    {"No responders", "no JetStream there: it is off or away, or its domain is another one (--domain)"},
    {"JetStream not enabled for account", "the account of the user needs \"jetstream: enabled\""},
    {"stream not found", "vastra-fleet init makes it; in another JetStream domain it needs --domain"},
    {"invalid checksum", "--creds is damaged"},
    {"insufficient resources", "the storage of the servers is full: max_file_store"},
    {"to have max bytes set", "make this stream with a limit that you choose, and call init again"},
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
