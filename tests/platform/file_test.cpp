#include "vastra/platform/file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <pthread.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstddef>
#include <thread>

#include "tests/support/faulty_files.h"
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

// In the first run the power is cut before each call and at the end; in each other run one call fails, and
// the power is cut at the end.
TEST(File, AReplacementIsCompleteOrHasNoEffectWhateverFails) {
  for (std::uint64_t failing = 0, calls = 1; failing <= calls; ++failing) {
    const CTempDir dir;
    WriteBytes(dir / "log", "old");
    WriteBytes(dir / "log.part", "of a process that was killed");
    CFaultyFiles files(dir.Path());
    bool saved = false;
    std::uint64_t syncFolder = 0;  // the only call whose failure does not keep the file from being replaced
    files.Add({.kind = callSyncFolder, .hook = [&] { syncFolder = files.Count(); }});
    const auto cut = [&] {
      for (unsigned i = 0; i < 3 * cutKinds; ++i) {
        const CTempDir after;
        files.CutPower(static_cast<EPowerCut>(i % cutKinds), after.Path(), i);
        const std::string found = ReadBytes(after / "log");
        EXPECT_TRUE(found == "new image" || (found == "old" && (!saved || failing == syncFolder)))
            << found << " " << failing << " " << i;
      }
    };
    files.Add(failing ? CFileFault{.nth = failing, .error = EIO, .part = 4}
                      : CFileFault{.forGood = true, .hook = cut});
    try {
      CReplaceFile file(dir / "log");
      file.Write("new image", 9);
      file.Replace();
      saved = true;
    } catch (const CFileException&) {
      EXPECT_TRUE(failing);
    }
    calls = std::max(calls, files.Count());
    cut();
    EXPECT_EQ(ReadBytes(dir / "log"), saved ? "new image" : "old") << failing;
  }
}

TEST(File, AReplacementNeedsItsFolderAndIsAlone) {
  const CTempDir dir;
  std::filesystem::create_directories((dir / "other/inside").Std());
  {
    CReplaceFile file(dir / "other");
    EXPECT_THROW(CReplaceFile(dir / "other"), CFileException) << "two at a time";
    EXPECT_THROW(file.Replace(), CFileException);
  }
  EXPECT_FALSE(FileExists(dir / "other.part"));
  EXPECT_THROW(CReplaceFile(dir / "none/log"), CFileException);
}

// In a process of its own, where the system refuses the given calls as an old kernel or a FAT file system
// does.
int MoveWithout(std::uint32_t call, std::uint32_t other, const CString& from, const CString& to) {
  const pid_t child = ::fork();
  if (child == 0) {
    sock_filter filter[] = {BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
                            BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, call, 2, 0),
                            BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, other, 2, 0),
                            BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
                            BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EINVAL),
                            BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EPERM)};
    const sock_fprog program = {std::size(filter), filter};
    if (::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) || ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program))
      ::_exit(255);
    ::_exit(FileLayer().Rename(from, to, false) ? 0 : errno);
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  return WEXITSTATUS(status);
}

TEST(FileLayer, RenamesOnlyToAFreeName) {
  constexpr std::uint32_t none = 0xFFFF;
  const std::uint32_t without[][2] = {{none, none}, {SYS_renameat2, none}, {SYS_renameat2, SYS_linkat}};
  for (const auto& [call, other] : without) {
    const CTempDir dir;
    WriteBytes(dir / "a", "a");
    WriteBytes(dir / "b", "b");
    EXPECT_EQ(MoveWithout(call, other, dir / "a", dir / "b"), EEXIST);
    EXPECT_EQ(MoveWithout(call, other, dir / "a", dir / "c"), 0);
    EXPECT_EQ(MoveWithout(call, other, dir / "a", dir / "d"), ENOENT);
    EXPECT_EQ(ReadBytes(dir / "b") + ReadBytes(dir / "c"), "ba");
  }
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
