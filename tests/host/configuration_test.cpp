// The two forms of a configuration: JSON and the configuration file.
#include <gtest/gtest.h>

#include <bit>
#include <nlohmann/json.hpp>
#include <regex>

#include "host/common/configuration_file.h"
#include "host/common/configuration_json.h"
#include "tests/logfiles/example.h"
#include "tests/support/configuration_bytes.h"
#include "tests/support/names.h"

namespace vastra {
namespace {

using nlohmann::json;

// Expects the error message, of either form.
CConfiguration Parsed(const std::string& bytes, const std::string& fault = "") {
  CConfiguration configuration;
  EXPECT_EQ(ParseConfiguration(bytes, "/f", configuration), fault.c_str()) << bytes.substr(0, 100);
  return configuration;
}

std::string Json(CConfiguration configuration) {
  std::string text;
  EXPECT_EQ(ConfigurationToJson(configuration, text), "");
  return text;
}

std::string Stored(CConfiguration configuration) { return Hex(StoreConfiguration(configuration)); }

std::string Repeated(std::string_view text, std::size_t times) {
  std::string all;
  while (times-- > 0) all += text;
  return all;
}

TEST(ConfigurationJson, HasTheseKeysInBothDirections) {
  json full = json::parse(kJson);
  const json none = {{"keepDays", 0.0}, {"keepBytes", 0}, {"minFree", 0}};
  full["outputs"][0].update(none);
  full["summaries"][0].update(none);
  for (json& node : full["input"]["plcNodes"]) node.update({{"absent", "fail"}, {"aliveVar", ""}});
  EXPECT_EQ(json::parse(Json(Parsed(kJson))), full);
  full["outputs"][0]["keepDays"] = 0.5;
  full["summaries"][0].update({{"keepBytes", 9007199254740993}, {"minFree", 9223372036854775808u}});
  full["input"]["plcNodes"][1].update({{"absent", "hold"}, {"aliveVar", "x"}});
  full["version"] = 1002;  // which cannot hold the other two
  full["plcWrite"]["disableWriting"] = 1;
  full["plcWrite"]["nodes"][0]["driver"]["value5"] = -3;
  full["variables"] = {{"Temp", {{"unit", "K"}, {"comment", ""}}}, {"", {{"unit", ""}, {"comment", "?"}}}};
  EXPECT_EQ(json::parse(Json(Parsed(full.dump()))), full);
  EXPECT_EQ(Stored(Parsed("{}")), Stored({}));
}

TEST(ConfigurationJson, FillsInWhatIsLeftOutAndAcceptsOtherFormsOfWholeNumbers) {
  const json full = json::parse(Json(Parsed(R"({
"input": {"scanPeriod": 4294967295.0, "simulating": -1, "preprocess": 4294967295, "autoStart": true,
  "asFastAsPossible": 2.0, "preEquationText": "a=1", "plcNodes": [{"varNames": ["a", "b"]}, {"varNames": ["a"],
  "driver": {"variableCount": 0, "station": -2147483648, "timeOut": 2e3, "value1": -0.0}}]},
"outputs": [{}, {"enableText": "a=1; b=2"}, {"enableText": "a=1", "enableEquations": []}],
"summaries": [{"enableText": "a=1;", "summaryText": "b=2"}],
"smart": {"equationText": "b"}, "trend": {"equationText": "c;"},
"plcWrite": {"nodes": [{"varNames": ["a"], "scaler": [{}]}]}})")));
  const json expected = json::parse(R"({
"/input/scanPeriod": 4294967295, "/input/simulating": -1, "/input/preprocess": -1, "/input/autoStart": 1,
"/input/asFastAsPossible": 2, "/input/preEquations": ["a=1"], "/input/plcNodes/0/driver/variableCount": 2,
"/input/plcNodes/1/driver/variableCount": 0, "/input/plcNodes/1/driver/station": -2147483648,
"/input/plcNodes/1/driver/timeOut": 2000, "/input/plcNodes/1/driver/value1": 0,
"/outputs/0/maxLogs": 400, "/outputs/0/nameVariable": "System Time", "/outputs/0/enableEquations": [],
"/outputs/1/enableEquations": ["a=1", " b=2"], "/outputs/2/enableEquations": [],
"/summaries/0/enableEquations": ["a=1"], "/summaries/0/summaryEquations": ["b=2"],
"/summaries/0/maxSummaries": 400, "/summaries/0/maxSamples": 4000,
"/smart/equations": ["b"], "/trend/equations": ["c"], "/plcWrite/nodes/0/driver/variableCount": 1,
"/plcWrite/nodes/0/scaler": [{"varName": "", "scale": 1, "clamping": 0, "lowLimit": 0, "highLimit": 0}]})");
  for (const auto& [field, value] : expected.items())
    EXPECT_EQ(full[json::json_pointer(field)], value) << field;
}

// The text of a configuration with nothing but value at path, such as "outputs[0].name".
std::string At(const std::string& path, const std::string& value) {
  const std::string pointer = std::regex_replace("/" + path, std::regex(R"(\.|\[)"), "/");
  const json tree = {{std::regex_replace(pointer, std::regex("]"), ""), "@"}};
  return std::regex_replace(tree.unflatten().dump(), std::regex("\"@\""), value);
}

TEST(ConfigurationJson, NamesTheKeyOfAWrongValue) {
  constexpr const char* kNeedsInt = "must be a whole number from -2147483648 to 2147483647";
  constexpr const char* kNeedsFlag = "must be a whole number of 32 bits, true or false";
  constexpr const char* kNeedsFloat = "must be a number within the range of a float";
  const std::tuple<std::string, std::vector<std::string>, const char*> kWrong[] = {
      {"outputs[0].maxLogs",
       {"-1", "4294967296", "1.5", "true", "\"4\"", "null", "99999999999999999999999"},
       "must be a whole number from 0 to 4294967295"},
      {"outputs[0].maxLogs", {"1e999"}, "the number is too large"},
      {"outputs[0].keepDays", {"-0.5", "true"}, "must be a number from 0 on"},
      {"summaries[0].minFree",
       {"-1", "0.5", "9223372036854775809", "1e19", "true"},
       "must be a whole number from 0 to 9223372036854775808"},
      {"outputs[0].saveRp", {"4294967296", "-2147483649", "0.5"}, kNeedsFlag},
      {"outputs[0].directory", {"[]"}, "must be a string"},
      {"outputs[0].varNames", {"\"a\""}, "must be an array of strings"},
      {"outputs[0]", {"[]"}, "must be an object"},
      {"outputs", {"{}"}, "must be an array of objects"},
      {"outputs", {"[" + Repeated("{},", 100000) + "{}]"}, "has more than 100000 entries"},
      {"smart.equationText", {"\"" + Repeated("a;", 100001) + "\""}, "has more than 100000 statements"},
      {"input.plcNodes[0].driver.station", {"2147483648"}, kNeedsInt},
      {"input.plcNodes[0].scaler[0].scale", {"1e39", "false"}, kNeedsFloat},
      {"input.plcNodes[0].absent", {"\"Nan\"", "1"}, "must be one of \"fail\", \"nan\", \"hold\""},
      {"plcWrite.nodes[0].absent", {"\"nan\""}, "no such key"},
      {"variables", {"[]"}, "must be an object"},
      {"variables.Temp", {"\"K\""}, "must be an object"},
      {"variables.Temp.units", {"\"K\""}, "no such key"},
      {"plcWrite.nodeNumber", {"1"}, "no such key"},
      {"m_input", {"{}"}, "no such key"},
      {"version", {"1004"}, "must be 1002 or 1003"},
      {"trend.baseVars[0]", {R"("a\u0000b")"}, "must not contain U+0000"},
  };
  for (const auto& [path, values, words] : kWrong)
    for (const std::string& value : values) Parsed(At(path, value), path + ": " + words);
}

TEST(ConfigurationJson, ReportsWhereTheTextIsWrong) {
  const std::pair<std::string, std::string> kFaults[] = {
      {R"({"outputs": [{}, {"varNames": ["a", 1]}]})", "outputs[1].varNames[1]: must be a string"},
      {R"({"outputs": [)" + Repeated("0,", 1000000) + "0]}",
       "outputs[999998]: is one value more than the 1000000 that are allowed"},
      {R"({"outputs": [{"name": "a", "name": "a"}]})", "outputs[0].name: is a duplicate key"},
      {R"({"plcWrite": {"nodes": [{"a\nb": 1}]}})", "plcWrite.nodes[0].a?b: no such key"},
      {R"({"trend": {"baseVars": ["a", [["b\u0000"]]]}})",
       "trend.baseVars[1][0][0]: must not contain U+0000"},
      {"{\"" + std::string(100, 'k') + "\":1}", std::string(60, 'k') + "...: no such key"},
      {R"({"plcWrite": {"nodes": [)" + Repeated(R"({"scaler":[{},{},{},{},{},{},{}]},)", 100000) + "0]}}",
       "plcWrite.nodes[33554].scaler[0]: needs, with what is before it, more than 256 MB of memory"},
      {"[]", "must be an object"},
      {std::string(1000000, '['), Repeated("[0]", 32) + ": is nested too deeply"},
      {"{}\n}",
       "not valid JSON, line 2, column 1: syntax error while parsing value - unexpected '}'; expected end of "
       "input"},
      {"{\"a\":\"\xFF" + std::string(5000, 'x') + "\"}",
       "not valid JSON, line 1, column 7: syntax error while parsing value - invalid string: ill-formed "
       "UTF-8 byte"}};
  for (const auto& [text, fault] : kFaults) Parsed(text, fault);
}

TEST(ConfigurationJson, KeepsEveryFloat) {
  std::vector<std::pair<float, std::string>> numbers = {
      {0.1f, "0.1,"},          {3.4028235e38f, "3.4028235e+38,"}, {-0.0f, "-0.0,"},  {1e-45f, "1e-45,"},
      {HUGE_VALF, "\"inf\","}, {-HUGE_VALF, "\"-inf\","},         {NAN, "\"nan\","},
  };
  for (std::uint64_t bits = 0; bits <= 0xFFFFFFFF; bits += 0xFFFFF1)
    if (const auto number = std::bit_cast<float>(static_cast<UINT>(bits)); number == number)
      numbers.emplace_back(number, "");
  for (const auto& [number, digits] : numbers) {
    CConfiguration configuration = Parsed(At("plcWrite.nodes[0].scaler[0]", "{}"));
    configuration.m_plcWrite.m_nodes.GetHead()->m_node.m_scaler.m_nodes[0].m_scale = number;
    const std::string text = Json(configuration);
    EXPECT_NE(text.find("\"scale\": " + digits), std::string::npos) << digits;
    const float again = Parsed(text).m_plcWrite.m_nodes.GetHead()->m_node.m_scaler.m_nodes[0].m_scale;
    EXPECT_EQ(std::bit_cast<UINT>(again), std::bit_cast<UINT>(number));
  }
}

TEST(ConfigurationJson, NamesWhatHasNoJsonForm) {
  CConfiguration configuration = Parsed(kJson);
  std::string text = "before";
  configuration.m_outputs.m_outputs.GetHead()->m_varNames[1] = "a\xC3";
  const CString kNoText = ": a string that is not UTF-8 or has U+0000 has no JSON form";
  EXPECT_EQ(ConfigurationToJson(configuration, text), "outputs[0].varNames[1]" + kNoText);
  configuration.m_input.m_plcNodes.GetHead()->m_driver.text1 = CString("\0", 1);
  EXPECT_EQ(ConfigurationToJson(configuration, text), "input.plcNodes[0].driver.text1" + kNoText);
  configuration.m_input.m_plcNodes.GetHead()->m_driver.text1 = "\xE2\x82\xAC";
  configuration.m_outputs.Clear();
  configuration.m_plcWrite.m_nodes.GetHead()->m_node.m_scaler.m_nodes[0].m_lowLimit =
      std::bit_cast<float>(0xFFC00001);
  EXPECT_EQ(ConfigurationToJson(configuration, text),
            "plcWrite.nodes[0].scaler[0].lowLimit: a NaN with a payload has no JSON form");
  EXPECT_EQ(text, "before");
}

TEST(ConfigurationJson, ReadsTheExampleOfItsPage) {
  const std::string page = FormatsPage();
  const std::size_t start = page.find("```json\n") + 8;
  const CConfiguration example = Parsed(page.substr(start, page.find("```", start) - start));
  EXPECT_EQ(example.m_outputs.m_outputs.GetHead()->m_directory, "/f/logs");
}

TEST(ConfigurationFile, IsTheBlocksInThisOrderAndNothingElse) {
  std::string page = ExampleBytes("## The configuration file", "## The JSON form");
  CConfiguration fresh;
  EXPECT_EQ(Stored(fresh), Hex(page));
  EXPECT_EQ(Stored(Parsed(page)), Hex(page));
  fresh.m_version = 1002;
  EXPECT_EQ(Stored(fresh), Hex(page.replace(4, 1, "\xEA")));
}

TEST(ConfigurationFile, NamesWhatIsWrongAndChangesNothing) {
  const std::pair<std::string, const char*> kFaults[] = {
      {"VSTS" + kFile.substr(4), "neither a configuration file nor JSON"},
      {Bytes("'VSTR' EC030000") + kFile.substr(8), "a configuration file of version 1004, which is unknown"},
      {kFile + kFile, "492 extra bytes after the end"},
      {"", "the file ends too early"},
      {Bytes("'VSTR' EB030000 00x8 FFFFFFFF 00x200"), "a count is larger than the rest of the file"},
  };
  for (const auto& [bytes, fault] : kFaults) Parsed(bytes, fault);
  CConfiguration configuration = Parsed(kFile);
  for (std::size_t n = 0; n < kFile.size(); ++n)
    EXPECT_NE(ParseConfiguration(kFile.substr(0, n), "/", configuration), "") << n;
  EXPECT_EQ(Stored(configuration), Hex(kFile));
}

TEST(ConfigurationFile, StaysAsItWasWhenTheDiskIsFull) {
  const CTempDir dir;
  CConfiguration full = Parsed(kFile);
  for (const std::size_t space : {1000u, 100u}) {
    const CFileSizeLimit limit(space);
    EXPECT_EQ(SaveConfiguration(dir / "logger.vcf", full), space == 100 ? "not saved: File too large" : "");
    EXPECT_EQ(Hex(ReadBytes(dir / "logger.vcf")), Hex(kFile));
  }
}

TEST(ConfigurationFile, IsDistinguishedFromJsonByItsContent) {
  const CTempDir dir;
  CConfiguration loaded;
  for (const std::string& bytes : {kJson, " \r\n\t" + kJson, "\xEF\xBB\xBF" + kJson, kFile}) {
    WriteBytes(dir / "a.json", bytes);
    loaded = {};
    EXPECT_EQ(LoadConfiguration(dir / "a.json", loaded), "");
    EXPECT_EQ(Stored(loaded), Hex(kFile)) << bytes;
  }
  EXPECT_EQ(LoadConfiguration(dir.Path(), loaded), "is a folder, not a configuration");
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
    const json text = {{"outputs", json::array({{{"directory", typed}}})},
                       {"summaries", json::array({{{"directory", typed}}})},
                       {"input", {{"inputFiles", {"", typed}}}}};
    WriteBytes(dir / "conf/a.json", text.dump());
    CConfiguration loaded;
    EXPECT_EQ(LoadConfiguration(dir / "conf/a.json", loaded), "");
    EXPECT_EQ(loaded.m_outputs.m_outputs.GetHead()->m_directory, path);
    EXPECT_EQ(loaded.m_summaries.m_summaries.GetHead()->m_directory, path);
    EXPECT_EQ(loaded.m_input.m_inputFiles.GetHead(), "");
    EXPECT_EQ(loaded.m_input.m_inputFiles.GetTail(), path);
  }
}

TEST(ConfigurationFile, ReportsWhichSettingsItLoses) {
  CConfiguration full = Parsed(kFile);
  EXPECT_EQ(LostInFile(full).GetSize(), 0);
  full.m_plcWrite.m_disableWriting = 1;
  full.m_plcWrite.m_nodes.GetHead()->m_node.m_driver.value5 = 1;
  full.m_input.m_plcNodes.GetTail()->m_driver.value5 = 2;
  full.m_input.m_plcNodes.GetTail()->m_absent = EAbsent::hold;
  full.m_input.m_plcNodes.GetHead()->m_aliveVar = "Alive";
  full.m_outputs.m_outputs.GetHead()->m_retention.keepDays = 1;
  full.m_summaries.m_summaries.GetHead()->m_retention = {0, 1, 2};
  full.m_input.m_preEquationText = "\xFF";
  full.m_variables["Temp"].m_unit =
      "\xC2\xB0"
      "C";
  const CString kNewest = ": a configuration file of version 1003 cannot hold it";
  EXPECT_EQ(LostInFile(full),
            Names({"input.plcNodes[0].aliveVar" + kNewest, "input.plcNodes[1].driver.value5" + kNewest,
                   "input.plcNodes[1].absent" + kNewest, "outputs[0].keepDays" + kNewest,
                   "summaries[0].keepBytes" + kNewest, "summaries[0].minFree" + kNewest,
                   "plcWrite.nodes[0].driver.value5" + kNewest, "plcWrite.disableWriting" + kNewest,
                   "variables" + kNewest}));
  CConfiguration old = Parsed(R"({"version": 1002, "outputs": [{}, {"nameVariable": "k", "dwordName": 5,
"usePrefix": 6, "prefix": "p"}]})");
  const CString kOld = ": a configuration file of version 1002 cannot hold it";
  EXPECT_EQ(LostInFile(old), Names({"outputs[1].nameVariable" + kOld, "outputs[1].dwordName" + kOld,
                                    "outputs[1].prefix" + kOld, "outputs[1].usePrefix" + kOld}));
}

}  // namespace
}  // namespace vastra
