// What a request asks for, and the answer to it, without any HTTP: the modules that answer know neither the
// server nor its threads.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/common/json_text.h"

namespace vastra {

// The parameters after the question mark, decoded, in their order.
class CWebQuery {
 public:
  using CPairs = std::vector<std::pair<std::string, std::string>>;

  CWebQuery() = default;
  explicit CWebQuery(CPairs pairs) : m_pairs(std::move(pairs)) {}

  // The first one; empty if it is not there.
  std::optional<std::string_view> Get(std::string_view name) const {
    for (const auto& [key, value] : m_pairs)
      if (key == name) return value;
    return std::nullopt;
  }
  std::vector<std::string> All(std::string_view name) const {
    std::vector<std::string> all;
    for (const auto& [key, value] : m_pairs)
      if (key == name) all.push_back(value);
    return all;
  }

 private:
  CPairs m_pairs;
};

// A body that is made in pieces while it is sent. Used by one thread at a time, not always the same one.
class CWebBody {
 public:
  virtual ~CWebBody() = default;
  // Gets the next piece, some KiB; false after the last one. May wait for the disk.
  virtual bool Next(std::string& piece) = 0;
  // Of all pieces, if it is known.
  virtual std::optional<std::uint64_t> Size() const { return std::nullopt; }
  // After the last piece: whether something is missing, so that the connection has to break off in place of
  // ending well.
  virtual bool IsIncomplete() const { return false; }
};

// Whether nobody waits for the answer any more, or it takes too long. Asked often, by the thread that
// answers.
using CWebStop = std::function<bool()>;

// A stream of events. Connecting it gives the function that takes what there is to send, or returns false;
// true without a text ends the stream. No function: there are too many streams. onReady is called when there
// is something again, on any thread.
using CTakeEvents = std::function<bool(std::string& text)>;
using CConnectEvents = std::function<CTakeEvents(std::function<void()> onReady)>;

struct CWebAnswer {
  int status = 200;
  std::string type = "application/json";
  std::string text = {};
  std::unique_ptr<CWebBody> body = {};  // in place of text
  std::string file = {};                // the name under which a browser saves it; empty: it shows it
  CConnectEvents events = {};           // in place of text
  std::vector<std::pair<std::string, std::string>> headers = {};
};

inline CWebAnswer JsonAnswer(const CJson& json) { return {.text = JsonLine(json)}; }
inline CWebAnswer ErrorAnswer(int status, const std::string& words) {
  return {.status = status, .text = JsonLine({{"error", words}})};
}

}  // namespace vastra
