#include "vastra/logfiles/journal_format.h"

#include <bit>
#include <cstring>

#include "vastra/logfiles/crc32c.h"
#include "vastra/platform/archive_fields.h"

namespace vastra {
namespace {

// The fields of a payload.
class CJournalFields : public CArchiveFields<CJournalFields> {
 public:
  using CArchiveFields::CArchiveFields;
  using CArchiveFields::Visit;

  void Visit(bool& flag) {
    std::uint8_t byte = flag;
    Visit(byte);
    flag = byte != 0;
  }
  void Visit(double& value) {
    auto bits = std::bit_cast<std::uint64_t>(value);
    Visit(bits);
    value = std::bit_cast<double>(bits);
  }
  void Visit(_timeb& time) {
    std::uint32_t words[sizeof time / sizeof(std::uint32_t)];
    std::memcpy(words, &time, sizeof time);
    for (std::uint32_t& word : words) Visit(word);
    std::memcpy(&time, words, sizeof time);
  }
  void Visit(CLogNaming& naming) {
    VisitAll(naming.directory, naming.prefix, naming.nameVariable, naming.dwordName, naming.extension,
             naming.saveRp, naming.saveCsv);
  }
  void Visit(CLogRetention& retention) {
    VisitAll(retention.keepDays, retention.keepBytes, retention.minFree);
  }
  void Visit(CJournaledLog& log) { VisitAll(log.name, log.first, log.samples); }
  void Visit(std::optional<CJournaledLog>& log) {
    bool is = log.has_value();
    Visit(is);
    if (is) Visit(log ? *log : log.emplace());
  }
  void Visit(CJournalHead& head) {
    VisitAll(head.isSummary, head.name, head.naming, head.maxLogs, head.maxSamples, head.retention,
             head.varNames, head.continues);
  }
  void Visit(CLockNote& note) { VisitAll(note.pid, note.naming, note.unfinished); }
};

template <class T>
void PutFields(std::string& bytes, EJournalRecord type, T values) {
  CMemFile payload;
  CArchive ar(&payload, CArchive::store);
  CJournalFields(ar).Visit(values);
  ar.Close();
  const std::size_t record = BeginJournalRecord(bytes, type);
  bytes += payload.Bytes();
  EndJournalRecord(bytes, record);
}

template <class T>
bool GetFields(std::string_view payload, T& values) {
  CMemFile file{std::string(payload)};
  CArchive ar(&file, CArchive::load);
  try {
    CJournalFields(ar).Visit(values);
    return ar.Remaining() == 0;
  } catch (const CArchiveException&) {
    return false;
  }
}

}  // namespace

std::size_t BeginJournalRecord(std::string& bytes, EJournalRecord type) {
  const std::size_t record = bytes.size();
  bytes.append(kJournalTypeOffset, '\0');
  bytes += static_cast<char>(type);
  return record;
}

void EndJournalRecord(std::string& bytes, std::size_t record) {
  char* at = bytes.data() + record;
  const auto length = static_cast<std::uint32_t>(bytes.size() - record - kJournalRecordSize);
  std::memcpy(at, &length, sizeof length);
  const std::uint32_t checksum = JournalChecksum(at, length);
  std::memcpy(at + kJournalLengthSize, &checksum, sizeof checksum);
}

std::uint32_t JournalChecksum(const char* record, std::uint32_t length) {
  const std::uint32_t crc = Crc32c(record, kJournalLengthSize);
  return Crc32c(record + kJournalTypeOffset, kJournalRecordSize - kJournalTypeOffset + length, crc);
}

void PutJournalHead(std::string& bytes, const CJournalHead& head) {
  PutFields(bytes, EJournalRecord::head, head);
}
void PutJournaledLog(std::string& bytes, const CJournaledLog& log) {
  PutFields(bytes, EJournalRecord::named, log);
}
bool GetJournalHead(std::string_view payload, CJournalHead& head) { return GetFields(payload, head); }
bool GetJournaledLog(std::string_view payload, CJournaledLog& log) { return GetFields(payload, log); }

void PutLockNote(std::string& bytes, const CLockNote& note) { PutFields(bytes, EJournalRecord::lock, note); }

bool GetLockNote(std::string_view bytes, CLockNote& note) {
  std::uint32_t length = 0, checksum = 0;
  if (bytes.size() < kJournalRecordSize) return false;
  std::memcpy(&length, bytes.data(), sizeof length);
  std::memcpy(&checksum, bytes.data() + kJournalLengthSize, sizeof checksum);
  if (length > bytes.size() - kJournalRecordSize || checksum != JournalChecksum(bytes.data(), length))
    return false;
  return bytes[kJournalTypeOffset] == static_cast<char>(EJournalRecord::lock) &&
         GetFields(bytes.substr(kJournalRecordSize, length), note);
}

}  // namespace vastra
