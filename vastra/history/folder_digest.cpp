#include "vastra/history/folder_digest.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <map>
#include <system_error>

#include "vastra/history/digest_file.h"
#include "vastra/history/log_values.h"
#include "vastra/platform/file_system.h"

namespace vastra {
namespace {

// A digest is written again if it lacks more samples than one of so many.
constexpr std::uint64_t kMayLackOneOf = 32;
constexpr std::size_t kDigestBytes = std::size_t{1} << 18;  // of samples that are read at once

using CLogPointers = std::vector<const CHistoryLog*>;

// The blocks of one log.
struct CLogBlocks {
  std::vector<CMoment> moments;
  std::vector<std::vector<CDigestBlock>> blocks;  // of each variable
};

// Takes the blocks from a digest: false if it does not have them all.
bool CopyBlocks(CDigestReader& digest, const CHistoryLog& log, CLogBlocks& copy) {
  const CDigestLog* entry = digest.Find(log);
  const CMoment* moments = entry ? digest.Moments(*entry) : nullptr;
  if (!moments) return false;
  const std::uint32_t count = BlocksOf(log.samples);
  copy.moments.assign(moments, moments + count);
  for (std::size_t i = 0; i < log.names->size(); ++i) {
    const CDigestBlock* blocks = digest.Blocks(*entry, i);
    if (!blocks) return false;
    copy.blocks[i].assign(blocks, blocks + count);
  }
  return true;
}

void EndBlock(std::vector<CBucket>& buckets, CLogBlocks& made) {
  for (std::size_t i = 0; i < buckets.size(); ++i) made.blocks[i].push_back(CDigestBlock::Of(buckets[i]));
  std::fill(buckets.begin(), buckets.end(), CBucket());
}

void AddSamples(const CLoadedSamples& samples, std::vector<CBucket>& buckets) {
  const std::size_t values = std::min<std::size_t>(samples.values, buckets.size());
  const char* at = samples.records + SizeOfCount(samples.values);
  for (std::size_t i = 0; i < values; ++i, at += sizeof(float))
    buckets[i].Add(at, samples.recordSize, samples.count);
}

// Makes the blocks from the values: false if the log cannot be read.
bool MakeBlocks(const CHistoryLog& log, CLogBlocks& made) {
  COpenLogs open;
  CLogValues values(log, open);
  CLoadedSamples samples;
  std::vector<CBucket> buckets(log.names->size());
  for (std::uint32_t i = 0; i < values.Count();) {
    const std::uint32_t inBlock = kBlockSamples - i % kBlockSamples;
    if (!values.Load(i, std::min(inBlock, values.Count() - i), kDigestBytes, samples)) return false;
    if (i % kBlockSamples == 0) made.moments.push_back(MomentOf(samples.times[0]));
    AddSamples(samples, buckets);
    i += samples.count;
    if (i % kBlockSamples == 0 || i == values.Count()) EndBlock(buckets, made);
  }
  return true;
}

// A file for a digest: in the folder, or else in the first place that can be written.
std::unique_ptr<CDigestWriter> OpenWriter(const CString& folder, CString& fault) {
  for (const CString& path : DigestPaths(folder)) {
    std::error_code ignored;  // the file cannot be made then
    std::filesystem::create_directories(DirectoryOf(path).Std(), ignored);
    try {
      return std::make_unique<CDigestWriter>(path);
    } catch (const CFileException& exception) {
      if (fault.IsEmpty()) fault = path + ": " + exception.Text();
    }
  }
  return nullptr;
}

// Counts the samples that were worked on. False: stop.
class CWork {
 public:
  CWork(std::uint64_t total, const std::function<bool(double)>& onProgress)
      : m_total(total), m_onProgress(onProgress) {}
  bool Add(std::uint64_t samples) {
    m_done += samples;
    return !m_onProgress || m_onProgress(static_cast<double>(m_done) / static_cast<double>(m_total));
  }

 private:
  std::uint64_t m_total, m_done = 0;
  const std::function<bool(double)>& m_onProgress;
};

std::uint64_t SamplesOf(const CLogPointers& logs) {
  std::uint64_t samples = 0;
  for (const CHistoryLog* log : logs) samples += log->samples;
  return samples;
}

bool LacksMany(const CDigestReader& digest, const CLogPointers& logs) {
  CLogPointers lacking;
  std::copy_if(logs.begin(), logs.end(), std::back_inserter(lacking),
               [&](const CHistoryLog* log) { return !digest.Find(*log); });
  return SamplesOf(lacking) * kMayLackOneOf > SamplesOf(logs);
}

// False: it was stopped, and the digest stays as it was. A log that cannot be read is left out.
bool WriteLogs(CDigestWriter& writer, CDigestReader* before, const CLogPointers& logs, CWork& work) {
  for (const CHistoryLog* log : logs) {
    CLogBlocks blocks;
    blocks.blocks.resize(log->names->size());
    bool isThere = before && CopyBlocks(*before, *log, blocks);
    if (!isThere) {
      blocks = {{}, std::vector<std::vector<CDigestBlock>>(log->names->size())};
      isThere = MakeBlocks(*log, blocks);
    }
    if (isThere) writer.Add(*log, blocks.moments, blocks.blocks);
    if (!work.Add(log->samples)) return false;
  }
  return true;
}

// Returns why the digest could not be written, or an empty string. isStopped: no more digests.
CString UpdateDigest(const CString& folder, const CLogPointers& logs, CWork& work, bool& isStopped) {
  const std::unique_ptr<CDigestReader> before = CDigestReader::Open(folder);
  if (before && !LacksMany(*before, logs)) {
    isStopped = !work.Add(SamplesOf(logs));
    return {};
  }
  CString fault;
  try {
    const std::unique_ptr<CDigestWriter> writer = OpenWriter(folder, fault);
    if (!writer) return fault;
    isStopped = !WriteLogs(*writer, before.get(), logs, work);
    if (!isStopped) writer->Finish();
    return {};
  } catch (const CFileException& exception) {
    return exception.m_path + ": " + exception.Text();
  }
}

}  // namespace

std::vector<CString> UpdateDigests(const std::vector<CHistoryLog>& logs,
                                   const std::function<bool(double)>& onProgress) {
  std::map<CString, CLogPointers> folders;
  CLogPointers all;
  for (const CHistoryLog& log : logs)
    if (log.samples && log.isOrdered && !log.isJournal) all.push_back(&log);
  std::stable_sort(all.begin(), all.end(),  // readers visit the blocks in the order of time
                   [](const CHistoryLog* a, const CHistoryLog* b) { return a->first < b->first; });
  for (const CHistoryLog* log : all) folders[DirectoryOf(log->path)].push_back(log);
  CWork work(SamplesOf(all), onProgress);
  std::vector<CString> faults;
  bool isStopped = false;
  for (const auto& [folder, ofFolder] : folders) {
    if (isStopped) break;
    const CString fault = UpdateDigest(folder, ofFolder, work, isStopped);
    if (!fault.IsEmpty()) faults.push_back(fault);
  }
  return faults;
}

}  // namespace vastra
