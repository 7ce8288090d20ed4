#include "host/common/configuration_file.h"

#include <gtest/gtest.h>

#include "tests/logfiles/example.h"
#include "tests/support/configuration_bytes.h"
#include "tests/support/files.h"
#include "tests/support/names.h"

namespace vastra {
namespace {

// The error message for bytes, or an empty string.
CString Fault(const std::string& bytes) {
  CConfiguration configuration;
  return ParseConfiguration(bytes, "/", configuration);
}

CConfiguration Parsed(const std::string& bytes) {
  CConfiguration configuration;
  EXPECT_EQ(ParseConfiguration(bytes, "/", configuration), "");
  return configuration;
}

TEST(ConfigurationFile, IsTheBlocksInThisOrderAndNothingElse) {
  CConfiguration full = Parsed(kFile);
  EXPECT_EQ(Hex(StoreConfiguration(full)), Hex(kFile));
  std::string page = ExampleBytes("## The configuration file", "## The JSON form");
  CConfiguration fresh;
  EXPECT_EQ(Hex(StoreConfiguration(fresh)), Hex(page));
  CConfiguration loaded = Parsed(page);
  EXPECT_EQ(Hex(StoreConfiguration(loaded)), Hex(page));
  fresh.m_version = 1002;
  EXPECT_EQ(Hex(StoreConfiguration(fresh)), Hex(page.replace(4, 1, "\xEA")));
}

TEST(ConfigurationFile, NamesWhatIsWrong) {
  const struct {
    std::string bytes;
    const char* fault;
  } kFaults[] = {
      {"VSTS" + kFile.substr(4), "neither a configuration file nor JSON"},
      {"x", "neither a configuration file nor JSON"},
      {Bytes("'VSTR' EC030000") + kFile.substr(8), "a configuration file of version 1004, which is unknown"},
      {Bytes("'VSTR' 000003EB") + kFile.substr(8),
       "a configuration file of version 3942842368, which is unknown"},
      {kFile + '\0', "1 extra bytes after the end"},
      {kFile + kFile, "492 extra bytes after the end"},
      {"", "the file ends too early"},
      {Bytes("'VSTR' EB030000 00x8 FFFFFFFF 00x200"), "a count is larger than the rest of the file"},
      {Bytes("'VSTR' EB030000 00x24 FF FFFF FFFFFFFF 00x200"), "a count is larger than the rest of the file"},
  };
  for (const auto& row : kFaults) EXPECT_EQ(Fault(row.bytes), row.fault) << Hex(row.bytes);
}

TEST(ConfigurationFile, IsRefusedWhereverItIsCutAndChangesNothing) {
  CConfiguration configuration = Parsed(kFile);
  for (std::size_t n = 0; n < kFile.size(); ++n)
    EXPECT_NE(ParseConfiguration(kFile.substr(0, n), "/", configuration), "") << n;
  EXPECT_EQ(Hex(StoreConfiguration(configuration)), Hex(kFile));
}

TEST(ConfigurationFile, StaysAsItWasWhenTheDiskIsFullAtAnyByte) {
  const CTempDir dir;
  const CString path = dir / "logger.vcf";
  CConfiguration old;
  CConfiguration full = Parsed(kFile);
  ASSERT_EQ(SaveConfiguration(path, old), "");
  for (std::size_t n = 0; n < kFile.size(); n += 7) {
    const CFileSizeLimit limit(n);
    EXPECT_EQ(SaveConfiguration(path, full), "not saved: File too large") << n;
  }
  EXPECT_EQ(Hex(ReadBytes(path)), Hex(StoreConfiguration(old)));
  EXPECT_FALSE(std::filesystem::exists((path + ".part").Std()));
  ASSERT_EQ(SaveConfiguration(path, full), "");
  EXPECT_EQ(Hex(ReadBytes(path)), Hex(kFile));
  EXPECT_EQ(SaveConfiguration(dir / "none/logger.vcf", full), "not saved: No such file or directory");
}

TEST(ConfigurationFile, IsDistinguishedFromJsonByItsContent) {
  const CTempDir dir;
  CConfiguration configuration;
  for (const char* head : {"", " \r\n\t", "\xEF\xBB\xBF"}) {
    WriteBytes(dir / "a", head + kJson);
    configuration = {};
    EXPECT_EQ(LoadConfiguration(dir / "a", configuration), "");
    EXPECT_EQ(Hex(StoreConfiguration(configuration)), Hex(kFile));
  }
  WriteBytes(dir / "b.json", kFile);
  configuration = {};
  EXPECT_EQ(LoadConfiguration(dir / "b.json", configuration), "");
  EXPECT_EQ(Hex(StoreConfiguration(configuration)), Hex(kFile));
  EXPECT_EQ(LoadConfiguration(dir / "c", configuration), "No such file or directory");
  EXPECT_EQ(LoadConfiguration(dir.Path(), configuration), "Is a directory");
  EXPECT_EQ(Hex(StoreConfiguration(configuration)), Hex(kFile));
}

TEST(ConfigurationFile, ReadsRelativePathsFromTheFolderOfTheJsonFile) {
  const CTempDir dir;
  std::filesystem::create_directory((dir / "conf").Std());
  std::filesystem::create_directory_symlink("/usr/lib", (dir / "conf/link").Std());
  const std::pair<const char*, CString> kPaths[] = {
      {"logs", dir / "conf/logs"}, {"./a//b/", dir / "conf/a/b"},
      {".", dir / "conf"},         {"../logs", dir / "logs"},
      {"/abs/./x", "/abs/./x"},    {"", ""},
      {"a/../b", dir / "conf/b"},  {"link/../b", dir / "conf/link/../b"},
  };
  for (const auto& [typed, path] : kPaths) {
    const std::string text = std::string("\"") + typed + "\"";
    WriteBytes(dir / "conf/a.json", "{\"outputs\":[{\"directory\":" + text +
                                        "}],\"summaries\":[{\"directory\":" + text +
                                        "}],\"input\":{\"inputFiles\":[\"\"," + text + "]}}");
    CConfiguration configuration;
    EXPECT_EQ(LoadConfiguration(dir / "conf/a.json", configuration), "");
    EXPECT_EQ(configuration.m_outputs.m_outputs.GetHead()->m_directory, path);
    EXPECT_EQ(configuration.m_summaries.m_summaries.GetHead()->m_directory, path);
    EXPECT_EQ(configuration.m_input.m_inputFiles.GetHead(), "");
    EXPECT_EQ(configuration.m_input.m_inputFiles.GetTail(), path);
  }
}

TEST(ConfigurationFile, ReportsWhichSettingsItLoses) {
  CConfiguration full = Parsed(kFile);
  EXPECT_EQ(LostInFile(full).GetSize(), 0);
  full.m_plcWrite.m_disableWriting = 1;
  full.m_plcWrite.m_nodes.GetHead()->m_node.m_driver.value5 = 1;
  full.m_input.m_plcNodes.GetTail()->m_driver.value5 = 2;
  full.m_input.m_preEquationText = "\xFF";
  const CString kNewest = ": a configuration file of version 1003 cannot hold it";
  EXPECT_EQ(LostInFile(full),
            Names({"input.plcNodes[1].driver.value5" + kNewest, "plcWrite.nodes[0].driver.value5" + kNewest,
                   "plcWrite.disableWriting" + kNewest}));
  full.m_plcWrite = {};
  full.m_input = {};
  full.m_version = 1002;
  full.m_outputs.m_outputs.AddHead(new COutputConfig);
  full.m_outputs.m_outputs.GetHead()->m_nameVariable = kSystemTime;
  const CString kOld = ": a configuration file of version 1002 cannot hold it";
  EXPECT_EQ(LostInFile(full), Names({"outputs[1].nameVariable" + kOld, "outputs[1].dwordName" + kOld,
                                     "outputs[1].prefix" + kOld, "outputs[1].usePrefix" + kOld}));
}

TEST(ConfigurationFile, ReportsAllBlocksInFileOrder) {
  CConfiguration full = Parsed(kFile);
  CMemFile file;
  full.Report(file);
  std::string headings;
  std::istringstream report(file.Bytes());
  for (std::string line; std::getline(report, line);)
    if (line.find("[*** ") == 0 || line == "A\r") headings += line;
  EXPECT_EQ(headings,
            "[*** Input ***]\rA\r[*** Multiple Outputs ***]\r[*** Output ***]\r[*** Multiple Summaries ***]\r"
            "[*** Summary ***]\r[*** Multiple Outputs to Plc***]\rA\r[*** Smart ***]\r[*** Trending ***]\r");
}

}  // namespace
}  // namespace vastra
