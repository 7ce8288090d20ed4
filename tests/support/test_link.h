// CTestLink: a leaf link for tests. It has the names of its configuration, reads and writes m_sample, and
// fails on request. CPicture: a chain on such leaves, written as a short string like its configurations.
#pragma once

#include <cstdio>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "vastra/core/concat_link.h"
#include "vastra/core/mapper_link.h"
#include "vastra/core/namer_link.h"
#include "vastra/core/scaler_link.h"

namespace vastra {

class CTestConfig : public CLinkConfig {
  DECLARE_DYNAMIC(CTestConfig)
 public:
  CStringArray m_names;
};
inline IMPLEMENT_DYNCREATE(CTestConfig, CLinkConfig);

class CTestLink : public CLink {
 public:
  CTestLink() : CLink(kTypeName) {}
  ~CTestLink() override { CTestLink::Close(); }

  int Write(CLogSample& sample) override {
    Begin(functionWrite);
    if (m_fails) return Fail(functionWrite, kTimeout);
    m_sample = sample;
    return End(functionWrite);
  }
  int Read(CLogSample& sample) override {
    Begin(functionRead);
    if (m_fails) return Fail(functionRead, kTimeout);
    sample = m_sample;
    return End(functionRead);
  }
  int GetVarNames(CStringArray& names) override {
    return m_nameless ? Fail(functionGetVarNames, kTimeout) : GiveVarNames(m_names, names);
  }
  void Close() override {
    Begin(functionClose);
    m_mode = modeNotOpened;
    End(functionClose);
  }
  int Open(CTypedPtrList<CObList, CLinkConfig*>& configs, UINT mode) override {
    BeginOpen();
    const auto config = TakeConfig(configs, RUNTIME_CLASS(CTestConfig), fault::badConfig);
    if (!config) return 0;
    m_names = static_cast<CTestConfig&>(*config).m_names;
    m_mode = mode;
    return End(functionOpen);
  }

  CLogSample m_sample;      // Read copies from it, Write copies to it
  bool m_fails = false;     // Read and Write fail
  bool m_nameless = false;  // GetVarNames fails

 private:
  inline static const CString kTypeName = "CTestLink";
  static constexpr CFault kTimeout = {severityError, "Timeout error."};

  CStringArray m_names;
};

// A chain such as "C(N(T),T)": C concat, M mapper, N namer, S scaler, T a test leaf, t a leaf whose names
// cannot be read. The name of a link is its letter; the leaves are T1, T2 ... from left to right.
class CPicture {
 public:
  explicit CPicture(const char* picture) : m_head(Build(picture)) {}

  std::vector<CTestLink*> m_leaves;
  std::unique_ptr<CLink> m_head;  // after m_leaves, which Build fills

 private:
  CLink* Build(const char*& at) {
    const char letter = *at++;
    if (letter == 'T' || letter == 't') return Leaf(letter == 't');
    CLink* first = Build(++at);
    CLink* link = nullptr;
    if (letter == 'C') link = CConcatLink::Create(first, Build(++at));
    if (letter == 'M') link = CMapperLink::Create(first);
    if (letter == 'N') link = CNamerLink::Create(first);
    if (letter == 'S') link = CScalerLink::Create(first);
    ++at;  // the closing bracket
    link->m_name = CString(letter);
    return link;
  }
  CLink* Leaf(bool nameless) {
    auto* leaf = new CTestLink;
    m_leaves.push_back(leaf);
    leaf->m_name.Format("T%d", static_cast<int>(m_leaves.size()));
    leaf->m_nameless = nameless;
    return leaf;
  }
};

inline std::vector<float> Values(const CLogSample& sample) {
  return {sample.m_values.begin(), sample.m_values.end()};
}

inline void Set(CLogSample& sample, const std::vector<float>& values, const _timeb& time) {
  sample.m_time = time;
  sample.m_values.RemoveAll();
  for (const float value : values) sample.m_values.Add(value);
}

inline CStringArray Names(const std::string& letters) {
  CStringArray names;
  for (const char letter : letters) names.Add(CString(letter));
  return names;
}

// One configuration: "C1" concat with its count, "Nab" the names a and b, "Tab" the same for a leaf, "0"
// null, "X" a class that no link accepts. "Sa,2,1,0,9;b,..." are rules of a scaler: name, scale, clamping,
// limits.
inline CLinkConfig* Config(const std::string& word) {
  class CWrong : public CLinkConfig {};
  if (word[0] == '0') return nullptr;
  if (word[0] == 'S') {
    auto* scaler = new CScalerConfig;
    std::istringstream rules(word.substr(1));
    for (std::string rule; std::getline(rules, rule, ';');) {
      CScalerConfigNode node;
      node.m_varName = CString(rule[0]);
      std::sscanf(rule.c_str() + 2, "%f,%d,%f,%f", &node.m_scale, &node.m_clamping, &node.m_lowLimit,
                  &node.m_highLimit);
      scaler->m_nodes.Add(node);
    }
    return scaler;
  }
  const auto with = [](auto* config, auto field, const auto& value) {
    config->*field = value;
    return config;
  };
  const std::string rest = word.substr(1);
  if (word[0] == 'C') return with(new CConcatConfig, &CConcatConfig::m_firstCount, std::stoi(rest));
  if (word[0] == 'N') return with(new CNameConfig, &CNameConfig::m_names, Names(rest));
  if (word[0] == 'T') return with(new CTestConfig, &CTestConfig::m_names, Names(rest));
  return new CWrong;
}

// Opens link with configurations as words, outermost first. Sets left to the number that Open leaves.
inline int Open(CLink& link, const std::string& words, UINT mode = CLink::modeRead, int* left = nullptr) {
  CLinkConfigList configs;
  std::istringstream stream(words);
  for (std::string word; stream >> word;) configs.AddTail(Config(word));
  const int opened = link.Open(configs, mode);
  if (left) *left = configs.GetCount();
  return opened;
}

}  // namespace vastra
