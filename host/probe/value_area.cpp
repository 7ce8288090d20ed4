#include "host/probe/value_area.h"

#include <signal.h>
#include <sys/mman.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <new>

namespace vastra {
namespace {

constexpr std::size_t kPage = 65536;          // a multiple of the page of any system
constexpr std::size_t kGivenPages = 1 << 20;  // bytes after the values that a driver is given
constexpr std::size_t kCanaries = 64;         // floats before the values at least
const float kUntouched = std::bit_cast<float>(0x7FC5A5A5u);

std::atomic<CValueArea*> g_areas[16];

std::size_t PagesFor(std::size_t count) {
  return ((count + kCanaries) * sizeof(float) + kPage - 1) / kPage * kPage;
}

float* MapPages(std::size_t size) {
  void* const begin =
      ::mmap(nullptr, size + kGivenPages + kPage, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (begin == MAP_FAILED) throw std::bad_alloc();
  if (::mprotect(begin, size, PROT_READ | PROT_WRITE) == 0) return static_cast<float*>(begin);
  ::munmap(begin, size + kGivenPages + kPage);
  throw std::bad_alloc();
}

// Another fault ends the process as usual: the access is repeated, and a signal that was sent is sent again.
void OnSegmentationFault(int signal, siginfo_t* info, void* /*context*/) {
  const bool isSent = info->si_code <= 0;
  if (!isSent && CValueArea::GivePages(info->si_addr)) return;
  ::signal(signal, SIG_DFL);
  if (isSent) ::raise(signal);
}

void WatchFaults() {
  struct sigaction action = {};
  action.sa_sigaction = OnSegmentationFault;
  action.sa_flags = SA_SIGINFO;
  ::sigaction(SIGSEGV, &action, nullptr);
}

void Exchange(CValueArea* from, CValueArea* to) {
  for (std::atomic<CValueArea*>& slot : g_areas) {
    CValueArea* expected = from;
    if (slot.compare_exchange_strong(expected, to)) return;
  }
}

}  // namespace

CValueArea::CValueArea(std::size_t count)
    : m_count(count),
      m_size(PagesFor(count)),
      m_begin(MapPages(m_size)),
      m_end(m_begin + m_size / sizeof(float)) {
  std::fill(m_begin, m_end, kUntouched);
  Exchange(nullptr, this);
  WatchFaults();
}

CValueArea::~CValueArea() {
  Exchange(this, nullptr);
  ::munmap(m_begin, m_size + kGivenPages + kPage);
}

CString CValueArea::FindFault() const {
  if (!std::all_of(m_begin, m_end - m_count, IsUntouched)) return "it wrote before the first value";
  return m_isLeft ? "it used memory after the last value" : "";
}

bool CValueArea::IsUntouched(float value) {
  return std::bit_cast<std::uint32_t>(value) == std::bit_cast<std::uint32_t>(kUntouched);
}

bool CValueArea::GivePages(const void* address) {
  for (const std::atomic<CValueArea*>& slot : g_areas) {
    CValueArea* const area = slot;
    const auto* const begin = area ? reinterpret_cast<const char*>(area->m_end) : nullptr;
    if (!area || address < begin || address >= begin + kGivenPages) continue;
    area->m_isLeft = true;
    return ::mprotect(area->m_end, kGivenPages, PROT_READ | PROT_WRITE) == 0;
  }
  return false;
}

}  // namespace vastra
