#include "host/cli/output.h"

#include <unistd.h>

#include <cerrno>

#include "host/cli/terminal/terminal.h"
#include "host/common/shown_text.h"

namespace vastra {
namespace {

void WriteText(CFile& file, const std::string& text) { file.Write(text.data(), text.size()); }

void WriteToTerminal(CFile& file, const std::function<void(CFile&)>& write) {
  CMemFile data;
  write(data);
  WriteText(file, PrintableLines(data.Bytes()));
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
