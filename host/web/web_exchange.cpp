#include "host/web/web_exchange.h"

#include <microhttpd.h>

namespace vastra {

bool CWebExchange::Sleep() {
  const std::lock_guard lock(m_mutex);
  if (m_isClosing || std::exchange(m_isAwake, false)) return false;
  m_isAsleep = true;
  MHD_suspend_connection(m_connection);
  return true;
}

void CWebExchange::Wake() {
  const std::lock_guard lock(m_mutex);
  if (m_isEnded) return;
  if (std::exchange(m_isAsleep, false))
    MHD_resume_connection(m_connection);
  else
    m_isAwake = true;
}

void CWebExchange::End() {
  const std::lock_guard lock(m_mutex);
  m_isEnded = true;
}

void CWebExchange::Close() {
  {
    const std::lock_guard lock(m_mutex);
    m_isClosing = true;
  }
  Wake();
}

bool CWebExchange::BeginWork() {
  if (std::exchange(m_hasBegun, true)) return false;
  m_deadline = std::chrono::steady_clock::now() + kMostWork;
  return true;
}

void CWebExchange::SetAnswer(CWebAnswer answer) {
  {
    const std::lock_guard lock(m_mutex);
    m_answer = std::move(answer);
    m_hasAnswer = true;
    m_deadline = std::chrono::steady_clock::time_point::max();
  }
  Wake();
}

bool CWebExchange::HasAnswer() const {
  const std::lock_guard lock(m_mutex);
  return m_hasAnswer;
}

void CWebExchange::MakePiece() {
  std::string piece;
  EPiece state = EPiece::broken;
  try {
    if (!m_isEnded && m_answer.body->Next(piece))
      state = EPiece::there;
    else if (!m_isEnded && !m_answer.body->IsIncomplete())
      state = EPiece::last;
  } catch (...) {  // the rest is missing
  }
  {
    const std::lock_guard lock(m_mutex);
    m_piece = std::move(piece);
    m_state = state;
  }
  Wake();
}

CWebExchange::EPiece CWebExchange::TakePiece(std::string& piece) {
  const std::lock_guard lock(m_mutex);
  const EPiece state = m_state;
  if (state == EPiece::there) {
    piece = std::move(m_piece);
    m_state = EPiece::none;
  }
  return state;
}

}  // namespace vastra
