#include "vastra/platform/file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <thread>

#include "tests/support/files.h"
#include "vastra/platform/file_system.h"
#include "vastra/platform/save_file.h"

namespace vastra {
namespace {

// Signals interrupt the writer, so that the system writes parts of parts.
TEST(File, WritesManyPartsInOrderThroughAFullPipe) {
  int ends[2];
  ASSERT_EQ(::pipe(ends), 0);
  struct sigaction action = {};
  action.sa_handler = [](int) {};
  ::sigaction(SIGUSR1, &action, nullptr);
  std::string sent, received;
  std::vector<std::string> texts;
  for (int i = 0; i < IOV_MAX + 10; ++i)
    texts.push_back(std::string(static_cast<std::size_t>(i), char('a' + i % 26)));
  std::vector<iovec> parts;
  for (std::string& text : texts) sent += text, parts.push_back({text.data(), text.size()});
  std::thread reader([&, writer = ::pthread_self()] {
    for (int i = 0; i < 20; ++i) ::usleep(1000), ::pthread_kill(writer, SIGUSR1);
    CFile file(ends[0]);
    received.resize(sent.size() + 1);
    received.resize(file.Read(received.data(), received.size()));
  });
  CFile file(ends[1]);
  file.WriteParts(parts.data(), parts.size());
  file.Close();
  reader.join();
  EXPECT_TRUE(received == sent);
}

TEST(File, FailuresNameTheFileAndTheReason) {
  const CTempDir dir;
  CFile file;
  EXPECT_EQ(file.Open(dir / "none", CFile::modeRead), 0);
  EXPECT_EQ(errno, ENOENT);
  WriteBytes(dir / "old", "old");
  EXPECT_EQ(file.Open(dir / "old", CFile::modeWrite | CFile::modeCreate | CFile::modeNew), 0);
  EXPECT_EQ(errno, EEXIST);
  try {
    char byte;
    CFile(dir.Path(), CFile::modeRead).Read(&byte, 1);
    FAIL() << "a directory was read";
  } catch (const CFileException& fault) {
    EXPECT_EQ(fault.m_path, dir.Path());
    EXPECT_EQ(fault.Text(), "Is a directory");
  }
}

std::string Names(const CArray<CFileEntry>& files) {
  std::string names;
  for (const CFileEntry& file : files) names += file.m_name.Std() + " ";
  return names;
}

// The file after image was to replace it. No other file is left in the directory.
std::string Replaced(const CTempDir& dir, const std::string& image) {
  WriteBytes(dir / "log", "old");
  try {
    CReplaceFile file(dir / "log");
    file.Write(image.data(), image.size());
    file.Replace();
  } catch (const CFileException&) {
  }
  EXPECT_EQ(Names(ListFiles(dir.Path(), "")), "log ");
  return ReadBytes(dir / "log");
}

TEST(File, AReplacementIsCompleteOrHasNoEffect) {
  const CTempDir dir;
  WriteBytes(dir / "log.part", "of a process that was killed");
  EXPECT_EQ(Replaced(dir, "new image"), "new image");
  for (std::size_t n = 3; n < 9; ++n) {
    const CFileSizeLimit full(n);
    EXPECT_EQ(Replaced(dir, "new image"), "old") << n;
  }
}

TEST(File, AReplacementThatFailsLeavesNoFile) {
  const CTempDir dir;
  std::filesystem::create_directories((dir / "log/inside").Std());
  {
    CReplaceFile file(dir / "log");
    EXPECT_THROW(CReplaceFile(dir / "log"), CFileException) << "two at a time";
    file.Write("x", 1);
    EXPECT_THROW(file.Replace(), CFileException);
  }
  EXPECT_FALSE(FileExists(dir / "log.part"));
  EXPECT_THROW(CReplaceFile(dir / "none/log"), CFileException);
}

TEST(File, SaveFileFollowsALinkAndWritesToAPipe) {
  const CTempDir dir;
  const auto save = [](const CString& path) { SaveFile(path, [](CFile& file) { file.Write("new", 3); }); };
  WriteBytes(dir / "file", "old");
  ASSERT_EQ(::symlink("file", dir / "link"), 0);
  save(dir / "link");
  EXPECT_EQ(Names(ListFiles(dir.Path(), "")), "file link ");
  EXPECT_EQ(ReadBytes(dir / "file"), "new");
  ASSERT_EQ(::mkfifo(dir / "pipe", 0600), 0);
  CFile reader(::open(dir / "pipe", O_RDONLY | O_NONBLOCK));
  save(dir / "pipe");
  char bytes[4] = {};
  EXPECT_EQ(reader.Read(bytes, 3), 3u);
}

TEST(FileSystem, ListsTheFilesOfAnExtensionWithTheTimeOfTheirLastWrite) {
  const CTempDir dir;
  for (const char* name : {"b.rph", "a.RPH", "rph", "a.rphx", ".rph", "c.csv"}) WriteBytes(dir / name, "");
  std::filesystem::create_directory((dir / "d.rph").Std());
  std::filesystem::create_symlink("none", (dir / "e.rph").Std());
  EXPECT_EQ(Names(ListFiles(dir.Path(), ".rph")), ".rph a.RPH b.rph ");
  EXPECT_TRUE(ListFiles(dir / "none", "").IsEmpty());
  const timespec times[2] = {{0, 0}, {1'000'000'000, 123'456'000}};
  ASSERT_EQ(::utimensat(AT_FDCWD, dir / "c.csv", times, 0), 0);
  EXPECT_EQ(ListFiles(dir.Path(), ".csv")[0].m_lastWrite, 1'000'000'000'123'456'000);
}

TEST(FileSystem, DirectoryOfAPath) {
  const char* cases[][2] = {{"a", "."}, {"/a", "/"}, {"b/a", "b"}, {"/b/c/a", "/b/c"}, {"b/", "b"}};
  for (const auto& [path, directory] : cases) EXPECT_EQ(DirectoryOf(path), directory);
  EXPECT_EQ(JoinPath("", "a"), "a");
  EXPECT_EQ(JoinPath("b", "a"), "b/a");
}

}  // namespace
}  // namespace vastra
