// The reader of journals on arbitrary bytes. The whole records of what it accepts read back the same.
#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>

#include "vastra/logfiles/journal_reader.h"

namespace vastra {
namespace {

void Require(bool holds) {
  if (!holds) std::abort();
}

// A regular file in memory with these bytes, to be read from its beginning.
class CBytesFile : public CFile {
 public:
  CBytesFile(const void* bytes, std::size_t size) : CFile(::memfd_create("journal", MFD_CLOEXEC)) {
    Write(bytes, size);
    Require(::lseek(m_handle, 0, SEEK_SET) == 0);
  }
};

void Read(const std::uint8_t* bytes, std::size_t size) {
  CBytesFile file(bytes, size);
  CJournalContent content;
  CSampleStore samples;
  const int isRead = ReadJournal(file, content, samples);
  Require(isRead ? content.fault.IsEmpty() : samples.IsEmpty() && !content.fault.IsEmpty());
  if (!isRead) return;
  Require(content.goodBytes + content.tornBytes == size);
  // The whole records alone are the same journal.
  CBytesFile good(bytes, content.goodBytes);
  CJournalContent again;
  CSampleStore same;
  Require(ReadJournal(good, again, same) && again.tornBytes == 0 && same.GetCount() == samples.GetCount());
  Require(again.named == content.named && again.head.varNames == content.head.varNames);
}

}  // namespace
}  // namespace vastra

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  vastra::Read(data, size);
  return 0;
}
