// What an editor of equations shows while the user types: the kinds of words, the words that fit, the fault,
// and the values on a sample.
#pragma once

#include <string_view>
#include <vector>

#include "vastra/equations/equator.h"

namespace vastra {

enum class EEquationToken { name, function, number, comment, other };

struct CEquationToken {
  EEquationToken kind;
  std::size_t begin, length;
};

// The tokens of a line of equations, without white space. isInComment: at its begin and then at its end. CHAR
// is char or char16_t.
template <class CHAR>
std::vector<CEquationToken> EquationTokens(std::basic_string_view<CHAR> line, bool& isInComment);

// The functions of the language and "if".
const CStringArray& EquationFunctions();
// The words that begin with begin, in any case, in the order of the arguments; a function ends with "(".
CStringArray CompletionsOf(const CString& begin, const CStringArray& names);

struct CEquationTextFault {
  int offset = -1;  // of the bad token in the text, bytes; below 0: there is no fault
  int length = 0;   // at least 1, unless the text ends there
  CString message;  // "equation 2: there is no variable ..."
};

// A text of equations that is tried on one sample after the other.
class CEquationTrial {
 public:
  // Compiles text for samples with names. After a fault the former program stays. areNamesKnown false: a name
  // that nothing assigns is not a fault, but there is no program then.
  CEquationTextFault Compile(const CString& text, const CStringArray& names, bool areNamesKnown);

  // The variables of the sample that the text reads, in the order of names.
  const CStringArray& Read() const { return m_read; }
  // Runs the program on a sample in which these have values, all others are 0.
  void Run(const std::vector<float>& values);

  // The assigned variables after the last Run.
  struct CResult {
    CString name;
    float value = 0;
    bool isUndefined = false;
  };
  std::vector<CResult> Results() const;

 private:
  void FindRead(const CString& text);

  CEquator m_equator;
  CStringArray m_names, m_read;
  CArray<float, float> m_sample;
};

}  // namespace vastra
