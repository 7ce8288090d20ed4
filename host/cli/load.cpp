#include "host/cli/load.h"

#include "host/cli/terminal/terminal.h"
#include "host/common/configuration_file.h"

namespace vastra {

EExit Load(const CFileArgument& file, CConfiguration& configuration, const CString& root) {
  const CString fault = LoadConfiguration(file.path, configuration, root);
  return fault.IsEmpty() ? kDone : Fail(kRefused, file.typed, fault);
}

}  // namespace vastra
