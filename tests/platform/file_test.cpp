#include "vastra/platform/file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <thread>

#include "tests/support/files.h"
#include "vastra/platform/file_system.h"

namespace vastra {
namespace {

std::vector<std::string> Names(const CArray<CFileEntry>& files) {
  std::vector<std::string> names;
  for (const CFileEntry& file : files) names.push_back(file.m_name.Std());
  return names;
}

TEST(File, PartsAreWrittenInOrderHoweverManyAndHoweverSlowTheReader) {
  int ends[2];
  ASSERT_EQ(0, ::pipe(ends));
  std::string sent, come;
  std::vector<std::string> texts;
  for (int i = 0; i < IOV_MAX + 10; ++i)
    texts.push_back(std::string(static_cast<std::size_t>(i), char('a' + i % 26)));
  for (const std::string& text : texts) sent += text;
  std::thread reader([&] {
    CFile file(ends[0]);
    come.resize(sent.size() + 1);
    come.resize(file.Read(come.data(), come.size()));
  });
  std::vector<iovec> parts;
  for (std::string& text : texts) parts.push_back({text.data(), text.size()});
  {
    CFile file(ends[1]);
    file.WriteParts(parts.data(), parts.size());
  }
  reader.join();
  EXPECT_TRUE(come == sent);
}

TEST(File, FailuresNameTheFileAndTheReason) {
  const CTempDir dir;
  CFile file;
  EXPECT_EQ(0, file.Open(dir / "none", CFile::modeRead));
  EXPECT_EQ(ENOENT, errno);
  WriteBytes(dir / "old", "old");
  EXPECT_EQ(0, file.Open(dir / "old", CFile::modeWrite | CFile::modeCreate | CFile::modeNew));
  EXPECT_EQ(EEXIST, errno);
  try {
    char byte;
    CFile(dir.Path(), CFile::modeRead).Read(&byte, 1);
    FAIL() << "a directory was read";
  } catch (const CFileException& fault) {
    EXPECT_EQ(dir.Path().Std(), fault.m_path.Std());
    EXPECT_EQ("Is a directory", fault.Text().Std());
  }
}

// What stands at path after it was to be replaced by image, and the files beside it.
std::string Replaced(const CTempDir& dir, const std::string& image) {
  WriteBytes(dir / "log", "old");
  try {
    CReplaceFile file(dir / "log");
    file.Write(image.data(), image.size());
    file.Replace();
  } catch (const CFileException&) {
  }
  EXPECT_EQ(std::vector<std::string>{"log"}, Names(ListFiles(dir.Path(), "")));
  return ReadBytes(dir / "log");
}

TEST(File, AReplacementIsWholeOrNotThere) {
  const CTempDir dir;
  EXPECT_EQ("new image", Replaced(dir, "new image"));
  for (std::size_t n = 3; n < 9; ++n) {
    const CFileSizeLimit full(n);
    EXPECT_EQ("old", Replaced(dir, "new image")) << n;
  }
}

TEST(File, AReplacementThatCannotTakeThePlaceLeavesNothing) {
  const CTempDir dir;
  std::filesystem::create_directories((dir / "log/inside").Std());
  {
    CReplaceFile file(dir / "log");
    file.Write("x", 1);
    EXPECT_THROW(file.Replace(), CFileException);
  }
  EXPECT_FALSE(FileExists(dir / "log.part"));
  EXPECT_THROW(CReplaceFile(dir / "none/log"), CFileException);
}

TEST(FileSystem, ListsTheFilesOfAnExtensionAndNothingElse) {
  const CTempDir dir;
  for (const char* name : {"b.rph", "a.RPH", "rph", "a.rphx", ".rph", "c.csv"}) WriteBytes(dir / name, "");
  std::filesystem::create_directory((dir / "d.rph").Std());
  std::filesystem::create_symlink("none", (dir / "e.rph").Std());
  EXPECT_EQ((std::vector<std::string>{".rph", "a.RPH", "b.rph"}), Names(ListFiles(dir.Path(), ".rph")));
  EXPECT_TRUE(ListFiles(dir / "none", "").IsEmpty());
}

TEST(FileSystem, ListedTimesAreThoseOfTheLastWrite) {
  const CTempDir dir;
  WriteBytes(dir / "a", "");
  const timespec times[2] = {{0, 0}, {1'000'000'000, 123'456'000}};
  ASSERT_EQ(0, ::utimensat(AT_FDCWD, dir / "a", times, 0));
  EXPECT_EQ(1'000'000'000'123'456'000, ListFiles(dir.Path(), "")[0].m_lastWrite);
}

TEST(FileSystem, DirectoryOfAPath) {
  const char* cases[][2] = {{"a", "."}, {"/a", "/"}, {"b/a", "b"}, {"/b/c/a", "/b/c"}, {"b/", "b"}};
  for (const auto& [path, directory] : cases) EXPECT_EQ(directory, DirectoryOf(path).Std());
  EXPECT_EQ("a", JoinPath("", "a").Std());
  EXPECT_EQ("b/a", JoinPath("b", "a").Std());
}

}  // namespace
}  // namespace vastra
