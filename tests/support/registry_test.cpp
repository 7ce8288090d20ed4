#include "vastra/support/registry.h"

#include <gtest/gtest.h>

#include <QByteArray>

#include "tests/support/files.h"

namespace vastra {
namespace {

constexpr const char* kKey = "Software\\Test";

void KeepSettingsIn(const CTempDir& dir) { qputenv("XDG_CONFIG_HOME", dir.Path().Std().c_str()); }

TEST(Registry, ReturnsEveryValueByteForByte) {
  const CString values[] = {
      "",         "10,20,300,200", " blanks ",     "@text",         "@ByteArray(x)",    "a;b=c#\"'\\n",
      "1\r\n2\t", "\xC3\xA9",      "\xE9\xFF\x80", "\xEF\xBB\xBFx", CString("a\0b", 3), "%41"};
  const auto nameOf = [&](const CString& value) {
    return CString("% and \xC3\xA9 " + std::to_string(&value - values));
  };
  const CTempDir written, edited;
  KeepSettingsIn(written);
  SECRegistry registry;
  ASSERT_EQ(registry.OpenUserKey(kKey), 1);
  for (const CString& value : values) registry.SetString(nameOf(value), value);
  registry.SetString("typed", "PLACE");
  // The values of a file are cached: a copy of it is read. The user types a list into the copy.
  std::string bytes = ReadBytes(written / "vastra/settings.ini");
  bytes.replace(bytes.find("PLACE"), 5, "10, 20,300,200");
  std::filesystem::create_directories((edited / "vastra").Std());
  WriteBytes(edited / "vastra/settings.ini", bytes);
  KeepSettingsIn(edited);
  ASSERT_EQ(registry.OpenUserKey(kKey), 1);
  for (const CString& value : values) EXPECT_EQ(registry.GetString(nameOf(value), "none"), value);
  EXPECT_EQ(registry.GetString("typed"), "10,20,300,200");
  EXPECT_EQ(registry.GetString("missing", "none"), "none");
}

TEST(Registry, AKeyExistsOnceCreatedAndAllowsWhatItWasOpenedFor) {
  const CTempDir dir;
  KeepSettingsIn(dir);
  SECRegistry registry;
  const auto use = [&](int isOpen) {
    CString value = "old";
    const int isWritten = registry.SetStringValue("name", "new"),
              isRead = registry.GetStringValue("name", value);
    return std::to_string(isOpen) + std::to_string(isWritten) + std::to_string(isRead) + value.Std();
  };
  EXPECT_EQ(use(registry.CreateKey(kKey, KEY_WRITE)), "000old");
  EXPECT_EQ(use(registry.Connect(0x80000002)), "000old");
  EXPECT_EQ(use(registry.Connect(HKEY_CURRENT_USER)), "100old");
  EXPECT_EQ(use(registry.OpenKey(kKey, KEY_ALL_ACCESS)), "000old");
  EXPECT_EQ(use(registry.CreateKey(kKey, KEY_WRITE)), "110old");
  EXPECT_EQ(use(registry.OpenKey(kKey, KEY_QUERY_VALUE)), "101new");
  registry.CloseKey();
  EXPECT_EQ(use(0), "000old");
}

}  // namespace
}  // namespace vastra
