#include "vastra/history/log_scan.h"

#include <algorithm>
#include <new>

#include "vastra/history/digest_file.h"
#include "vastra/platform/archive.h"

namespace vastra {
namespace {

constexpr std::size_t kTimesAtOnce = 16384;
constexpr std::uint32_t kMostLogNames = 1'000'000;

bool SpanTimes(CProbedFile& file, const CLogLayout& layout, CHistoryLog& log) {
  thread_local std::vector<_timeb> times;
  CTimesSpan span;
  times.resize(std::min<std::size_t>(layout.samples, kTimesAtOnce));
  for (std::uint32_t i = 0; i < layout.samples;) {
    const auto count = std::min<std::size_t>(layout.samples - i, times.size());
    if (!file.Read(times.data(), count * sizeof(_timeb), layout.times + i * std::uint64_t{sizeof(_timeb)}))
      return false;
    if (i == 0) log.start = times[0];
    span.Add(times.data(), count);
    i += static_cast<std::uint32_t>(count);
  }
  span.PutTo(log);
  return true;
}

// The same for times that are in order.
bool SpanOrderedTimes(CProbedFile& file, const CLogLayout& layout, CHistoryLog& log) {
  CTimesSpan span;
  for (const std::uint64_t i : {std::uint64_t{0}, std::uint64_t{layout.samples} - 1}) {
    _timeb time;
    if (!file.Read(&time, sizeof time, layout.times + i * sizeof time)) return false;
    if (i == 0) log.start = time;
    span.Add(&time, 1);
  }
  span.PutTo(log);
  return true;
}

CString CutFault(const CProbedFile& file) {
  return file.Error() ? file.Fault() : CString("was cut while it was read");
}

void LookInto(CProbedFile& file, CNamesPool& pool, const CDigestReader* digest, CHistoryLog& log) {
  auto layout = std::make_shared<CLogLayout>();
  if (!ReadLogLayout(file, ERecords::assumed, *layout, log.fault)) return;
  if (layout->nameCount > kMostLogNames) {
    log.fault = "has too many names";
    return;
  }
  std::string names(static_cast<std::size_t>(layout->namesSize), '\0');
  log.samples = layout->samples;
  bool isRead = file.Read(names.data(), names.size(), layout->names);
  if (isRead) log.names = pool.Get(names, layout->nameCount);
  const bool isInDigest = isRead && log.samples && digest && digest->Find(log);
  isRead = isRead && (isInDigest ? SpanOrderedTimes : SpanTimes)(file, *layout, log);
  if (isRead) {
    log.layout = std::move(layout);
    return;
  }
  log.names.reset();
  log.samples = 0;
  log.fault = CutFault(file);
}

}  // namespace

CSharedNames CNamesPool::Get(const std::string& bytes, std::uint32_t count) {
  CSharedNames& shared = m_byBytes[{bytes, count}];
  if (shared) return shared;
  CMemFile file(bytes);
  CArchive ar(&file, CArchive::load);
  std::vector<CString> names(count);
  for (CString& name : names) ar >> name;
  return shared = Share(std::move(names));
}

CSharedNames CNamesPool::Get(const CStringArray& names) { return Share({names.begin(), names.end()}); }

CSharedNames CNamesPool::Share(std::vector<CString> names) {
  CSharedNames& shared = m_byNames[names];
  if (!shared) shared = std::make_shared<const std::vector<CString>>(std::move(names));
  return shared;
}

void CTimesSpan::Add(const _timeb* times, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    const CMoment moment = MomentOf(times[i]);
    isOrdered &= moment >= previous;
    previous = moment;
    first = std::min(first, moment);
    last = std::max(last, moment);
  }
}

void CTimesSpan::PutTo(CHistoryLog& log) const {
  log.first = log.samples ? first : 0;
  log.last = log.samples ? last : 0;
  log.isOrdered = isOrdered;
}

CHistoryLog LookAtLog(const CString& path, CNamesPool& pool, int* error, const CDigestReader* digest) {
  CProbedFile file(path);
  if (error) *error = file.IsOpen() ? 0 : file.Error();
  return LookAtLog(path, file, pool, digest);
}

CHistoryLog LookAtLog(const CString& path, CProbedFile& file, CNamesPool& pool, const CDigestReader* digest) {
  CHistoryLog log;
  log.path = path;
  log.status = file.Status();
  log.size = file.Size();
  if (!file.IsOpen()) {
    log.fault = file.Fault();
    return log;
  }
  try {
    LookInto(file, pool, digest, log);
  } catch (const std::bad_alloc&) {
    log = {
        .path = path, .fault = "is too large for the memory", .size = file.Size(), .status = file.Status()};
  }
  return log;
}

}  // namespace vastra
