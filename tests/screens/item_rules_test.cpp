// What the dialogs of outputs and summaries check, without a window.
#include "vastra/screens/item_rules.h"

#include <gtest/gtest.h>

#include "tests/support/names.h"

namespace vastra {
namespace {

TEST(ItemRules, TheNameBasisIsCheckedByWhatItIs) {
  const char* const kPrefix =
      "WrongConfiguration!!\nYou selected to use a prefix, please type the prefix to be used";
  const char* const kMissing =
      "WrongConfiguration!!\nThe selected variable for the log names must be included in the logged "
      "variables";
  const struct {
    const char* basis;
    int usePrefix;
    const char *prefix, *fault;
  } kCases[] = {
      {"System Time", 0, "", nullptr},  {"System Time", 1, "", kPrefix},
      {"System Time", 1, "p", nullptr}, {"b", 1, "", nullptr},
      {"B", 0, "", kMissing},           {"", 0, "", kMissing},
      {"system time", 0, "", kMissing},
  };
  COutputConfig output;
  output.m_name = output.m_directory = "x";
  output.m_enableEquations = Names({"WriteToLog= 1"});
  output.m_varNames = Names({"a", "b"});
  for (const auto& c : kCases) {
    output.m_nameVariable = c.basis;
    output.m_usePrefix = c.usePrefix;
    output.m_prefix = c.prefix;
    EXPECT_STREQ(c.fault, FirstFault(output)) << c.basis << c.usePrefix;
  }
}

TEST(ItemRules, TheStoredBasisIsSelectedIfItCanBe) {
  const CStringArray known = Names({"temp", "Temp"});
  const struct {
    const CStringArray* names;
    const char* stored;
    int offered, selected;
  } kCases[] = {
      {&known, "", 3, 0},  {&known, "System Time", 3, 0},  {&known, "Temp", 3, 2},  {&known, "TEMP", 3, 0},
      {nullptr, "", 1, 0}, {nullptr, "System Time", 1, 0}, {nullptr, "Temp", 2, 1},
  };
  for (const auto& c : kCases) {
    const CNameBasis basis = NameBasis(c.names, c.stored);
    EXPECT_EQ(c.offered, basis.offered.GetSize()) << c.stored;
    EXPECT_EQ(c.selected, basis.selected) << c.stored;
  }
}

}  // namespace
}  // namespace vastra
