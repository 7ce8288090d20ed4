#include "vastra/support/registry.h"

#include <gtest/gtest.h>

#include <QByteArray>

#include "tests/support/files.h"

namespace vastra {
namespace {

class Registry : public testing::Test {
 protected:
  Registry() { qputenv("XDG_CONFIG_HOME", m_settings.Path().Std().c_str()); }

  // From here on the values come from the file's bytes alone.
  void Reread(const std::function<void(std::string&)>& edit = [](std::string&) {}) {
    std::string bytes = ReadBytes(m_settings / "vastra/settings.ini");
    edit(bytes);
    std::filesystem::create_directories((m_other / "vastra").Std());
    WriteBytes(m_other / "vastra/settings.ini", bytes);
    qputenv("XDG_CONFIG_HOME", m_other.Path().Std().c_str());
  }

  CTempDir m_settings, m_other;
};

TEST_F(Registry, GivesEveryValueBackByteForByte) {
  const CString values[] = {
      "",         "10,20,300,200", " blanks ",     "@text",         "@ByteArray(x)",    "a;b=c#\"'\\n",
      "1\r\n2\t", "\xC3\xA9",      "\xE9\xFF\x80", "\xEF\xBB\xBFx", CString("a\0b", 3), "%41"};
  SECRegistry registry;
  ASSERT_EQ(1, registry.OpenUserKey("Software\\Test"));
  int count = 0;
  for (const CString& value : values) registry.SetString(CString(std::to_string(count++)), value);
  registry.SetString("name with % and \xC3\xA9", "x");
  Reread();
  SECRegistry again;
  ASSERT_EQ(1, again.Connect(HKEY_CURRENT_USER));
  ASSERT_EQ(1, again.OpenKey("Software\\Test", KEY_QUERY_VALUE));
  while (count-- > 0)
    EXPECT_EQ(values[count].Std(), again.GetString(CString(std::to_string(count)), "none").Std()) << count;
  EXPECT_EQ("x", again.GetString("name with % and \xC3\xA9").Std());
}

TEST_F(Registry, KeyIsThereOnceMadeAndAllowsWhatItWasOpenedFor) {
  CString value = "untouched";
  SECRegistry registry;
  EXPECT_EQ(0, registry.CreateKey("Software\\Test", KEY_WRITE));
  EXPECT_EQ(0, registry.Connect(0x80000002));
  EXPECT_EQ(1, registry.Connect(HKEY_CURRENT_USER));
  EXPECT_EQ(0, registry.OpenKey("Software\\Test", KEY_ALL_ACCESS));
  EXPECT_EQ(0, registry.SetStringValue("name", "x"));
  EXPECT_EQ(1, registry.CreateKey("Software\\Test", KEY_WRITE));
  EXPECT_EQ(1, registry.SetStringValue("name", "x"));
  EXPECT_EQ(0, registry.GetStringValue("name", value));
  EXPECT_EQ(1, registry.OpenKey("Software\\Test", KEY_QUERY_VALUE));
  EXPECT_EQ(0, registry.SetStringValue("name", "y"));
  EXPECT_EQ(0, registry.GetStringValue("nothing", value));
  EXPECT_EQ("untouched", value.Std());
  EXPECT_EQ(1, registry.GetStringValue("name", value));
  EXPECT_EQ("x", value.Std());
  registry.CloseKey();
  EXPECT_EQ(0, registry.GetStringValue("name", value));
}

TEST_F(Registry, ValueTypedIntoTheFileByHandIsRead) {
  SECRegistry registry;
  registry.OpenUserKey("Software\\Test");
  registry.SetString("place", "PLACE");
  Reread([](std::string& bytes) { bytes.replace(bytes.find("PLACE"), 5, "10, 20,300,200"); });
  registry.OpenUserKey("Software\\Test");
  EXPECT_EQ("10,20,300,200", registry.GetString("place").Std());
}

}  // namespace
}  // namespace vastra
