#include "host/cli/driver_folders.h"

#include "host/cli/terminal/terminal.h"
#include "host/common/driver_search.h"

namespace vastra {

CDriverFolders::CDriverFolders(CArguments& arguments)
    : m_folders(arguments.Texts("--driver-folder", "DIR",
                                "Look for drivers there, too; can be repeated (VASTRA_DRIVERS has more of "
                                "them, with colons between)")) {}

EExit CDriverFolders::Search(bool tries) const {
  std::vector<CString> paths;
  for (const CString& folder : *m_folders) {
    const CString fault = WhyNotSearched(folder);
    if (!fault.IsEmpty()) return Fail(kWrongUse, folder, "cannot be searched for drivers: " + fault);
    paths.push_back(ToFile(folder).path);
  }
  SearchDrivers(paths, tries);
  return kDone;
}

void WarnOfModules() {
  for (const CString& line : FindModuleFaults())
    CTerminal::Instance().Remark("vastra: " + line, kWarningColour);
}

}  // namespace vastra
