#include "host/cli/no_memory.h"

#include <unistd.h>

#include <atomic>
#include <exception>
#include <new>
#include <string_view>

namespace vastra {
namespace {

std::atomic<bool> g_hasFailed{false};  // an allocation
std::terminate_handler g_otherwise = nullptr;

// Throws what would be thrown without a handler.
void NoteFailure() {
  g_hasFailed = true;
  throw std::bad_alloc();
}

// Whether the process ends for want of memory. An exception for which there is no memory ends it, too,
// without an exception.
bool IsMemoryShort() {
  const std::exception_ptr present = std::current_exception();
  if (!present) return g_hasFailed;
  try {
    std::rethrow_exception(present);
  } catch (const std::bad_alloc&) {
    return true;
  } catch (...) {
    return false;
  }
}

[[noreturn]] void EndWithoutMemory() {
  if (IsMemoryShort()) ::_exit(FailMemory());
  g_otherwise();
  ::_exit(kFailed);
}

// Before the objects of the program that are made before main.
__attribute__((constructor(101))) void WatchMemory() {
  std::set_new_handler(NoteFailure);
  g_otherwise = std::set_terminate(EndWithoutMemory);
}

}  // namespace

EExit FailMemory() {
  constexpr std::string_view kLine = "vastra: not enough memory\n";
  static_cast<void>(!::write(STDERR_FILENO, kLine.data(), kLine.size()));
  return kFailed;
}

}  // namespace vastra
