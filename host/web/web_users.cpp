#include "host/web/web_users.h"

#include <crypt.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace vastra {
namespace {

constexpr std::size_t kMostName = 64, kMostPassword = 512, kMostFile = 1 << 20;

std::runtime_error Fault(const std::string& path, const std::string& what) {
  return std::runtime_error(path + ": " + what);
}

std::string HashWith(const std::string& password, const std::string& setting) {
  const auto memory = std::make_unique<crypt_data>();
  const char* const hash = crypt_r(password.c_str(), setting.c_str(), memory.get());
  return hash && hash[0] != '*' ? hash : "";
}

std::string NewHash(const std::string& password) {
  char setting[CRYPT_GENSALT_OUTPUT_SIZE];
  if (!crypt_gensalt_rn(nullptr, 0, nullptr, 0, setting, sizeof setting)) return "";
  return HashWith(password, setting);
}

bool IsName(const std::string& name) {
  if (name.empty() || name.size() > kMostName || name[0] == '#') return false;
  for (const char c : name)
    if (static_cast<unsigned char>(c) <= ' ' || c == ':' || c == '\x7F') return false;
  return true;
}

// Compares without telling by its time where texts differ.
bool AreEqual(const std::string& a, const std::string& b) {
  if (a.size() != b.size()) return false;
  unsigned difference = 0;
  for (std::size_t i = 0; i < a.size(); ++i) difference |= static_cast<unsigned char>(a[i] ^ b[i]);
  return difference == 0;
}

std::string ReadText(const std::string& path) {
  std::error_code fault;
  if (std::filesystem::exists(path, fault) && !std::filesystem::is_regular_file(path, fault))
    throw Fault(path, "is not a file");
  std::ifstream file(path, std::ios::binary);
  if (!file) throw Fault(path, std::strerror(errno));
  std::string text(kMostFile + 1, '\0');
  file.read(text.data(), static_cast<std::streamsize>(text.size()));
  if (file.bad()) throw Fault(path, "cannot be read");
  text.resize(static_cast<std::size_t>(file.gcount()));
  if (text.size() > kMostFile) throw Fault(path, "is longer than 1 MB");
  return text;
}

// The hash of a user who may not look now.
bool IsLocked(const std::string& hash) { return hash.starts_with('!') || hash.starts_with('*'); }

bool IsHash(const std::string& hash) {
  if (hash.empty() || IsLocked(hash)) return !hash.empty();
  const int state = crypt_checksalt(hash.c_str());
  return state != CRYPT_SALT_INVALID && state != CRYPT_SALT_METHOD_DISABLED;
}

std::map<std::string, std::string> ReadUsers(const std::string& path) {
  std::map<std::string, std::string> users;
  std::istringstream lines(ReadText(path));
  std::string line;
  for (int number = 1; std::getline(lines, line); ++number) {
    if (line.ends_with('\r')) line.pop_back();
    if (line.empty() || line[0] == '#') continue;
    const std::size_t colon = line.find(':');
    const std::string name = line.substr(0, colon);
    if (colon == std::string::npos || !IsName(name) || !IsHash(line.substr(colon + 1)))
      throw Fault(path, "line " + std::to_string(number) + " is not NAME:HASH, of crypt(3)");
    if (!users.emplace(name, line.substr(colon + 1)).second)
      throw Fault(path, "line " + std::to_string(number) + ": " + name + " is there twice");
  }
  return users;
}

// Beside the file, and renamed, so that it is there whole at each moment.
void WriteUsers(const std::string& path, const std::map<std::string, std::string>& users) {
  std::string text;
  for (const auto& [name, hash] : users) {
    text += name;
    text += ':';
    text += hash;
    text += '\n';
  }
  std::string part = path + ".XXXXXX";
  const int file = ::mkostemp(part.data(), O_CLOEXEC);  // of mode 0600
  if (file < 0) throw Fault(path, std::strerror(errno));
  struct stat old = {};
  const bool isNew = ::stat(path.c_str(), &old) != 0;
  bool isWritten = isNew || (::fchmod(file, old.st_mode & 07777) == 0 &&
                             (::fchown(file, old.st_uid, old.st_gid) == 0 || errno == EPERM));
  isWritten = isWritten && ::write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size()) &&
              ::fsync(file) == 0;
  const int fault = errno;
  ::close(file);
  if (isWritten && ::rename(part.c_str(), path.c_str()) == 0) return;
  const int reason = isWritten ? errno : fault;
  ::unlink(part.c_str());
  throw Fault(path, std::strerror(reason));
}

}  // namespace

CWebUsers::CWebUsers(const std::string& path, std::function<void(const std::string&)> tell)
    : m_path(path),
      m_tell(std::move(tell)),
      m_version(VersionOf(path)),
      m_hashes(ReadUsers(path)),
      m_setting(NewHash("nobody")) {
  if (m_hashes.empty()) throw Fault(path, "has no user (vastra-web passwd FILE NAME adds one)");
}

CWebUsers::CVersion CWebUsers::VersionOf(const std::string& path) {
  struct stat now = {};
  if (::stat(path.c_str(), &now) != 0) return {};
  return {now.st_ino, now.st_size, now.st_ctim.tv_sec, now.st_ctim.tv_nsec};
}

void CWebUsers::Renew() {
  const CVersion version = VersionOf(m_path);
  if (version == m_version) return;
  m_hashes.clear();
  m_version = {};
  try {
    m_hashes = ReadUsers(m_path);
    m_version = version;
    m_fault.clear();
  } catch (const std::runtime_error& fault) {  // it is tried again each time, and told once
    if (std::exchange(m_fault, fault.what()) != fault.what())
      m_tell(m_fault + ": nobody may look until it is right");
  }
}

std::string CWebUsers::HashOf(const std::string& name) {
  const std::lock_guard lock(m_mutex);
  Renew();
  const auto found = m_hashes.find(name);
  return found == m_hashes.end() ? "" : found->second;
}

std::string CWebUsers::Check(const std::string& name, const std::string& password) {
  const std::string hash = HashOf(name);
  const std::string setting = hash.empty() || IsLocked(hash) ? SettingForNobody() : hash;
  const bool isPassword = password.size() <= kMostPassword && password.find('\0') == password.npos;
  const std::string made = HashWith(isPassword ? password : "", setting);
  return isPassword && AreEqual(made, hash) ? hash : "";
}

// That of a user, if there is one: methods differ in the time that they take.
std::string CWebUsers::SettingForNobody() {
  const std::lock_guard lock(m_mutex);
  for (const auto& [name, hash] : m_hashes)
    if (!IsLocked(hash)) return hash;
  return m_setting;
}

void SetWebPassword(const std::string& path, const std::string& name, const std::string& password) {
  if (!IsName(name)) throw std::runtime_error("a name has 1 to 64 bytes, without blanks and colons");
  if (password.empty() || password.size() > kMostPassword)
    throw std::runtime_error("a password has 1 to 512 bytes");
  std::map<std::string, std::string> users;
  if (::access(path.c_str(), F_OK) == 0) users = ReadUsers(path);
  const std::string hash = NewHash(password);
  if (hash.empty()) throw std::runtime_error("crypt(3) makes no hash");
  users[name] = hash;
  WriteUsers(path, users);
}

}  // namespace vastra
