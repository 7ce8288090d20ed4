// Chains and lists of configurations by their pictures.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tests/support/test_link.h"
#include "vastra/core/concat_link.h"
#include "vastra/core/mapper_link.h"
#include "vastra/core/namer_link.h"
#include "vastra/core/scaler_link.h"

namespace vastra {

// A chain such as "C(N(T),T)": C concat, M mapper, N namer, S scaler, T a leaf of the tests, t one without
// names. Links are called by their letter, leaves T1, T2 ... from left to right.
class CPicture {
 public:
  explicit CPicture(const char* picture) : m_head(Build(picture)) {}

  std::vector<CTestLink*> m_leaves;
  std::unique_ptr<CLink> m_head;  // behind the leaves, which building it notes

 private:
  CLink* Build(const char*& at) {
    const char letter = *at++;
    CLink* link = letter == 'T' || letter == 't' ? Leaf(letter == 't') : Inner(letter, at);
    if (letter != 'T' && letter != 't') link->m_name = CString(letter);
    return link;
  }
  CLink* Leaf(bool nameless) {
    auto* leaf = new CTestLink;
    m_leaves.push_back(leaf);
    leaf->m_name.Format("T%d", static_cast<int>(m_leaves.size()));
    leaf->m_nameless = nameless;
    return leaf;
  }
  CLink* Inner(char letter, const char*& at) {
    CLink* first = Build(++at);
    CLink* second = letter == 'C' ? Build(++at) : nullptr;
    ++at;  // the closing bracket
    switch (letter) {
      case 'C':
        return CConcatLink::Create(first, second);
      case 'M':
        return CMapperLink::Create(first);
      case 'N':
        return CNamerLink::Create(first);
      default:
        return CScalerLink::Create(first);
    }
  }
};

inline CStringArray Names(const std::string& letters) {
  CStringArray names;
  for (const char letter : letters) names.Add(CString(letter));
  return names;
}

// One configuration: "C1" concat with its count, "Nab" the names a and b, "Tab" the same for a leaf, "S" no
// rules, "0" null, "X" a class that no link wants.
inline CLinkConfig* Config(const std::string& word) {
  class CWrong : public CLinkConfig {};
  if (word[0] == '0') return nullptr;
  if (word[0] == 'S') return new CScalerConfig;
  if (word[0] == 'C') {
    auto* concat = new CConcatConfig;
    concat->m_firstCount = std::stoi(word.substr(1));
    return concat;
  }
  if (word[0] == 'N') {
    auto* names = new CNameConfig;
    names->m_names = Names(word.substr(1));
    return names;
  }
  if (word[0] != 'T') return new CWrong;
  auto* leaf = new CTestConfig;
  leaf->m_names = Names(word.substr(1));
  return leaf;
}

// Words with a blank between them, outermost configuration first.
inline void Fill(CLinkConfigList& configs, const std::string& words) {
  for (std::size_t at = 0; at < words.size();
       at = words.find(' ', at) == std::string::npos ? words.size() : words.find(' ', at) + 1)
    configs.AddTail(Config(words.substr(at, words.find(' ', at) - at)));
}

inline int Open(CLink& link, const std::string& words, UINT mode = CLink::modeRead) {
  CLinkConfigList configs;
  Fill(configs, words);
  return link.Open(configs, mode);
}

}  // namespace vastra
