// The bytes of a journal: a start, a head record and then records in the order in which they were written.
// docs/file-formats.md describes each field. CJournalWriter and ReadJournal use these definitions.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "vastra/logfiles/log_naming.h"
#include "vastra/logfiles/log_policy.h"
#include "vastra/platform/array.h"
#include "vastra/platform/time.h"

namespace vastra {

// A log and how much of it there is.
struct CJournaledLog {
  CString name;  // without its extension and without the directory
  _timeb first;  // of its first sample
  std::uint64_t samples = 0;

  bool operator==(const CJournaledLog&) const = default;
};

// What the head of a journal says about its samples.
struct CJournalHead {
  bool isSummary = false;
  CString name;  // of the output or summary
  CLogNaming naming;
  std::uint32_t maxLogs = 0;
  std::uint32_t maxSamples = 0;
  CLogRetention retention;
  CStringArray varNames;                   // of the samples
  std::optional<CJournaledLog> continues;  // the log on the disk that the samples are added to
};

// What the file of a lock says (log_lock.h).
struct CLockNote {
  std::int32_t pid = 0;  // of the process that has taken the lock
  CLogNaming naming;
  std::optional<CJournaledLog> unfinished;  // the log that the next run continues
};

// The fixed start of a journal, in memory as in the file.
struct CJournalStart {
  static constexpr std::uint32_t kMagic = 0x4A545356;  // VSTJ
  static constexpr std::uint32_t kVersion = 1;

  std::uint32_t magic = kMagic;
  std::uint32_t version = kVersion;
};
static_assert(sizeof(CJournalStart) == 8);

// The types of records. 0 is not a type, so that zeros are not a record.
enum class EJournalRecord : std::uint8_t { head = 1, sample = 2, named = 3, lock = 4 };

// A record: the length of its payload and the checksum of length, type and payload (u32 each), the type, the
// payload.
constexpr std::size_t kJournalLengthSize = 4, kJournalTypeOffset = 8, kJournalRecordSize = 9;

// Appends the beginning of a record of type to bytes. Returns the offset of the record, for EndJournalRecord,
// which is called when the payload has been appended.
std::size_t BeginJournalRecord(std::string& bytes, EJournalRecord type);
void EndJournalRecord(std::string& bytes, std::size_t record);
// The checksum that the record at record, with a payload of length bytes, must have.
std::uint32_t JournalChecksum(const char* record, std::uint32_t length);

// Append a record to bytes.
void PutJournalHead(std::string& bytes, const CJournalHead& head);
void PutJournaledLog(std::string& bytes, const CJournaledLog& log);
// Get the payload of a record: false, with the target unspecified, if the payload has another form.
bool GetJournalHead(std::string_view payload, CJournalHead& head);
bool GetJournaledLog(std::string_view payload, CJournaledLog& log);

// The file of a lock is one record. Bytes after it are ignored; false if it is cut or damaged.
void PutLockNote(std::string& bytes, const CLockNote& note);
bool GetLockNote(std::string_view bytes, CLockNote& note);

}  // namespace vastra
