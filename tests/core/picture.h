// Chains of links and lists of configurations, written as short strings.
#pragma once

#include <cstdio>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/test_link.h"
#include "vastra/core/concat_link.h"
#include "vastra/core/mapper_link.h"
#include "vastra/core/namer_link.h"
#include "vastra/core/scaler_link.h"

namespace vastra {

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
    CLink* second = letter == 'C' ? Build(++at) : nullptr;
    ++at;  // the closing bracket
    CLink* link = nullptr;
    if (letter == 'C') link = CConcatLink::Create(first, second);
    if (letter == 'M') link = CMapperLink::Create(first);
    if (letter == 'N') link = CNamerLink::Create(first);
    if (letter == 'S') link = CScalerLink::Create(first);
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
  if (word[0] == 'C') {
    auto* concat = new CConcatConfig;
    concat->m_firstCount = std::stoi(word.substr(1));
    return concat;
  }
  const auto named = [&](auto* config) {
    config->m_names = Names(word.substr(1));
    return config;
  };
  if (word[0] == 'N') return named(new CNameConfig);
  if (word[0] == 'T') return named(new CTestConfig);
  return new CWrong;
}

// Words with a blank between them, outermost configuration first.
inline void Fill(CLinkConfigList& configs, const std::string& words) {
  std::istringstream stream(words);
  for (std::string word; stream >> word;) configs.AddTail(Config(word));
}

inline int Open(CLink& link, const std::string& words, UINT mode = CLink::modeRead) {
  CLinkConfigList configs;
  Fill(configs, words);
  return link.Open(configs, mode);
}

}  // namespace vastra
