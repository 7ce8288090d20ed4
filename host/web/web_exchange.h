// CWebExchange: one request and its answer, between the thread of the connections and the threads that
// answer.
//
//   reading -> answering -> sending -> ended
//
// A connection sleeps while others work for it: its thread does not look at it. Whoever has something for it
// wakes it; waking before it sleeps is not lost.
#pragma once

#include <atomic>
#include <chrono>
#include <mutex>

#include "host/web/web_request.h"

struct MHD_Connection;

namespace vastra {

class CWebExchange {
 public:
  explicit CWebExchange(MHD_Connection* connection) : m_connection(connection) {}

  CWebRequest request;

  // Of the thread of the connections. False: it was woken since it slept, and goes on at once.
  bool Sleep();
  // Of any thread; also after the end.
  void Wake();
  void End();
  // The server ends: nothing sleeps any more.
  void Close();
  bool IsClosing() const { return m_isClosing; }
  // Whether nobody waits for the answer any more, or it takes too long. A body takes as long as it is sent.
  bool IsStopped() const { return m_isEnded || std::chrono::steady_clock::now() > m_deadline.load(); }
  // False if it has begun already.
  bool BeginWork();

  void SetAnswer(CWebAnswer answer);
  bool HasAnswer() const;
  CWebAnswer& Answer() { return m_answer; }  // once it is there; of the thread of the connections

  // The next piece of a body, made by a worker.
  void MakePiece();
  enum class EPiece { none, there, last, broken };  // broken: the rest is missing
  EPiece TakePiece(std::string& piece);

 private:
  static constexpr std::chrono::seconds kMostWork{60};

  MHD_Connection* const m_connection;
  bool m_hasBegun = false;
  std::atomic<bool> m_isEnded = false, m_isClosing = false;
  std::atomic<std::chrono::steady_clock::time_point> m_deadline{};
  mutable std::mutex m_mutex;
  bool m_isAsleep = false, m_isAwake = false;
  bool m_hasAnswer = false;
  CWebAnswer m_answer;
  EPiece m_state = EPiece::none;
  std::string m_piece;
};

}  // namespace vastra
