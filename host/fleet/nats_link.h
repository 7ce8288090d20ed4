// CNatsLink: the connection to the servers. It connects again by itself, forever. What comes from the servers
// is taken by one thread, the loop of a shipper or an archive, in the order in which it came.
#pragma once

#include <nats/nats.h>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "host/common/json_text.h"

namespace vastra {

// How to reach the servers, as a command line has it. An URL with tls:// means TLS at all of them.
struct CNatsOptions {
  std::vector<std::string> servers;  // URLs; a list with commas is several
  std::string creds;                 // a file: credentials of the server's tools, or a line USER:PASSWORD
  std::string authority, certificate, key;  // files, in PEM; any of them means TLS
  std::string name;                         // of this client, as the server lists it
  std::string inbox;                        // beginning of the subjects of answers, before a random token
  std::string domain;                       // of JetStream; empty: the one of the server
  std::int64_t payload = 0;                 // bytes that a message must be able to have
};

// error: the server's number for why; 0 without one.
class CNatsFault : public std::runtime_error {
 public:
  explicit CNatsFault(const std::string& text, int error = 0) : std::runtime_error(text), m_error(error) {}
  int Error() const { return m_error; }

  static constexpr int kNoStream = 10059;

 private:
  int m_error;
};

// A subject of the servers' interface, "$JS.API....", as it is from outside of the domain: another one has an
// interface of its own. Others are returned as they are.
std::string InDomain(const std::string& subject, const std::string& domain);

// A message that came. All views are valid while it exists.
class CNatsMessage {
 public:
  explicit CNatsMessage(natsMsg* message) : m_message(message, natsMsg_Destroy) {}

  std::string_view Subject() const { return natsMsg_GetSubject(m_message.get()); }
  std::string_view Reply() const;
  std::string_view Data() const;
  // A header, empty if it is not there; "Status" is that of a message without data, such as "404".
  std::string_view Header(const char* name) const;

 private:
  std::unique_ptr<natsMsg, decltype(&natsMsg_Destroy)> m_message;
};

class CNatsLink {
 public:
  using Time = std::chrono::steady_clock::time_point;

  // Begins to connect. Throws CNatsFault for options that cannot work, such as a file that cannot be read.
  explicit CNatsLink(const CNatsOptions& options);
  CNatsLink(const CNatsLink&) = delete;
  CNatsLink& operator=(const CNatsLink&) = delete;
  ~CNatsLink();

  // Whether there is a connection to a server that takes the messages.
  bool IsUp() const;
  // Waits for the first connection. Throws CNatsFault without one in this time, or if there will be none.
  void WaitUp(std::chrono::milliseconds patience);
  // Counts the connections that were made: whoever has something at the server that ends with a connection
  // compares.
  unsigned Connections() const;
  // What the servers complained about since the last call, such as a subject that is not permitted, and why
  // there is no connection. Throws CNatsFault for what stays so: the servers refuse the user, or do not let
  // it hear a subject. Leaves a server that takes only smaller messages, for another one or after a pause.
  std::vector<std::string> TakeFaults();

  // Messages of this subject, wildcards allowed, come to Take. Throws CNatsFault.
  void Listen(const std::string& subject);
  // The same for messages of which the newest count: while they are not taken, further ones are dropped.
  void ListenLossy(const std::string& subject);
  // The beginning of the subjects of answers of a kind, which come to Take.
  std::string AnswerSubject(std::string_view kind) const { return m_inbox + ".a." + std::string(kind) + "."; }

  // Subjects "$JS.API...." of the following are those of the domain.
  // Sends without waiting for an answer. False if there is no connection; the message is gone then.
  bool Publish(const std::string& subject, std::string_view data, const std::string& reply = {});
  // The same with a header.
  bool PublishHeader(const std::string& subject, const char* header, const char* value,
                     const std::string& reply);
  // The answer to a request, as JSON. Throws CNatsFault without one in this time, or if it is an error.
  nlohmann::json Ask(const std::string& subject, const CJson& question, std::chrono::milliseconds patience);

  // All messages that came, at once if there are some, else when the first one comes, Wake was called, or at
  // until.
  std::deque<CNatsMessage> Take(Time until);
  void Wake();

 private:
  struct CSecret {
    CNatsOptions options;
  };
  explicit CNatsLink(CSecret wish);
  static void OnMessage(natsConnection*, natsSubscription*, natsMsg* message, void* link);
  static void OnLossy(natsConnection*, natsSubscription*, natsMsg* message, void* link);
  static void OnError(natsConnection*, natsSubscription*, natsStatus status, void* link);
  static void OnUp(natsConnection*, void* link);
  static void OnDown(natsConnection*, void* link);
  void Subscribe(const std::string& subject, natsMsgHandler hear);
  void Tell(const std::string& fault);
  std::string Absence() const;
  std::string Server() const;
  void NoteServer(natsConnection* connection);
  void CheckOpen() const;
  bool IsConnected() const;
  bool IsSmall() const;
  bool IsLeft() const;
  void LeaveSmall(Time now);

  const CNatsOptions m_wish;
  const std::string m_inbox;
  natsConnection* m_connection = nullptr;
  std::vector<natsSubscription*> m_subscriptions;

  mutable std::mutex m_lock;
  std::condition_variable m_changed;
  std::deque<CNatsMessage> m_messages;
  std::size_t m_lossyBytes = 0;  // in m_messages
  bool m_isWoken = false, m_isEnding = false;
  unsigned m_connections = 0;
  Time m_checked = std::chrono::steady_clock::now();  // when there was a connection, or its absence was told
  Time m_leaveDue{};                         // when a server that takes only smaller messages is left
  std::chrono::milliseconds m_leavePause{};  // before the next one is
  std::vector<std::string> m_faults;
  std::string m_server;   // that it is or was connected to
  bool m_isLeft = false;  // it takes only smaller messages
  std::string m_deaf;     // the servers do not let this user hear a subject: why
  std::string m_denial;   // what they did not let it say since the last Ask began
};

// The number at the end of an answer's subject; 0 without one.
std::uint64_t AnswerNumber(const CNatsMessage& answer);

// The answer of a stream to a message that was published to it.
struct CStoredAnswer {
  std::uint64_t sequence = 0;  // of the message in the stream; 0: it was not stored
  int error = 0;               // the server's number for why; 0 without one
  std::string text;            // the server's words

  // There is a message of this subject already, and one is allowed. A full stream has the same number.
  bool IsRepeated() const { return error == kNotStored && text == "maximum messages per subject exceeded"; }

  static constexpr int kNotStored = 10077;
  static constexpr int kWrongSequence = 10071;  // the last message of the subject has another sequence
};
CStoredAnswer ParseStored(const CNatsMessage& answer);

}  // namespace vastra
