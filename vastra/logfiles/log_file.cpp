#include "vastra/logfiles/log_file.h"

#include <cerrno>
#include <exception>

#include "vastra/platform/file_system.h"

namespace vastra {
namespace {

void WriteInPlace(CFile& file, bool durable, const std::function<void(CFile&)>& write) {
  write(file);
  if (durable) file.Sync();
  file.Close();
  if (durable) SyncDirectory(DirectoryOf(file.GetPath()));
}

void WriteReplacement(const CString& path, const std::function<void(CFile&)>& write) {
  CReplaceFile image(path);
  write(image);
  image.Replace();
}

}  // namespace

int SaveLogFile(const CString& path, bool durable, const std::function<void(CFile&)>& write) {
  try {
    CFile file;
    if (file.Open(path, CFile::modeWrite | CFile::modeCreate | CFile::modeNew))
      WriteInPlace(file, durable, write);
    else if (errno == EEXIST)
      WriteReplacement(path, write);
    else
      return 0;
    return 1;
  } catch (const CFileException&) {
    return 0;
  } catch (const std::exception&) {  // no memory
    return 0;
  }
}

void RemoveLeftImages(const CString& directory, const CString& extension) {
  if (extension.IsEmpty()) return;  // any file could be meant
  for (const CFileEntry& file : ListFiles(directory, extension + CReplaceFile::kSuffix))
    CReplaceFile::RemoveLeft(JoinPath(directory, file.m_name));
}

}  // namespace vastra
