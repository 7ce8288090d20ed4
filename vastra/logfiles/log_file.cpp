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

int SaveLogFile(const CString& path, bool durable, const std::function<void(CFile&)>& write,
                CSaveFailure* failure) {
  bool isNew = false;
  const auto fail = [&](const auto& reason) {
    if (failure) *failure = {reason(), isNew};
    return 0;
  };
  try {
    CFile file;
    isNew = file.Open(path, CFile::modeWrite | CFile::modeCreate | CFile::modeNew);
    if (isNew)
      WriteInPlace(file, durable, write);
    else if (errno == EEXIST)
      WriteReplacement(path, write);
    else
      throw CFileException(path, errno);
    return 1;
  } catch (const CFileException& fault) {
    return fail([&] { return fault.Text(); });
  } catch (const std::exception&) {
    return fail([] { return CFileException("", ENOMEM).Text(); });
  }
}

void RemoveLeftImages(const CString& directory, const CString& extension) {
  if (extension.IsEmpty()) return;  // it would match any file
  for (const CFileEntry& file : ListFiles(directory, extension + CReplaceFile::kSuffix))
    CReplaceFile::RemoveLeft(JoinPath(directory, file.m_name));
}

}  // namespace vastra
