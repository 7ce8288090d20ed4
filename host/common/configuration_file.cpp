#include "host/common/configuration_file.h"

#include <cstring>

#include "host/common/configuration_json.h"
#include "host/common/paths.h"
#include "vastra/platform/file_system.h"
#include "vastra/platform/save_file.h"

namespace vastra {
namespace {

constexpr char kMagic[4] = {'V', 'S', 'T', 'R'};
constexpr std::size_t kBlock = 65536;
constexpr std::size_t kMostBytes = std::size_t{64} << 20;
constexpr const char* kTooLarge = "is larger than 64 MB, the most that a configuration can have";

void Store(CFile& file, CConfiguration& configuration) {
  CArchive ar(&file, CArchive::store);
  ar.Write(kMagic, sizeof kMagic);
  ar << configuration.m_version;
  CArchiveWalk walk(ar, configuration.m_version);
  configuration.Fields(walk);
  ar.Close();
}

// Loads a configuration file with its relative paths taken from root, unless root is empty.
class CLoadWalk : public CArchiveWalk {
 public:
  CLoadWalk(CArchive& ar, UINT version, const CString& root) : CArchiveWalk(ar, version), m_root(root) {}

  void Path(const char* name, CString& path) override {
    CArchiveWalk::Path(name, path);
    Root(path);
  }
  void Paths(const char* name, CStringList& paths) override {
    CArchiveWalk::Paths(name, paths);
    for (CString& path : paths) Root(path);
  }

 private:
  void Root(CString& path) const {
    if (!m_root.IsEmpty()) path = MakeAbsolute(m_root, path);
  }

  const CString& m_root;
};

CString Load(CArchive& ar, const CString& root, CConfiguration& fresh) {
  CString fault;
  char magic[sizeof kMagic];
  if (std::memcmp(magic, kMagic, ar.Read(magic, sizeof magic)) != 0)
    return "neither a configuration file nor JSON";
  ar >> fresh.m_version;
  if (!IsKnownVersion(fresh.m_version)) {
    fault.Format("a configuration file of version %u, which is unknown", fresh.m_version);
    return fault;
  }
  CLoadWalk walk(ar, fresh.m_version, root);
  fresh.Fields(walk);
  if (const std::uint64_t rest = ar.Remaining())
    fault.Format("%llu extra bytes after the end", static_cast<unsigned long long>(rest));
  return fault;
}

CString LoadBytes(std::string bytes, const CString& root, CConfiguration& fresh) {
  CMemFile file(std::move(bytes));
  CArchive ar(&file, CArchive::load);
  try {
    return Load(ar, root, fresh);
  } catch (const CArchiveException& fault) {
    return fault.Text();
  }
}

// JSON text begins with an object or, wrongly, an array, after a BOM and white space.
bool IsJson(std::string_view bytes) {
  if (bytes.starts_with("\xEF\xBB\xBF")) bytes.remove_prefix(3);
  const std::size_t head = bytes.find_first_not_of(" \t\r\n");
  return head != bytes.npos && (bytes[head] == '{' || bytes[head] == '[');
}

std::string ReadAll(CFile& file) {
  std::string bytes;
  std::size_t size = 0;
  do {
    bytes.resize(size + kBlock);
    size += file.Read(bytes.data() + size, kBlock);
  } while (size == bytes.size() && size <= kMostBytes);
  bytes.resize(size);
  return bytes;
}

}  // namespace

CString ParseConfiguration(std::string bytes, const CString& folder, CConfiguration& configuration,
                           const CString& root) {
  CConfiguration fresh;
  CString fault = IsJson(bytes) ? ConfigurationFromJson(bytes, root.IsEmpty() ? folder : root, fresh)
                                : LoadBytes(std::move(bytes), root, fresh);
  if (fault.IsEmpty()) configuration = std::move(fresh);
  return fault;
}

CString LoadConfiguration(const CString& path, CConfiguration& configuration, const CString& root) {
  const CString other = OtherThanFile(path);
  if (!other.IsEmpty() && FileExists(path)) return "is " + other + ", not a configuration";
  try {
    CFile file(path, CFile::modeRead);
    if (file.GetLength() > kMostBytes) return kTooLarge;
    std::string bytes = ReadAll(file);
    if (bytes.size() > kMostBytes) return kTooLarge;
    return ParseConfiguration(std::move(bytes), DirectoryOf(MakeAbsolute(path)), configuration, root);
  } catch (const CFileException& fault) {
    return fault.Text();
  }
}

CString SaveConfiguration(const CString& path, CConfiguration& configuration) {
  try {
    SaveFile(path, [&configuration](CFile& file) { Store(file, configuration); });
  } catch (const CFileException& fault) {
    return "not saved: " + fault.Text();
  }
  return {};
}

std::string StoreConfiguration(CConfiguration& configuration) {
  CMemFile file;
  Store(file, configuration);
  return file.Bytes();
}

CStringArray LostInFile(CConfiguration& configuration) {
  CConfiguration loaded;
  LoadBytes(StoreConfiguration(configuration), CString(), loaded);
  CString words;
  words.Format(": a configuration file of version %u cannot hold it", configuration.m_version);
  CStringArray lines = DifferentKeys(configuration, loaded);
  if (!configuration.m_variables.empty()) lines.Add("variables");  // the last key, which loaded does not have
  for (CString& line : lines) line += words;
  return lines;
}

}  // namespace vastra
