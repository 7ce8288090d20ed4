#include "connection.h"

#include <algorithm>
#include <cstdio>
#include <span>
#include <utility>

namespace simulator {

std::unique_ptr<CConnection> CConnection::Open(const DriverRecord& record, int /*mode*/, std::string& fault) {
  CSettings settings;
  fault = ReadSettings(record, settings);
  return fault.empty() ? std::make_unique<CConnection>(std::move(settings)) : nullptr;
}

CConnection::CConnection(CSettings settings) : m_settings(std::move(settings)) { Connect(); }

void CConnection::Connect() {
  m_station = m_settings.station > 0 ? &CStation::At(m_settings.station) : nullptr;
  m_connected = true;
}

// The start of each call, and the pattern for a driver of a real PLC. When a connection breaks, its call
// fails. The engine then calls again with the same handle, so the next call connects again first.
int CConnection::BeginCall() {
  if (!m_connected) Connect();
  ++m_calls;
  if (m_settings.failEvery == 0 || m_calls % m_settings.failEvery != 0) return statusOk;
  m_connected = false;
  return m_settings.failStatus;
}

int CConnection::Read(float* values, int count) {
  ++m_reads;  // a read that fails leaves a gap in the counter
  const int status = BeginCall();
  if (!m_connected) return status;
  if (!m_station)
    FillWaveforms(values, count);
  else if (HasRegisters(count))
    m_station->Read(m_settings.firstRegister, values, count);
  else
    return statusInvalidFrame;
  return statusOk;
}

int CConnection::Write(const float* values, int count) {
  const int status = BeginCall();
  if (!m_connected) return status;
  if (!m_station) return statusOk;  // the values are dropped
  if (!HasRegisters(count)) return statusInvalidFrame;
  m_station->Write(m_settings.firstRegister, values, count);
  return statusOk;
}

namespace {

// Every step-th value from first on.
void Fill(const CWaveform& waveform, const CMoment& moment, std::span<float> all, std::size_t first,
          std::size_t step) {
  const float value = waveform.at(moment, first);
  if (step == 1 && !waveform.perValue) {
    std::ranges::fill(all, value);
    return;
  }
  for (std::size_t i = first; i < all.size(); i += step)
    all[i] = waveform.perValue ? waveform.at(moment, i) : value;
}

}  // namespace

void CConnection::FillWaveforms(float* values, int count) const {
  const std::chrono::nanoseconds elapsed = std::chrono::steady_clock::now() - m_opened;
  const double phase = static_cast<double>((elapsed % m_settings.period).count()) /
                       static_cast<double>(m_settings.period.count());
  const CMoment moment = {phase, m_settings.amplitude, m_reads, m_settings.seed};
  const std::span<float> all(values, static_cast<std::size_t>(count));
  const std::size_t step = m_settings.waveforms.size();
  for (std::size_t first = 0; first < std::min(step, all.size()); ++first)
    Fill(*m_settings.waveforms[first], moment, all, first, step);
}

const char* CConnection::LastError() {
  std::snprintf(m_error, sizeof m_error, "Simulator: call %llu fails because value4 is %u.",
                static_cast<unsigned long long>(m_calls), m_settings.failEvery);
  return m_error;
}

}  // namespace simulator
