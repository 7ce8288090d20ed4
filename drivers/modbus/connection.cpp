#include "connection.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <thread>
#include <utility>

#include "library.h"

namespace modbus {
namespace {

constexpr int kIllegalAddress = MODBUS_EXCEPTION_ILLEGAL_DATA_ADDRESS;
constexpr int kIllegalValue = MODBUS_EXCEPTION_ILLEGAL_DATA_VALUE;

// How long a call waits for a device that has failed: this time, or a thousandth of the time since the last
// call if that is longer. It is enough on a local network, and a slow schedule can wait longer.
constexpr milliseconds kShortPatience{20};
constexpr int kPatienceShare = 1000;

std::string NameOf(const CRequest& request) { return NameOf(*request.kind, request.first, request.count); }

// A hint for an exception that has a usual cause.
std::string HintFor(int code, const CRequest& request) {
  if (code != kIllegalAddress && (code != kIllegalValue || request.count == 1)) return {};
  if (code == kIllegalValue) return "; value3 makes the requests smaller";
  const std::string paper = OffPaper(request.first);
  if (!paper.empty() && paper.front() == request.kind->letter)
    return "; addresses count from 0: what a list calls " + std::to_string(request.first) + " may be " +
           paper;
  if (request.places.size() == 1) return {};
  return "; value4 1 asks for each value alone and shows which it is, value3 makes the requests smaller";
}

std::string ExceptionWords(int code, const CRequest& request) {
  const bool known = code > 0 && code < MODBUS_EXCEPTION_MAX && code != MODBUS_EXCEPTION_NOT_DEFINED;
  return "exception " + std::to_string(code) +
         (known ? std::string(" (") + modbus_strerror(MODBUS_ENOBASE + code) + ")" : std::string()) + ", " +
         NameOf(request) + HintFor(code, request);
}

std::string Shortest(float number) {
  char text[64];
  return {text, std::to_chars(text, text + sizeof text, number).ptr};
}

}  // namespace

std::unique_ptr<CConnection> CConnection::Open(const DriverRecord& record, int mode, std::string& fault) {
  CSettings settings;
  fault = ReadSettings(record, mode == driverModeWrite, settings);
  if (!fault.empty()) return nullptr;
  std::shared_ptr<CLine> line = NewLine(settings, fault);
  return line ? std::make_unique<CConnection>(std::move(settings), std::move(line)) : nullptr;
}

CConnection::CConnection(CSettings settings, std::shared_ptr<CLine> line)
    : m_settings(std::move(settings)),
      m_name("Modbus " + m_settings.endpoint.name + " unit " + std::to_string(m_settings.unit) + ": "),
      m_line(std::move(line)) {
  // Most devices are connected by the first call; a missing one is found then.
  if (!m_settings.endpoint.IsSerial()) m_line->Connect(m_settings, CClock::now(), false);
}

int CConnection::Fail(int status, const std::string& words) {
  m_words = m_name + words;
  return status;
}

// No request is sent for a pause, which grows until the device has answered.
int CConnection::Lose(const CResult& result, const std::string& where) {
  m_lost = result.words + where;
  m_pause = m_pause.count() ? std::min(2 * m_pause, m_settings.pauses.longest) : m_settings.pauses.first;
  m_restUntil = CClock::now() + m_pause;
  m_isWary = true;
  return Fail(result.status, m_lost);
}

CTime CConnection::PatienceFrom(CTime now) const {
  const CClock::duration whole = m_settings.timeOut + m_settings.connectPause;
  if (!m_isWary) return now + whole;
  return now + std::clamp<CClock::duration>((now - m_called) / kPatienceShare, kShortPatience,
                                            std::max<CClock::duration>(whole, kShortPatience));
}

int CConnection::Begin() {
  const CTime now = CClock::now();
  const CTime patience = PatienceFrom(now);
  m_called = now;
  if (now < m_restUntil) {
    char next[64];
    std::snprintf(next, sizeof next, "; next attempt in %.1f s",
                  std::chrono::duration<double>(m_restUntil - now).count());
    return Fail(statusExtendedError, m_lost + next);
  }
  if (m_line->IsConnected()) return statusOk;
  const CResult result = m_line->Connect(m_settings, patience, m_isWary);
  if (m_isWary) m_nextRequest = CClock::now() + m_settings.requestPause;  // the attempt has sent a request
  if (result.IsGood()) return statusOk;
  return result.pending
             ? Fail(statusExtendedError, m_lost.empty() ? result.words : m_lost + "; " + result.words)
             : Lose(result, {});
}

int CConnection::Exchange(const CRequest& request, const CFrame& frame, CFrame& reply) {
  std::this_thread::sleep_until(m_nextRequest);
  const CResult result = m_line->Exchange(m_settings, frame, reply);
  m_nextRequest = CClock::now() + m_settings.requestPause;
  if (!result.IsGood()) return FailExchange(result, ", " + NameOf(request));
  const int exception = ExceptionOf(reply);
  return exception < 0 ? statusOk : Fail(statusReplyError, ExceptionWords(exception, request));
}

int CConnection::FailExchange(const CResult& result, const std::string& where) {
  const bool isNoise = m_settings.endpoint.IsSerial() && result.status == statusInvalidFrame;
  if (isNoise && !std::exchange(m_wasNoise, true)) return Fail(result.status, result.words + where);
  return Lose(result, where);
}

// The end of each transfer. A device that has answered is present, even if it refused.
int CConnection::End(int status) {
  if (status == statusOk || status == statusReplyError) {
    m_pause = milliseconds(0);
    m_isWary = false;
    m_wasNoise = false;
    m_lost.clear();
  }
  if (m_settings.closesAfterScan) m_line->Drop();
  return status;
}

bool CConnection::Checks(int count) {
  if (count != m_settings.count) Fail(statusExtendedError, "the number of values has changed");
  return count == m_settings.count;
}

int CConnection::Read(float* values, int count) {
  if (!Checks(count)) return statusExtendedError;
  if (const int status = Begin(); status != statusOk) return status;
  for (const CRequest& request : m_settings.requests) {
    CFrame reply;
    const int status = Exchange(request, ReadFrame(request), reply);
    if (status != statusOk) return End(status);
    TakeValues(request, reply, values);
  }
  return End(statusOk);
}

// Nothing is sent if a value does not fit its type.
bool CConnection::FitTypes(const float* values) {
  for (const CRequest& request : m_settings.requests) {
    const CPlace* misfit = nullptr;
    WriteFrame(request, values, misfit);
    if (!misfit) continue;
    const CValue& value = misfit->value;
    Fail(statusExtendedError, Shortest(values[misfit->index]) + " does not fit " +
                                  modbus::NameOf(value.type) + ", " +
                                  modbus::NameOf(*value.kind, value.address, SizeOf(value.type)));
    return false;
  }
  return true;
}

int CConnection::Write(const float* values, int count) {
  if (!Checks(count) || !FitTypes(values)) return statusExtendedError;
  if (const int status = Begin(); status != statusOk) return status;
  for (const CRequest& request : m_settings.requests) {
    const CPlace* misfit = nullptr;
    CFrame reply;
    const int status = Exchange(request, WriteFrame(request, values, misfit), reply);
    if (status != statusOk) return End(status);
  }
  return End(statusOk);
}

}  // namespace modbus
