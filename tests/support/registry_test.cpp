#include "vastra/support/registry.h"

#include <gtest/gtest.h>

#include <QByteArray>

#include "tests/support/files.h"

namespace vastra {
namespace {

class Registry : public testing::Test {
 protected:
  Registry() { qputenv("XDG_CONFIG_HOME", m_settings.Path().Std().c_str()); }

  // Copies the settings file, as edit changes it, to another folder, and makes that one the settings.
  void Reread(const std::function<void(std::string&)>& edit = [](std::string&) {}) {
    std::string bytes = ReadBytes(m_settings / "vastra/settings.ini");
    edit(bytes);
    std::filesystem::create_directories((m_other / "vastra").Std());
    WriteBytes(m_other / "vastra/settings.ini", bytes);
    qputenv("XDG_CONFIG_HOME", m_other.Path().Std().c_str());
  }

  CTempDir m_settings, m_other;
};

TEST_F(Registry, ReturnsEveryValueByteForByte) {
  const CString values[] = {
      "",         "10,20,300,200", " blanks ",     "@text",         "@ByteArray(x)",    "a;b=c#\"'\\n",
      "1\r\n2\t", "\xC3\xA9",      "\xE9\xFF\x80", "\xEF\xBB\xBFx", CString("a\0b", 3), "%41"};
  SECRegistry registry;
  ASSERT_EQ(registry.OpenUserKey("Software\\Test"), 1);
  int count = 0;
  for (const CString& value : values) registry.SetString(CString(std::to_string(count++)), value);
  registry.SetString("name with % and \xC3\xA9", "x");
  Reread();
  SECRegistry again;
  ASSERT_EQ(again.Connect(HKEY_CURRENT_USER), 1);
  ASSERT_EQ(again.OpenKey("Software\\Test", KEY_QUERY_VALUE), 1);
  while (count-- > 0)
    EXPECT_EQ(again.GetString(CString(std::to_string(count)), "none").Std(), values[count].Std()) << count;
  EXPECT_EQ(again.GetString("name with % and \xC3\xA9").Std(), "x");
  EXPECT_EQ(again.GetString("missing", "none").Std(), "none");
}

TEST_F(Registry, KeyExistsOnceCreatedAndAllowsWhatItWasOpenedFor) {
  CString value = "untouched";
  SECRegistry registry;
  EXPECT_EQ(registry.CreateKey("Software\\Test", KEY_WRITE), 0);
  EXPECT_EQ(registry.Connect(0x80000002), 0);
  EXPECT_EQ(registry.Connect(HKEY_CURRENT_USER), 1);
  EXPECT_EQ(registry.OpenKey("Software\\Test", KEY_ALL_ACCESS), 0);
  EXPECT_EQ(registry.SetStringValue("name", "x"), 0);
  EXPECT_EQ(registry.CreateKey("Software\\Test", KEY_WRITE), 1);
  EXPECT_EQ(registry.SetStringValue("name", "x"), 1);
  EXPECT_EQ(registry.GetStringValue("name", value), 0);
  EXPECT_EQ(registry.OpenKey("Software\\Test", KEY_QUERY_VALUE), 1);
  EXPECT_EQ(registry.SetStringValue("name", "y"), 0);
  EXPECT_EQ(registry.GetStringValue("nothing", value), 0);
  EXPECT_EQ(value.Std(), "untouched");
  EXPECT_EQ(registry.GetStringValue("name", value), 1);
  EXPECT_EQ(value.Std(), "x");
  registry.CloseKey();
  EXPECT_EQ(registry.GetStringValue("name", value), 0);
}

TEST_F(Registry, ValueTypedIntoTheFileByHandIsRead) {
  SECRegistry registry;
  registry.OpenUserKey("Software\\Test");
  registry.SetString("place", "PLACE");
  Reread([](std::string& bytes) { bytes.replace(bytes.find("PLACE"), 5, "10, 20,300,200"); });
  registry.OpenUserKey("Software\\Test");
  EXPECT_EQ(registry.GetString("place").Std(), "10,20,300,200");
}

}  // namespace
}  // namespace vastra
