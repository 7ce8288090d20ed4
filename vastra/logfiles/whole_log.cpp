#include "vastra/logfiles/whole_log.h"

#include <fcntl.h>
#include <sys/stat.h>

#include "vastra/logfiles/log_format.h"
#include "vastra/logfiles/probed_file.h"
#include "vastra/platform/time.h"

namespace vastra {
namespace {

// Whether the number of times, the times and the trailer follow, and then with isStrict the end of the file.
bool IsEnd(CProbedFile& file, std::uint32_t samples, bool isStrict) {
  std::uint32_t times = 0;
  return file.GetCount(times) && (isStrict ? times == samples : times >= samples) &&
         file.Skip(times * std::uint64_t{sizeof(_timeb)}) && file.Skip(sizeof(CLogTrailer)) &&
         (!isStrict || file.Place() == file.Size());
}

bool SkipRecords(CProbedFile& file, std::uint32_t samples) {
  for (std::uint32_t i = 0, count = 0; i < samples; ++i)
    if (!file.GetCount(count) || !file.Skip(count * std::uint64_t{sizeof(float)})) return false;
  return true;
}

bool SkipEqualRecords(CProbedFile& file, std::uint32_t samples, std::uint32_t values) {
  const std::uint64_t record = SizeOfCount(values) + values * std::uint64_t{sizeof(float)};
  return samples <= (file.Size() - file.Place()) / record && file.Skip(samples * record);
}

// With isStrict the log is the whole file, without more bytes can follow. False, too, for more than
// mostRecords records that are not all of one size.
bool IsWholeBinary(CProbedFile& file, bool isStrict, std::uint32_t mostRecords) {
  CLogStart start;
  std::uint32_t names = 0, samples = 0;
  if (!file.Get(start) || start.m_magic != CLogStart::kMagic) return false;
  if (!file.SkipText() || !file.GetCount(names)) return false;
  for (std::uint32_t i = 0; i < names; ++i)
    if (!file.SkipText()) return false;
  if (!file.Get(samples)) return false;
  const std::uint64_t records = file.Place();
  if (SkipEqualRecords(file, samples, names) && IsEnd(file, samples, isStrict)) return true;
  file.MoveTo(records);
  return samples <= mostRecords && SkipRecords(file, samples) && IsEnd(file, samples, isStrict);
}

bool IsWholeText(CProbedFile& file) {
  char last = 0;
  if (file.Size() == 0) return false;
  file.MoveTo(file.Size() - 1);
  return file.Get(last) && last == '\n';
}

}  // namespace

bool IsWholeLog(const CString& path, ELogForm form) {
  CProbedFile file(path, O_NOFOLLOW);
  return form == ELogForm::binary ? IsWholeBinary(file, true, UINT32_MAX) : IsWholeText(file);
}

CString FindExcess(const CString& path, std::uint64_t size) {
  constexpr std::uint64_t kLarge = std::uint64_t{16} << 20, kBlockBytes = 512, kHole = 16;
  constexpr std::uint32_t kMostRecords = 1'000'000;  // that are looked at one by one
  if (size < kLarge) return {};
  CProbedFile file(path);
  struct stat status = {};
  const bool isWhole = IsWholeBinary(file, false, kMostRecords);
  const bool isHole =
      ::stat(path, &status) == 0 && static_cast<std::uint64_t>(status.st_blocks) * kBlockBytes < size / kHole;
  if (isWhole ? size - file.Place() < kLarge : !isHole) return {};
  const CString bytes = "has " + CString(std::to_string(size)) + " bytes, ";
  return isWhole ? bytes + "of which its counts need " + CString(std::to_string(file.Place()))
                 : bytes + "of which most are a hole in the file";
}

}  // namespace vastra
