// CLogReader: reads a binary log and checks each count and length against the rest of the file. The file link
// replays with it, and the hosts examine logs with it.
//
//     CSampleStore samples;
//     CLogReader log(samples);
//     if (!log.Open(path) || !log.ReadSamples()) ... log.GetFault() ...
#pragma once

#include <string_view>

#include "vastra/logfiles/log_format.h"
#include "vastra/logfiles/sample_store.h"
#include "vastra/platform/file.h"

namespace vastra {

// A position in bytes that are not trusted. Each operation returns false and does not move if the field
// extends beyond the end.
struct CLogCursor {
  const char* m_at = nullptr;
  const char* m_end = nullptr;

  std::size_t Left() const { return static_cast<std::size_t>(m_end - m_at); }
  bool Skip(std::uint64_t bytes);
  template <class T>
  bool Get(T& value);
  bool GetCount(std::uint32_t& count);
  bool GetText(std::string_view& text);
};

class VASTRA_API CLogReader {
 public:
  // samples belongs to the caller and receives the image of the file; it must not change while the reader is
  // in use.
  explicit CLogReader(CSampleStore& samples) : m_samples(samples) {}

  // Reads all of the file at path, unless it is not a regular file or FindExcess has a reason, or all of file
  // from its beginning, and checks its head. 1, or 0 with samples empty and the reason in GetFault.
  int Open(const CString& path);
  int Open(CFile& file);

  // Of a log that is open.
  const CLogStart& GetStart() const { return m_start; }
  void GetNames(CStringArray& names) const;
  // Whether the log has exactly these names, byte for byte and in this order.
  bool HasNames(const CStringArray& names) const;

  // Puts all samples of the log into the store, or none with the result 0. Bytes after the trailer and times
  // beyond the number of samples are ignored. Once after each Open.
  int ReadSamples();

  // What is wrong with the log, as one line without the file name, such as "ends at byte 50 inside the values
  // of sample 2 (from byte 49 on)".
  const CString& GetFault() const { return m_fault; }
  // The system's error if Open could not read the file, which may be a whole log; 0 if it could.
  int GetError() const { return m_error; }

 private:
  int ReadImage(CFile& file);
  int ReadHead();
  int SkipRecords(std::uint32_t count);
  int TakeTimes(std::uint32_t count, const char* records);
  int Fail(const CString& fault);
  int FailCut(const CString& field);
  std::size_t Offset(const char* at) const { return static_cast<std::size_t>(at - m_image); }

  CSampleStore& m_samples;
  const char* m_image = nullptr;  // of the whole file, in the store
  CLogCursor m_cursor;
  CLogStart m_start;
  std::uint32_t m_nameCount = 0;
  const char* m_names = nullptr;  // of the first name
  CString m_fault;
  int m_error = 0;
};

// How a replay treats a file.
enum class ELogKind { unreadable, other, log };

// Reads the beginning of the file at path. time is the first time of a log, in seconds. A file of fewer than
// four bytes and a log that ends before its first time are unreadable.
ELogKind ReadFirstTime(const CString& path, std::int32_t& time);

}  // namespace vastra
