// A station: the registers of one simulated PLC, shared by all handles of the process with its number. It
// exists while the module is loaded.
#pragma once

#include <cstdlib>
#include <memory>
#include <mutex>

namespace simulator {

class CStation {
 public:
  static constexpr int kRegisters = 1 << 20;

  // The station of this number; the first call for it makes it, with all registers 0. Any thread. Throws
  // std::bad_alloc.
  static CStation& At(int number);

  CStation();
  // Copy count registers from first on, as one step. The range lies within the registers. Any thread.
  void Read(int first, float* values, int count);
  void Write(int first, const float* values, int count);

 private:
  struct CFree {
    void operator()(float* registers) const { std::free(registers); }
  };

  std::mutex m_lock;
  // The system clears each page when it is first used, so that unused registers take no memory.
  std::unique_ptr<float[], CFree> m_registers;
};

}  // namespace simulator
