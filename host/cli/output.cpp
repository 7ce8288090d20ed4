#include "host/cli/output.h"

#include <unistd.h>

#include "host/cli/terminal.h"

namespace vastra {

EExit PrintData(const std::function<void(CFile&)>& write) {
  CTerminal::Instance().EndStatus();
  try {
    CFile file(::dup(STDOUT_FILENO));
    write(file);
    file.Close();  // a server of files tells its failures here
    return kDone;
  } catch (const CFileException& fault) {
    return Fail(kFailed, "standard output", fault.Text());
  }
}

EExit PrintData(const std::string& text) {
  return PrintData([&text](CFile& file) { file.Write(text.data(), text.size()); });
}

}  // namespace vastra
