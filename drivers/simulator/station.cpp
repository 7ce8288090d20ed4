#include "station.h"

#include <algorithm>
#include <map>
#include <new>

namespace simulator {
namespace {
std::mutex g_stationsLock;
std::map<int, CStation> g_stations;  // no station is removed: pointers to it stay valid
}  // namespace

CStation::CStation() : m_registers(static_cast<float*>(std::calloc(kRegisters, sizeof(float)))) {
  if (!m_registers) throw std::bad_alloc();
}

CStation& CStation::At(int number) {
  const std::lock_guard guard(g_stationsLock);
  return g_stations[number];
}

void CStation::Read(int first, float* values, int count) {
  const std::lock_guard guard(m_lock);
  std::copy_n(m_registers.get() + first, count, values);
}

void CStation::Write(int first, const float* values, int count) {
  const std::lock_guard guard(m_lock);
  std::copy_n(values, count, m_registers.get() + first);
}

}  // namespace simulator
