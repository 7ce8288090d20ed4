#include "host/common/configuration_json.h"

#include <gtest/gtest.h>

#include <bit>
#include <nlohmann/json.hpp>

#include "host/common/configuration_file.h"
#include "tests/support/configuration_bytes.h"
#include "tests/support/files.h"

namespace vastra {
namespace {

// The error message for text, or an empty string.
CString Fault(const std::string& text) {
  CConfiguration configuration;
  return ConfigurationFromJson(text, "/f", configuration);
}

CConfiguration Parsed(const std::string& text) {
  CConfiguration configuration;
  EXPECT_EQ(ConfigurationFromJson(text, "/f", configuration), "");
  return configuration;
}

std::string Json(CConfiguration& configuration) {
  std::string text;
  EXPECT_EQ(ConfigurationToJson(configuration, text), "");
  return text;
}

TEST(ConfigurationJson, HasTheseKeysInBothDirections) {
  CConfiguration full = Parsed(kJson);
  EXPECT_EQ(Hex(StoreConfiguration(full)), Hex(kFile));
  EXPECT_EQ(nlohmann::json::parse(Json(full)), nlohmann::json::parse(kJson));
  CConfiguration fresh = Parsed("{}");
  EXPECT_EQ(StoreConfiguration(fresh), StoreConfiguration(*std::make_unique<CConfiguration>()));
}

TEST(ConfigurationJson, KeepsWhatTheFileCannotHold) {
  CConfiguration full = Parsed(
      R"({"version":1002,"plcWrite":{"disableWriting":true,"nodes":[{"driver":{"value5":-3}}]},
"outputs":[{"nameVariable":"k","prefix":"p"}]})");
  full = Parsed(Json(full));
  EXPECT_EQ(full.m_version, 1002u);
  EXPECT_EQ(full.m_plcWrite.m_disableWriting, 1);
  EXPECT_EQ(full.m_plcWrite.m_nodes.GetHead()->m_node.m_driver.value5, -3);
  EXPECT_EQ(full.m_outputs.m_outputs.GetHead()->m_nameVariable, "k");
  EXPECT_EQ(full.m_outputs.m_outputs.GetHead()->m_prefix, "p");
}

TEST(ConfigurationJson, FillsInWhatIsLeftOut) {
  const std::pair<const char*, const char*> kCases[] = {
      {R"({"outputs":[{}]})",
       R"({"outputs":[{"name":"","enableText":"","enableEquations":[],"varNames":[],"saveRp":0,"saveCsv":0,
"maxLogs":400,"maxSamples":4000,"directory":"","nameVariable":"System Time","dwordName":0,"usePrefix":0,
"prefix":""}]})"},
      {R"({"outputs":[{"enableText":"a=1; b=2"}]})",
       R"({"outputs":[{"enableText":"a=1; b=2","enableEquations":["a=1"," b=2"]}]})"},
      {R"({"summaries":[{"enableText":"a=1;","summaryText":"b=2","maxSummaries":400}]})",
       R"({"summaries":[{"enableText":"a=1;","summaryText":"b=2","enableEquations":["a=1"],
"summaryEquations":["b=2"],"maxSamples":4000}]})"},
      {R"({"input":{"preEquationText":"a=1"},"smart":{"equationText":"b"},"trend":{"equationText":"c;"}})",
       R"({"version":1003,"input":{"preEquationText":"a=1","preEquations":["a=1"],"scanPeriod":5000},
"smart":{"equationText":"b","equations":["b"]},"trend":{"equationText":"c;","equations":["c"]}})"},
      {R"({"outputs":[{"enableText":"a=1","enableEquations":[]}]})",  // given, and not split
       R"({"outputs":[{"enableEquations":[],"enableText":"a=1"}]})"},
      {R"({"input":{"plcNodes":[{"varNames":["a","b"]},{"varNames":["a"],"driver":{"variableCount":0}}]}})",
       R"({"input":{"plcNodes":[{"varNames":["a","b"],"driver":{"variableCount":2}},
{"varNames":["a"],"driver":{"variableCount":0}}]}})"},
      {R"({"plcWrite":{"nodes":[{"driver":{"text1":"x"},"varNames":["a"],"scaler":[{}]}]}})",
       R"({"plcWrite":{"nodes":[{"driver":{"text1":"x","variableCount":1},"varNames":["a"],
"scaler":[{"varName":"","scale":1,"clamping":0,"lowLimit":0,"highLimit":0}]}],"disableWriting":0}})"},
  };
  for (const auto& [brief, full] : kCases) {
    CConfiguration a = Parsed(brief), b = Parsed(full);
    EXPECT_EQ(Json(a), Json(b)) << brief;
  }
}

TEST(ConfigurationJson, AcceptsTheseAsWholeNumbers) {
  CConfiguration configuration = Parsed(
      R"({"input":{"scanPeriod":4294967295.0,"simulating":-1,"preprocess":4294967295,"autoStart":true,
"asFastAsPossible":2.0,"plcNodes":[{"driver":{"station":-2147483648,"timeOut":2e3,"value1":-0.0}}]}})");
  const CInputConfig& input = configuration.m_input;
  EXPECT_EQ(input.m_scanPeriod, 4294967295u);
  EXPECT_EQ(input.m_simulating, -1);
  EXPECT_EQ(input.m_preprocess, -1);
  EXPECT_EQ(input.m_autoStart, 1);
  EXPECT_EQ(input.m_asFastAsPossible, 2);
  EXPECT_EQ(input.m_plcNodes.GetHead()->m_driver.station, -2147483647 - 1);
  EXPECT_EQ(input.m_plcNodes.GetHead()->m_driver.timeOut, 2000);
}

constexpr const char* kNeedsInt = "must be a whole number from -2147483648 to 2147483647";
constexpr const char* kNeedsUint = "must be a whole number from 0 to 4294967295";
constexpr const char* kNeedsFlag = "must be a whole number of 32 bits, true or false";
constexpr const char* kNeedsFloat = "must be a number within the range of a float";

std::string Repeated(std::string_view text, std::size_t times) {
  std::string all;
  while (times-- > 0) all += text;
  return all;
}

TEST(ConfigurationJson, NamesTheKeyOfWhatItRefuses) {
  const struct {
    std::string text, path;
    const char* words;
  } kFaults[] = {
      {R"({"outputs":[{},{"maxLogs":-1}]})", "outputs[1].maxLogs: ", kNeedsUint},
      {R"({"outputs":[{"maxLogs":4294967296}]})", "outputs[0].maxLogs: ", kNeedsUint},
      {R"({"outputs":[{"maxLogs":1.5}]})", "outputs[0].maxLogs: ", kNeedsUint},
      {R"({"outputs":[{"maxLogs":true}]})", "outputs[0].maxLogs: ", kNeedsUint},
      {R"({"outputs":[{"maxLogs":"4"}]})", "outputs[0].maxLogs: ", kNeedsUint},
      {R"({"outputs":[{"maxLogs":null}]})", "outputs[0].maxLogs: ", kNeedsUint},
      {R"({"outputs":[{"maxLogs":99999999999999999999999}]})", "outputs[0].maxLogs: ", kNeedsUint},
      {R"({"outputs":[{"maxLogs":1e999}]})", "outputs[0].maxLogs: ", "the number is too large"},
      {R"({"outputs":[{"saveRp":4294967296}]})", "outputs[0].saveRp: ", kNeedsFlag},
      {R"({"outputs":[{"saveRp":-2147483649}]})", "outputs[0].saveRp: ", kNeedsFlag},
      {R"({"outputs":[{"saveRp":0.5}]})", "outputs[0].saveRp: ", kNeedsFlag},
      {R"({"outputs":[{"directory":[]}]})", "outputs[0].directory: ", "must be a text"},
      {R"({"outputs":[{"varNames":"a"}]})", "outputs[0].varNames: ", "must be an array of texts"},
      {R"({"outputs":[{"varNames":["a",1]}]})", "outputs[0].varNames[1]: ", "must be a text"},
      {R"({"outputs":{}})", "outputs: ", "must be an array of objects"},
      {R"({"outputs":[)" + Repeated("{},", 100000) + "{}]}", "outputs: ", "has more than 100000 entries"},
      {R"({"outputs":[)" + Repeated("0,", 1000000) + "0]}", "outputs[999998]: ", "is one value too many"},
      {R"({"outputs":[[]]})", "outputs[0]: ", "must be an object"},
      {R"({"outputs":[{"maxSummaries":1}]})", "outputs[0].maxSummaries: ", "no such key"},
      {R"({"outputs":[{"name":"a","name":"a"}]})", "outputs[0].name: ", "is a duplicate key"},
      {R"({"input":{},"input":{}})", "input: ", "is a duplicate key"},
      {R"({"input":{"plcNodes":[{"driver":[]}]}})", "input.plcNodes[0].driver: ", "must be an object"},
      {R"({"input":{"plcNodes":[{"driver":{"station":2147483648}}]}})",
       "input.plcNodes[0].driver.station: ", kNeedsInt},
      {R"({"input":{"plcNodes":[{"driver":{"variableCount":-1}}]}})",
       "input.plcNodes[0].driver.variableCount: ", kNeedsUint},
      {R"({"input":{"plcNodes":[{"scaler":[{"scale":1e39}]}]}})",
       "input.plcNodes[0].scaler[0].scale: ", kNeedsFloat},
      {R"({"input":{"plcNodes":[{"scaler":[{"scale":false}]}]}})",
       "input.plcNodes[0].scaler[0].scale: ", kNeedsFloat},
      {R"({"plcWrite":{"nodeNumber":1}})", "plcWrite.nodeNumber: ", "no such key"},
      {R"({"plcWrite":{"nodes":[{"a\nb":1}]}})", "plcWrite.nodes[0].a?b: ", "no such key"},
      {R"({"m_input":{}})", "m_input: ", "no such key"},
      {R"({"version":1004})", "version: ", "must be 1002 or 1003"},
      {R"({"version":"1003"})", "version: ", kNeedsUint},
      {R"({"trend":{"baseVars":["a\u0000b"]}})", "trend.baseVars[0]: ", "must not hold U+0000"},
      {R"({"trend":{"baseVars":["a",[["b\u0000"]]]}})", "trend.baseVars[1][0][0]: ", "must not hold U+0000"},
      {"{\"" + std::string(100, 'k') + "\":1}", std::string(60, 'k') + "...: ", "no such key"},
      {"[]", "", "must be an object"},
      {std::string(1000000, '['), Repeated("[0]", 32) + ": ", "nested too deeply"},
  };
  for (const auto& row : kFaults)
    EXPECT_EQ(Fault(row.text).Std(), row.path + row.words) << row.text.substr(0, 200);
}

TEST(ConfigurationJson, ReportsWhereTheSyntaxIsWrong) {
  const std::pair<std::string, const char*> kFaults[] = {
      {"{",
       "no valid JSON, line 1, column 2: syntax error while parsing object key - unexpected end of input; "
       "expected string literal"},
      {"{}\n}",
       "no valid JSON, line 2, column 1: syntax error while parsing value - unexpected '}'; expected end of "
       "input"},
      {"{\"a\":\n'b'}",
       "no valid JSON, line 2, column 1: syntax error while parsing value - invalid literal"},
      {"{\"input\":{\"preEquationText\":\"\xFF" + std::string(5000, 'x') + "\"}}",
       "no valid JSON, line 1, column 30: syntax error while parsing value - invalid string: ill-formed "
       "UTF-8 byte"},
      {R"({"a":"\ud800"})",
       "no valid JSON, line 1, column 13: syntax error while parsing value - invalid string: surrogate "
       "U+D800..U+DBFF must be followed by U+DC00..U+DFFF"},
  };
  for (const auto& [text, fault] : kFaults) EXPECT_EQ(Fault(text), fault) << text.substr(0, 100);
}

TEST(ConfigurationJson, KeepsEveryFloat) {
  CConfiguration configuration = Parsed(R"({"plcWrite":{"nodes":[{"scaler":[{}]}]}})");
  const auto scale = [&]() -> float& {
    return configuration.m_plcWrite.m_nodes.GetHead()->m_node.m_scaler.m_nodes[0].m_scale;
  };
  for (std::uint64_t bits = 0; bits <= 0xFFFFFFFF; bits += 0xFFFFF1) {
    const auto number = std::bit_cast<float>(static_cast<UINT>(bits));
    if (number != number) continue;
    scale() = number;
    configuration = Parsed(Json(configuration));
    EXPECT_EQ(std::bit_cast<UINT>(scale()), bits);
  }
  const std::pair<float, const char*> kTexts[] = {
      {0.1f, "\"scale\": 0.1,"},          {3.4028235e38f, "\"scale\": 3.4028235e+38,"},
      {-0.0f, "\"scale\": -0.0,"},        {1e-45f, "\"scale\": 1e-45,"},
      {HUGE_VALF, "\"scale\": \"inf\","}, {-HUGE_VALF, "\"scale\": \"-inf\","},
      {NAN, "\"scale\": \"nan\","},
  };
  for (const auto& [number, text] : kTexts) {
    scale() = number;
    EXPECT_NE(Json(configuration).find(text), std::string::npos) << text;
    configuration = Parsed(Json(configuration));
    EXPECT_EQ(std::bit_cast<UINT>(scale()), std::bit_cast<UINT>(number));
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
            "plcWrite.nodes[0].scaler[0].lowLimit: a NaN with bits of its own has no JSON form");
  EXPECT_EQ(text, "before");
}

TEST(ConfigurationJson, ReadsTheExampleOfItsPage) {
  const std::string page = ReadBytes(VASTRA_DOCS "/file-formats.md");
  const std::size_t start = page.find("```json\n") + 8;
  CConfiguration configuration = Parsed(page.substr(start, page.find("```", start) - start));
  ASSERT_EQ(configuration.m_outputs.m_outputs.GetCount(), 1);
  const COutputConfig& output = *configuration.m_outputs.m_outputs.GetHead();
  EXPECT_EQ(output.m_directory, "/f/logs");
  EXPECT_EQ(output.m_enableEquations.GetSize(), 3);
  EXPECT_EQ(configuration.m_input.m_plcNodes.GetHead()->m_driver.variableCount, 2u);
}

}  // namespace
}  // namespace vastra
