#include "vastra/logfiles/log_folder.h"

#include <sys/stat.h>

#include "tests/logfiles/link_fixture.h"
#include "tests/support/faulty_files.h"

namespace vastra {
namespace {

namespace fs = std::filesystem;

class LogFolder : public CLogFixture {
 protected:
  CLogFolder Folder(const char* prefix = "", const char* variable = "System Time") const {
    return {{m_dir.Path(), prefix, variable, false, ".rph", true, false}, 1000, {}};
  }
  CString NextName(CLogFolder& folder, int hour = 0) const {
    CSampleStore samples;
    samples.Append(Sample(kStart + 3600 * hour, {1, 5.5f}));
    return folder.NextName(samples.GetHead(), Names({"Temp", "Items"}));
  }
  static bool Save(CLogFolder& folder, const CString& name) {
    return folder.Save(name, ELogForm::binary, false, [](CFile& file) { file.Write("new\n", 4); });
  }
  // Empties the folder and makes files and folders ("x/") there.
  void Make(const std::string& names) const {
    for (const auto& old : fs::directory_iterator(m_dir.Path().Std())) fs::remove_all(old.path());
    std::istringstream words(names);
    for (std::string name; words >> name;)
      name.back() == '/' ? void(fs::create_directories((m_dir / name.c_str()).Std()))
                         : WriteBytes(m_dir / name.c_str(), "old\n");
  }
  // The names of all entries of the folder, in byte order.
  std::string All() const {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(m_dir.Path().Std()))
      names.insert(" " + entry.path().filename().string());
    std::string all;
    for (const std::string& name : names) all += name;
    return all;
  }
};

TEST_F(LogFolder, ANewLogNeverTakesTheNameOfOneThatIsThere) {
  const struct {
    const char *prefix, *variable, *there;
    std::string next;  // three logs, and one an hour later
  } kCases[] = {
      {"", "System Time", "", " 0301021400 0301021401 0301021403 0301021500"},
      {"", "System Time", "0301021407.rph 0301021403h.csv x0301021450.rph 0301021577.rph/",
       " 0301021408 0301021409 0301021411 0301021578"},
      {"x", "System Time", "x0301021498h.csv", " x0301021499 x0301021499~2 x0301021499~4 x0301021500"},
      {"", "System Time",
       "0301021499~9.rph 0301021499~10h.csv 0301021598~7.rph 0301021499~1234567890123456789.rph",
       " 0301021499~11 0301021499~12 0301021499~14 0301021599"},
      {"", "Items", "5h.csv 5~4.rph 51~9.rph -5~8.rph 5~07.rph", " 5~5 5~6 5~8 5~9"},
      {"b", "None", "bNoValue.rph", " bNoValue~2 bNoValue~3 bNoValue~5 bNoValue~6"},
  };
  for (const auto& row : kCases) {
    Make(row.there);
    CLogFolder folder = Folder(row.prefix, row.variable);
    std::string names;
    for (int log = 0; log < 4; ++log) {
      CString name = NextName(folder, log / 3);
      if (log == 2) {  // another file gets the name at the same moment
        fs::create_symlink("nothing", folder.PathOf(name, ELogForm::binary).Std());
        EXPECT_FALSE(Save(folder, name));
        name = NextName(folder);
      }
      EXPECT_TRUE(Save(folder, name));
      names += " " + name.Std();
      DeleteFile(folder.PathOf(name, ELogForm::binary));  // the name is not free again
    }
    EXPECT_EQ(names, row.next);
  }
}

TEST_F(LogFolder, ALogWhoseNameCouldNotBeSyncedIsSavedOnceMore) {
  CFaultyFiles files(m_dir.Path());
  CLogFolder folder = Folder();
  const CString name = NextName(folder);
  files.Add({callSyncFolder, files.Count(callSyncFolder) + 1, EIO});
  EXPECT_THROW(Save(folder, name), CFileException);
  EXPECT_STREQ(NextName(folder), name);
  EXPECT_TRUE(Save(folder, name));
  EXPECT_FALSE(Save(folder, name));  // as a new log
}

TEST_F(LogFolder, LeftoversOfItsOwnNamingGoAndWhatStaysIsGoneAround) {
  Make(
      "0301021400.rph.part 0301021401h.csv.2.part 0301021404.rph.part/ 0301021405.rph.part/x/ other.part "
      "0301021400.rph.10.part");
  EXPECT_EQ(::mkfifo(m_dir / "0301021402.rph.part", 0600), 0);
  fs::create_symlink("other.part", (m_dir / "0301021403.rph.part").Std());
  CLogFolder folder = Folder();
  std::string during;
  folder.Save("0301021405", ELogForm::binary, false, [&](CFile&) {
    EXPECT_EQ(folder.RemoveLeftovers().size(), 1u);
    during = All();  // also the file that is being written
  });
  EXPECT_EQ(during, " 0301021400.rph.10.part 0301021405.rph.2.part 0301021405.rph.part other.part");
}

// Some bytes of the disk are free, and some files cannot be removed.
class CSmallDisk : public CFileLayer {
 public:
  explicit CSmallDisk(std::uint64_t free, const char* stuck) : m_free(free), m_stuck(stuck) {
    SetFileLayer(this);
  }
  ~CSmallDisk() override { SetFileLayer(nullptr); }
  int FreeBytes(const CString&, std::uint64_t& bytes) override { return bytes = m_free, 1; }
  int Remove(const CString& path) override {
    if (path.Find(m_stuck) >= 0) return errno = EPERM, 0;
    CFileStatus status;
    if (Stat(path, status)) m_free += status.size;
    return CFileLayer::Remove(path);
  }

 private:
  std::uint64_t m_free;
  const CString m_stuck;
};

class LogRotation : public LogFolder {
 protected:
  LogRotation() {
    CSampleStore samples;
    for (const auto& values : {std::initializer_list<float>{1, 2}, {1}})
      samples.Append(Sample(kStart, values));
    m_log = Written(Names({"Temp", "Flow"}), samples);
  }
  // A file that was written so many days ago.
  void Put(const std::string& file, const std::string& bytes, int days) const {
    WriteBytes(m_dir / file.c_str(), bytes);
    const timespec times[2] = {{0, UTIME_OMIT}, {::time(nullptr) - days * 86400, 0}};
    ::utimensat(AT_FDCWD, m_dir / file.c_str(), times, 0);
  }
  // What a rotation has removed, without the hour, and how many faults it reports.
  static std::string Rotated(CLogFolder& folder, bool onlyOldest = false) {
    CRotation rotation;
    onlyOldest ? void(folder.RemoveOldest(rotation)) : folder.Rotate(rotation);
    std::string text;
    for (const CString& name : rotation.removed) text += " " + name.Std().substr(8);
    return text + std::string(rotation.faults.size(), '!');
  }

  std::string m_log;
};

TEST_F(LogRotation, OnlyWholeLogsOfItsOwnAreCountedAndRemoved) {
  for (const bool isText : {false, true}) {
    Make("");
    const std::string whole = isText ? "a,\n" : m_log, ending = isText ? "h.csv" : ".rph";
    for (std::size_t cut = 0; cut < whole.size(); ++cut)
      Put("030101" + std::to_string(1000 + cut) + ending, whole.substr(0, cut), 50);
    if (!isText) Put("0301011399.rph", whole + "x", 50), Put("0301011398.rph", std::string(99, '\0'), 50);
    for (const auto& name :
         {"x0301010000" + ending, "0301010000" + ending + ".part", "0301010002.x" + ending})
      Put(name, whole, 50);
    for (const std::string name :
         {"0301010003", "0301010004", "0301010005"})  // in the form that is not saved
      Put(name + (isText ? ".rph" : "h.csv"), isText ? m_log : "a,\n", 50);
    fs::create_symlink("x0301010000" + ending, (m_dir / "0301010001").Std() + ending);
    const std::string others = All();
    for (const int log : {5, 4, 3}) Put("030101020" + std::to_string(log) + "~2" + ending, whole, log);
    CLogFolder folder({m_dir.Path(), "", "System Time", false, ".rph", !isText, isText}, 2, {});
    EXPECT_EQ(Rotated(folder), " 05~2");
    EXPECT_EQ(Rotated(folder, true) + Rotated(folder, true), " 04~2");  // never the newest
    DeleteFile(m_dir / ("0301010203~2" + ending).c_str());
    EXPECT_EQ(All(), others);
  }
}

TEST_F(LogRotation, TheOldestGoUntilTheLimitsHold) {
  const std::uint64_t both = m_log.size() + 3;
  const struct {
    UINT maxLogs;
    CLogRetention retention;
    std::uint64_t free;
    const char* stuck;
    std::string removed;  // of logs of 9, 7, 5, 3, 1 days ago and a new one, by two rotations
  } kCases[] = {{9, {}, 0, "none", ";"},
                {2, {}, 0, "none", " 09 07 05 03;"},
                {9, {6, 0, 0}, 0, "none", " 09 07;"},
                {9, {0, 4 * both, 0}, 0, "none", " 09 07;"},
                {9, {0, 6 * both - 1, 0}, 0, "none", " 09;"},
                {9, {0, 0, 5 * both}, 3 * both, "none", " 09 07;"},
                {1, {0.01, 1, 1 << 20}, 0, "none", " 09 07 05 03 01;"},
                {3, {}, 0, "0209", " 07 05!!;"}};
  for (const auto& row : kCases) {
    Make("");
    for (const int days : {1, 3, 5, 7, 9, 90})
      for (const char* ending : {".rph", "h.csv"})
        Put("03010102" + std::to_string(100 + days).substr(1) + ending, *ending == '.' ? m_log : "a,\n",
            days);
    CSmallDisk disk(row.free, row.stuck);
    CLogFolder folder({m_dir.Path(), "", "System Time", false, ".rph", true, true}, row.maxLogs,
                      row.retention);
    folder.Saved("0301010290");  // the newest: its clock was wrong
    const std::string first = Rotated(folder);
    EXPECT_EQ(first + ";" + Rotated(folder), row.removed);
  }
}

}  // namespace
}  // namespace vastra
