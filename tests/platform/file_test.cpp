#include "vastra/platform/file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
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
  std::vector<iovec> parts;
  for (std::size_t i = 0; i < IOV_MAX + 10; ++i) sent += std::string(i, static_cast<char>('a' + i % 26));
  for (std::size_t i = 0, start = 0; i < IOV_MAX + 10; start += i++)
    parts.push_back({sent.data() + start, i});
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

std::string Names(const CString& directory, const CString& extension = "") {
  std::string names;
  for (const CFileEntry& file : ListFiles(directory, extension)) names += file.m_name.Std() + " ";
  return names;
}

TEST(File, AReplacementIsCompleteOrHasNoEffect) {
  const CTempDir dir;
  WriteBytes(dir / "log", "old");
  WriteBytes(dir / "log.part", "of a process that was killed");
  for (std::size_t space = 3; space < 10; ++space) {
    const CFileSizeLimit full(space);
    const bool fits = space == 9;
    try {
      CReplaceFile file(dir / "log");
      file.Write("new image", 9);
      file.Replace();
      EXPECT_TRUE(fits);
    } catch (const CFileException&) {
      EXPECT_FALSE(fits);
    }
    EXPECT_EQ(Names(dir.Path()), "log ");
    EXPECT_EQ(ReadBytes(dir / "log"), fits ? "new image" : "old") << space;
  }
  std::filesystem::create_directories((dir / "other/inside").Std());
  {
    CReplaceFile file(dir / "other");
    EXPECT_THROW(CReplaceFile(dir / "other"), CFileException) << "two at a time";
    EXPECT_THROW(file.Replace(), CFileException);
  }
  EXPECT_FALSE(FileExists(dir / "other.part"));
  EXPECT_THROW(CReplaceFile(dir / "none/log"), CFileException);
}

TEST(File, SaveFileFollowsALinkAndWritesToAPipe) {
  const CTempDir dir;
  const auto save = [](const CString& path) { SaveFile(path, [](CFile& file) { file.Write("new", 3); }); };
  WriteBytes(dir / "file", "older");
  ASSERT_EQ(::symlink("file", dir / "link"), 0);
  save(dir / "link");
  EXPECT_EQ(Names(dir.Path()), "file link ");
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
  EXPECT_EQ(Names(dir.Path(), ".rph"), ".rph a.RPH b.rph ");
  EXPECT_EQ(Names(dir / "none"), "");
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
