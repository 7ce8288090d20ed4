#include "vastra/logfiles/log_naming.h"

#include <gtest/gtest.h>

#include <sstream>

#include "tests/support/files.h"

namespace vastra {
namespace {

CLogNaming Naming(const char* prefix, const char* variable, bool isTwo = false) {
  return {"/logs", prefix, variable, isTwo, ".rph", true, true};
}
CLogNaming ByTime(const char* prefix) { return Naming(prefix, "System Time"); }
CLogNaming ByValue(const char* prefix) { return Naming(prefix, "Items"); }
CLogNaming In(const CString& folder) { return {folder, "", "V", false, ".rph", true, true}; }
CLogNaming Saving(const char* extension, bool saveRp, bool saveCsv) {
  return {"/logs", "", "System Time", false, extension, saveRp, saveCsv};
}

TEST(LogNaming, AnOutputFindsItsOwnLogsAndNoOther) {
  const struct {
    CLogNaming naming;
    const char *own, *foreign;  // names without their endings
  } kCases[] = {
      {ByTime("a-"), "a-0301021400 a-0301021499~2 a-0301021403~10 a-0301021400~19 a-9999999999~1234567890",
       "0301021400 a-030102140 a-03010214000 a-03010214x0 a-0301021400~ a-0301021400~0 a-0301021400~1 "
       "a-0301021400~02 a-0301021400-2 a-0301021400~2~2 a-NoValue A-0301021400 a-"},
      {ByValue(""), "0 7 -3 12 100 2147483647 NoValue 12~2 -3~2 NoValue~11",
       "-0 - 007 +1 1.5 1-2 12~1 ~2 NoValue1 1NoValue novalue No x"},
      {Naming("b", "Items", true), "b0 b00 b01 b10 b12 b1-2 b-1-2 b0-5 bNoValue b1-2~2",
       "b007 b1--2 b1-2-3 b000 b0-0 bNoValue1 b b- b-0 1-2 b1-2~1"},
  };
  for (const auto& row : kCases)
    for (const char* names : {row.own, row.foreign}) {
      std::istringstream words(names);
      for (std::string name; words >> name;)
        for (const char* ending : {".rph", "h.csv", "", ".RPH", ".rpd", "d.csv", ".csv", "h.csv.part"}) {
          const auto log = row.naming.IsOwnFile((name + ending).c_str());
          const bool isOwn = names == row.own && (!strcmp(ending, ".rph") || !strcmp(ending, "h.csv"));
          EXPECT_EQ(log ? row.naming.FileOf(log->name, log->form).Std() : "", isOwn ? name + ending : "");
          EXPECT_EQ(log ? log->name.Std() : name, name);
        }
    }
}

TEST(LogNaming, TwoOutputsThatCouldWriteOneNameMeet) {
  const CTempDir dir;
  std::filesystem::create_directory((dir / "logs").Std());
  std::filesystem::create_symlink("logs", (dir / "link").Std());
  const std::tuple<CLogNaming, CLogNaming, bool> kCases[] = {
      {ByTime(""), ByTime(""), true},
      {ByTime("x"), ByTime("y"), false},
      {ByTime(""), ByTime("1"), false},
      {ByTime("1"), Naming("1", "Items", true), true},
      {ByValue("12"), ByTime(""), true},
      {ByValue("12345678901"), ByTime(""), false},
      {ByValue("1234567890~"), ByTime(""), true},
      {ByValue("a"), Naming("a-", "Temp"), true},
      {ByValue("a"), ByValue("b"), false},
      {ByValue("0"), Naming("", "Items", true), true},
      {ByValue("0"), ByValue(""), false},
      {ByValue("99~0"), ByValue(""), false},
      {ByValue("NoValue"), ByValue(""), false},
      {Saving(".rph", true, false), Saving(".rph", false, true), false},
      {Saving(".rph", true, true), Saving(".rpd", true, true), false},
      {Saving(".xh", true, true), Saving(".rph", true, true), true},
      {In("/a"), In("/b"), false},
      {In(dir / "logs"), In(dir / "link/"), true},
      {In(dir / "no"), In(dir / "logs/../no/"), true}};
  for (const auto& [a, b, meet] : kCases)
    for (const bool isSwapped : {false, true})
      EXPECT_EQ(isSwapped ? CanMeet(b, a) : CanMeet(a, b), meet) << a.prefix.Std() << "|" << b.prefix.Std();
  EXPECT_EQ(LogKey("output", "A", In(dir / "logs")).Std(), LogKey("output", "A", In(dir / "link/")).Std());
  EXPECT_NE(LogKey("output", "A", ByTime("")).Std(), LogKey("summary", "A", ByTime("")).Std());
}

}  // namespace
}  // namespace vastra
