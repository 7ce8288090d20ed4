// The reader of selection files on arbitrary bytes, as either kind. A file that it accepts is written and
// reads back the same.
#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "vastra/views/selection_file.h"

namespace vastra {
namespace {

void Require(bool holds) {
  if (!holds) std::abort();
}

// A file in memory that has a path.
class CFuzzFile {
 public:
  CFuzzFile(const unsigned char* bytes, std::size_t size) : m_handle(::memfd_create("selection", 0)) {
    Require(::write(m_handle, bytes, size) == static_cast<ssize_t>(size));
  }
  CFuzzFile(const CFuzzFile&) = delete;
  CFuzzFile& operator=(const CFuzzFile&) = delete;
  ~CFuzzFile() { ::close(m_handle); }
  CString Path() const { return CString("/proc/self/fd/" + std::to_string(m_handle)); }

 private:
  int m_handle;
};

// A folder of this process, removed with it.
class CScratch {
 public:
  CScratch() { Require(::mkdtemp(m_folder) != nullptr); }
  CScratch(const CScratch&) = delete;
  CScratch& operator=(const CScratch&) = delete;
  ~CScratch() {
    ::unlink(Path());
    ::rmdir(m_folder);
  }
  CString Path() const { return CString(m_folder) + "/again"; }

 private:
  char m_folder[32] = "/tmp/selection-fuzz-XXXXXX";
};

bool Same(double a, double b) { return std::memcmp(&a, &b, sizeof a) == 0; }

bool Same(const CTrendSelection& a, const CTrendSelection& b) {
  if (a.curves.size() != b.curves.size() || a.scaleIndex != b.scaleIndex) return false;
  for (std::size_t i = 0; i < a.curves.size(); ++i) {
    const CCurveRecord &x = a.curves[i], &y = b.curves[i];
    if (!(x.name == y.name) || !Same(x.minimum, y.minimum) || !Same(x.maximum, y.maximum) ||
        x.colour != y.colour)
      return false;
  }
  return true;
}

bool Same(const CStringArray& a, const CStringArray& b) { return a == b; }

template <class SELECTION>
void Read(const CString& path) {
  SELECTION selection, again;
  const ESelectionFile result = ReadSelection(path, selection);
  Require((TextOf(result) == nullptr) == (result == ESelectionFile::good));
  if (result != ESelectionFile::good) return;
  static const CScratch scratch;
  Require(WriteSelection(scratch.Path(), selection) == ESelectionFile::good);
  Require(ReadSelection(scratch.Path(), again) == ESelectionFile::good && Same(selection, again));
}

}  // namespace
}  // namespace vastra

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* bytes, std::size_t size) {
  const vastra::CFuzzFile file(bytes, size);
  vastra::Read<vastra::CTrendSelection>(file.Path());
  vastra::Read<vastra::CStringArray>(file.Path());
  return 0;
}
