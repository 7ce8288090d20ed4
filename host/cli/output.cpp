#include "host/cli/output.h"

#include <sys/uio.h>
#include <unistd.h>

#include <cerrno>

#include "host/cli/terminal/terminal.h"
#include "host/common/shown_text.h"

namespace vastra {
namespace {

void WriteText(CFile& file, const std::string& text) { file.Write(text.data(), text.size()); }

// Passes whole lines on, without control characters.
class CPrintableFile final : public CMemFile {
 public:
  explicit CPrintableFile(CFile& file) : m_file(file) {}

  void Write(const void* bytes, std::size_t count) override {
    m_rest.append(static_cast<const char*>(bytes), count);
    const std::size_t lines = m_rest.rfind('\n') + 1;  // 0 without a line end
    Pass(lines);
  }
  void WriteParts(iovec* parts, std::size_t count) override {
    for (; count > 0; ++parts, --count) Write(parts->iov_base, parts->iov_len);
  }
  void Close() override { Pass(m_rest.size()); }

 private:
  void Pass(std::size_t bytes) {
    WriteText(m_file, PrintableLines(std::string_view(m_rest).substr(0, bytes)));
    m_rest.erase(0, bytes);
  }

  CFile& m_file;
  std::string m_rest;
};

void WriteToTerminal(CFile& file, const std::function<void(CFile&)>& write) {
  CPrintableFile lines(file);
  write(lines);
  lines.Close();
}

}  // namespace

EExit PrintData(const std::function<void(CFile&)>& write) {
  CTerminal::Instance().EndStatus();
  CTerminal::Instance().Drain();
  try {
    CFile file(::dup(STDOUT_FILENO));
    if (::isatty(STDOUT_FILENO))
      WriteToTerminal(file, write);
    else
      write(file);
    file.Close();  // a file server reports its failures here
    return kDone;
  } catch (const CFileException& fault) {
    if (fault.m_error == EPIPE) return kFailed;
    return Fail(kFailed, "standard output", fault.Text());
  }
}

EExit PrintData(const std::string& text) {
  return PrintData([&text](CFile& file) { WriteText(file, text); });
}

EExit PrintLines(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) text += Printable(line) + "\n";
  return PrintData(text);
}

}  // namespace vastra
