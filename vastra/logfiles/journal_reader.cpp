#include "vastra/logfiles/journal_reader.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <limits>
#include <memory>
#include <new>

#include "vastra/logfiles/log_reader.h"
#include "vastra/platform/file_system.h"

namespace vastra {
namespace {

constexpr std::uint32_t kLongestJournalRecord = std::uint32_t{64} << 20;  // more than any record has
constexpr std::size_t kJournalBlock = std::size_t{256} * 1024;
constexpr const char *kJournalPrefix = ".vastra-", *kJournalExtension = ".journal";
constexpr std::size_t kJournalKeySize = 16;

std::uint32_t JournalWord(const char* from) {
  std::uint32_t word;
  std::memcpy(&word, from, sizeof word);
  return word;
}

// The bytes of a file in order from offset on, in a buffer that is reused: only the file's size is trusted.
class CJournalBytes {
 public:
  CJournalBytes(CFile& file, std::uint64_t offset)
      : m_file(file), m_left(file.GetLength()), m_offset(offset) {
    if (IsRegularFile()) m_left -= std::min(m_left, offset);
  }

  bool IsRegularFile() const { return m_left != std::numeric_limits<std::uint64_t>::max(); }
  std::uint64_t Offset() const { return m_offset; }  // of the next byte in the file
  std::uint64_t Left() const { return m_end - m_at + m_left; }
  // The next count bytes, valid until the next call; null if the file ends before.
  const char* Peek(std::uint64_t count) {
    if (count > m_end - m_at && (count > Left() || !Fill(static_cast<std::size_t>(count)))) return nullptr;
    return m_buffer.get() + m_at;
  }
  void Skip(std::size_t count) {
    m_at += count;
    m_offset += count;
  }

 private:
  bool Fill(std::size_t count);

  CFile& m_file;
  std::uint64_t m_left;  // bytes of the file after those in the buffer
  std::uint64_t m_offset = 0;
  std::unique_ptr<char[]> m_buffer;
  std::size_t m_size = 0, m_at = 0, m_end = 0;  // of the buffer, of the bytes that are left in it
};

bool CJournalBytes::Fill(std::size_t count) {
  const std::size_t present = m_end - m_at;
  if (count > m_size) {
    const std::size_t size = std::max(count, kJournalBlock);
    auto larger = std::make_unique_for_overwrite<char[]>(size);
    if (present) std::memcpy(larger.get(), m_buffer.get() + m_at, present);
    m_buffer = std::move(larger);
    m_size = size;
  } else {
    std::memmove(m_buffer.get(), m_buffer.get() + m_at, present);
  }
  const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(m_left, m_size - present));
  const std::size_t part = m_file.ReadAt(m_buffer.get() + present, wanted, m_offset + present);
  m_left = part == wanted ? m_left - part : 0;  // another process has cut the file
  m_at = 0;
  m_end = present + part;
  return m_end >= count;
}

// A record whose bytes are all there.
struct CRawJournalRecord {
  EJournalRecord type;
  std::string_view payload;
};

bool IsWhole(const char* at, const CRawJournalRecord& record) {
  return JournalWord(at + kJournalLengthSize) ==
         JournalChecksum(at, static_cast<std::uint32_t>(record.payload.size()));
}

class CJournalParser {
 public:
  // Begins after the good bytes of content, which are 0 or those of a journal that was read before.
  CJournalParser(CFile& file, CJournalContent& content, CSampleStore& samples)
      : m_bytes(file, content.goodBytes), m_content(content), m_samples(samples) {}

  int Read();

 private:
  int ReadStart();
  int ReadHead();
  bool ReadRecord();
  bool TakeSample(std::string_view payload);
  bool TakeName(std::string_view payload);
  const char* PeekRecord(CRawJournalRecord& record);
  bool IsRestZero();
  int FailTorn();
  int Fail(const CString& fault) {
    m_content.fault = fault;
    return 0;
  }

  CJournalBytes m_bytes;
  CJournalContent& m_content;
  CSampleStore& m_samples;
};

int CJournalParser::Read() {
  if (!m_bytes.IsRegularFile()) return Fail("is not a regular file");
  const int isRead = m_content.goodBytes > 0 || (ReadStart() && ReadHead());
  while (isRead && ReadRecord()) {
  }
  m_content.goodBytes = isRead ? m_bytes.Offset() : 0;
  m_content.tornBytes = m_bytes.Left() + m_bytes.Offset() - m_content.goodBytes;
  return isRead;
}

int CJournalParser::ReadStart() {
  CJournalStart start;
  const char* at = m_bytes.Peek(sizeof start);
  if (!at) return FailTorn();
  std::memcpy(&start, at, sizeof start);
  if (start.magic == 0 && start.version == 0) return FailTorn();
  if (start.magic != CJournalStart::kMagic)
    return Fail("is not a journal: its first bytes are those of another format");
  if (start.version != CJournalStart::kVersion)
    return Fail("is a journal of the unknown version " + CString(std::to_string(start.version)));
  m_bytes.Skip(sizeof start);
  return 1;
}

int CJournalParser::ReadHead() {
  CRawJournalRecord record;
  const char* at = PeekRecord(record);
  if (!at) return FailTorn();
  if (!IsWhole(at, record) || record.type != EJournalRecord::head ||
      !GetJournalHead(record.payload, m_content.head)) {
    m_bytes.Skip(kJournalRecordSize + record.payload.size());
    return IsRestZero() ? FailTorn() : Fail("has a damaged head (from byte 8 on)");
  }
  m_bytes.Skip(kJournalRecordSize + record.payload.size());
  return 1;
}

bool CJournalParser::IsRestZero() {
  constexpr std::uint64_t kPart = 4096;
  while (const auto count = static_cast<std::size_t>(std::min(m_bytes.Left(), kPart))) {
    const char* at = m_bytes.Peek(count);
    if (!at || std::any_of(at, at + count, [](char c) { return c != 0; })) return false;
    m_bytes.Skip(count);
  }
  return true;
}

// A file that ends inside its head, or whose head never reached the disk as a whole.
int CJournalParser::FailTorn() {
  m_content.isHeadTorn = true;
  const std::uint64_t size = m_bytes.Offset() + m_bytes.Left();
  return Fail("ends inside its head (it has " + CString(std::to_string(size)) + " bytes)");
}

// Returns the next record if the file has all its bytes.
const char* CJournalParser::PeekRecord(CRawJournalRecord& record) {
  const char* at = m_bytes.Peek(kJournalRecordSize);
  if (!at) return nullptr;
  const std::uint32_t length = JournalWord(at);
  if (length > kLongestJournalRecord) return nullptr;
  at = m_bytes.Peek(std::uint64_t{kJournalRecordSize} + length);
  if (at) record = {static_cast<EJournalRecord>(at[kJournalTypeOffset]), {at + kJournalRecordSize, length}};
  return at;
}

// Reads the next record: false if it is not whole, and all that follows is torn.
bool CJournalParser::ReadRecord() {
  CRawJournalRecord record;
  const char* at = PeekRecord(record);
  if (!at || !IsWhole(at, record)) return false;
  const bool isTaken = record.type == EJournalRecord::sample  ? TakeSample(record.payload)
                       : record.type == EJournalRecord::named ? TakeName(record.payload)
                                                              : false;
  if (isTaken) m_bytes.Skip(kJournalRecordSize + record.payload.size());
  return isTaken;
}

bool CJournalParser::TakeSample(std::string_view payload) {
  CLogCursor cursor = {payload.data(), payload.data() + payload.size()};
  std::uint32_t count = 0;
  if (!cursor.Skip(sizeof(_timeb)) || !cursor.GetCount(count)) return false;
  const std::uint64_t bytes = std::uint64_t{sizeof(float)} * count;
  if (cursor.Left() != bytes) return false;
  _timeb time;
  std::memcpy(&time, payload.data(), sizeof time);
  m_samples.Append(time, cursor.m_at, count);
  return true;
}

bool CJournalParser::TakeName(std::string_view payload) {
  CJournaledLog log;
  const bool isName = GetJournaledLog(payload, log);
  if (isName) m_content.named = log;
  return isName;
}

}  // namespace

bool CJournalContent::GoesOn() const {
  const std::optional<CJournaledLog>& log = Log();
  return head.continues && log->name == head.continues->name &&
         (log->first == head.continues->first || !head.naming.saveRp);
}

bool ParseJournalFile(std::string_view name, CJournalEntry& entry) {
  const std::string_view prefix = kJournalPrefix;
  if (!name.starts_with(prefix) || name.size() < prefix.size() + kJournalKeySize) return false;
  const std::string_view key = name.substr(prefix.size(), kJournalKeySize);
  if (!std::all_of(key.begin(), key.end(), [](unsigned char c) { return std::isxdigit(c); })) return false;
  const char* digits = key.data() + key.size() + 1;
  const char* end = name.data() + name.size();
  if (digits >= end) return false;
  std::from_chars(digits, end, entry.number);  // a wrong number makes another name
  entry.key = CString(key);
  return JournalFile(entry.key, entry.number) == CString(name);
}

int ReadJournalOn(CFile& file, CJournalContent& content, CSampleStore& samples) {
  content.fault.Empty();
  content.isHeadTorn = false;
  try {
    return CJournalParser(file, content, samples).Read();
  } catch (const CFileException& fault) {
    content.fault = fault.Text();
  } catch (const std::bad_alloc&) {
    content.fault = "is too large for the memory";
  }
  return 0;
}

int ReadJournal(CFile& file, CJournalContent& content, CSampleStore& samples) {
  samples.RemoveAll();
  content = {};
  if (ReadJournalOn(file, content, samples)) return 1;
  samples.RemoveAll();
  return 0;
}

int ReadJournal(const CString& path, CJournalContent& content, CSampleStore& samples) {
  CFile file;
  if (file.Open(path, CFile::modeRead)) return ReadJournal(file, content, samples);
  samples.RemoveAll();
  content = {};
  content.fault = CFileException(path, errno).Text();
  return 0;
}

bool IsJournal(const CString& path) {
  try {
    std::uint32_t magic = 0;
    return CFile(path, CFile::modeRead).Read(&magic, sizeof magic) == sizeof magic &&
           magic == CJournalStart::kMagic;
  } catch (const CFileException&) {
    return false;
  }
}

CString JournalFile(const CString& key, std::uint64_t number) {
  return kJournalPrefix + key + "-" + CString(std::to_string(number)) + kJournalExtension;
}

std::vector<CJournalEntry> ListJournals(const CString& directory) {
  std::vector<CJournalEntry> journals;
  CJournalEntry entry;
  for (const CFileEntry& file : ListFiles(directory, kJournalExtension))
    if (ParseJournalFile(file.m_name.View(), entry)) journals.push_back(entry);
  std::sort(journals.begin(), journals.end(), [](const CJournalEntry& a, const CJournalEntry& b) {
    return a.key == b.key ? a.number < b.number : a.key < b.key;
  });
  return journals;
}

}  // namespace vastra
