// What the tests of stages share: names and samples from short text, and the content of the logs as text.
#pragma once

#include <algorithm>
#include <regex>
#include <sstream>

#include "tests/logfiles/link_fixture.h"
#include "vastra/config/plc_node_config.h"
#include "vastra/platform/message.h"

namespace vastra {

constexpr int kSimulator = 9001, kNoDriver = 1;  // types of driver
constexpr UINT kMessage = 77;

// Blanks separate names, semicolons separate equations.
inline CStringArray Split(const std::string& text, char divider = ' ') {
  CStringArray parts;
  std::istringstream all(text);
  for (std::string part; std::getline(all, part, divider);) parts.Add(CString(part));
  return parts;
}
inline std::string Join(const CStringArray& names) {
  std::string all;
  for (const CString& name : names) all += (all.empty() ? "" : " ") + name.Std();
  return all;
}

inline std::string Values(const auto& values) {
  CStringArray texts;
  for (const float value : values) texts.Add(CString(std::to_string(static_cast<int>(value))));
  return Join(texts);
}

// A node of the simulator. scale, if not 0, is that of its first variable; each second call may time out.
inline void SetNode(CPlcNodeConfig& node, const char* names, float scale = 0, bool fails = false) {
  node.m_varNames = Split(names);
  node.m_driver.plcType = kSimulator;
  node.m_driver.variableCount = static_cast<UINT>(node.m_varNames.GetSize());
  if (fails) node.m_driver.value4 = 2, node.m_driver.value5 = statusTimeout;
  CScalerConfigNode rule;
  rule.m_varName = node.m_varNames[0];
  rule.m_scale = scale;
  if (scale != 0) node.m_scaler.m_nodes.Add(rule);
}

template <class Stage>
class CStageFixture : public CLogFixture {
 protected:
  ~CStageFixture() override { ExpectBalance(); }
  auto& Options() { return *m_stage.GetOptions(); }
  int Open(const char* names = "x") {
    CStringArray given = Split(names);
    return m_stage.Open(given);
  }
  int Write(std::initializer_list<float> values, std::int32_t time = kStart) {
    CLogSample sample = Sample(time, values);
    const int written = m_stage.Write(sample);
    ExpectBalance();
    return written;
  }
  // The account of each log of the stage agrees with itself.
  void ExpectBalance() const {
    if constexpr (requires { m_stage.GetLedgers(); }) {
      for (const CLogLedger& ledger : m_stage.GetLedgers()) EXPECT_TRUE(ledger.IsBalanced());
    }
  }
  std::string WriteThree() {
    std::string results;
    for (const float x : {1.0f, 2.0f, 3.0f}) results += std::to_string(Write({x}));
    return results;
  }
  // Adds an output or a summary that writes x to CSV logs in a directory.
  template <class Config>
  Config& Add(COwnedList<Config>& configs, const char* enable, const char* directory) {
    auto* config = new Config;
    config->m_enableEquations = Split(enable, ';');
    config->m_varNames = Split("x");
    config->m_saveCsv = 1;
    config->m_directory = m_dir / directory;
    std::filesystem::create_directory(config->m_directory.Std());
    configs.AddTail(config);
    return *config;
  }
  // The CSV logs in the directories, each with number and rows: "00: 1/5 2/7|01: 3/8|".
  std::string Logs(const std::string& directories = "0") {
    static const std::regex kRow(R"([^,]*,([^\n]*),\n)"), kFraction(R"(\.\d*)");
    std::string all;
    for (const CString& directory : Split(directories))
      for (const CFileEntry& file : ListFiles(m_dir / directory, ".csv")) {
        std::string rows = ReadBytes(m_dir / directory + "/" + file.m_name);
        rows = std::regex_replace(rows.substr(rows.find('\n') + 1), kRow, " $1");
        std::replace(rows.begin(), rows.end(), ',', '/');
        all += file.m_name.Right(7).Left(2).Std() + ":" + std::regex_replace(rows, kFraction, "") + "|";
      }
    return all;
  }
  std::string Given() {
    CStringArray names;
    return m_stage.GetVarNames(names) ? Join(names) : "none";
  }
  std::string Read() { return m_stage.Read(m_sample) ? Values(m_sample.m_values) : "failed"; }
  // The result that a worker posts, or -1 if it posts none.
  int Posted(int milliseconds = 10000) {
    CMessage message;
    if (!m_queue.Wait(message, milliseconds)) return -1;
    EXPECT_EQ(message.m_message, kMessage);
    EXPECT_EQ(message.m_lparam, 0);
    return static_cast<int>(message.m_wparam);
  }

  CMessageQueue m_queue;
  CLogSample m_sample;
  Stage m_stage;
};

}  // namespace vastra
