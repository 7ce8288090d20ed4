#include "vastra/platform/save_file.h"

#include <filesystem>

#include "vastra/platform/file_layer.h"

namespace vastra {

void SaveFile(const CString& path, const std::function<void(CFile&)>& write) {
  std::error_code failed;
  const std::filesystem::path real = std::filesystem::canonical(path.Std(), failed);  // follows links
  CFileStatus status;
  const bool found = !failed && FileLayer().Stat(path, status);
  if (found && status.type != EFileType::regular) {
    CFile file(path, CFile::modeWrite);
    write(file);
    file.Close();
    return;
  }
  CReplaceFile file(real.empty() ? path : CString(real.string()));
  write(file);
  file.Replace();
}

}  // namespace vastra
