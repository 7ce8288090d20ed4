// From the text of an editor to statements, from a statement to tokens and lines of code.
#include "vastra/equations/separator.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <iterator>

#include "vastra/equations/parser.h"

namespace vastra {
namespace {

struct CTextCase {
  const char *text, *equations, *variables, *positions;  // each entry with its "|"
};
const CTextCase kTexts[] = {
    {"", "", "", "0|"},
    {" \r\n", "", "", "0|"},
    {"a=1", "a=1|", "a|", "0|"},
    {"a=1;", "a=1|", "a|", "0|4|"},
    {"a=1; b = 2 ;\r\n", "a=1| b = 2 |", "a|b|", "0|4|12|"},
    {"a=1 \r\n", "a=1|", "a|", "0|"},
    {" ; ", " |", "", "0|2|"},
    {"z = 1;;", "z = 1||", "z|", "0|6|7|"},
    {"x\r\ny \r\n z\t= 1", "x\r\ny \r\n z\t= 1|", "z|", "0|"},
    {"a b\nc=1", "a b\nc=1|", "c|", "0|"},
    {"a\nb c=1", "a\nb c=1|", "c|", "0|"},
    {"a\tb=1", "a\tb=1|", "a\tb|", "0|"},
    {" = 1", " = 1|", "|", "0|"},
    {"a == b = 1", "a == b = 1|", "a|", "0|"},
    {"/* note */ x = 1", "/* note */ x = 1|", "x|", "0|"},
    {"y /* comment */ = 1", "y /* comment */ = 1|", "*/|", "0|"},
    {"a=1; /* end */", "a=1| /* end */|", "a|", "0|4|"},
    {"/* a; b=2 */ c = 3", "/* a| b=2 */ c = 3|", "b|", "0|5|"},
    {"/** note **/ x = 1; /* more */ y = 2;", "/** note **/ x = 1| /* more */ y = 2|", "x|y|", "0|19|37|"},
};

std::string Join(const CStringArray& array) {
  std::string all;
  for (const CString& text : array) all += text.Std() + "|";
  return all;
}

TEST(EquationSeparator, CutsAtEverySemicolonAndFindsTheNames) {
  for (const CTextCase& c : kTexts) {
    CStringArray equations, variables;
    CArray<int, int> positions;
    EXPECT_EQ(1, CEquationSeparator().Separate(c.text, equations, variables, positions));
    std::string places;
    for (const int place : positions) places += std::to_string(place) + "|";
    EXPECT_EQ(c.equations, Join(equations)) << c.text;
    EXPECT_EQ(c.variables, Join(variables)) << c.text;
    EXPECT_EQ(c.positions, places) << c.text;
    CEquationSeparator().Separate("n=1", equations, variables, positions);
    EXPECT_EQ(std::string(c.equations) + "n=1|", Join(equations)) << "not appended";
    EXPECT_EQ(std::string(c.variables) + "n|", Join(variables)) << "not appended";
  }
}

constexpr int kAccepted = -1;
struct CFaultCase {
  const char* statement;
  int offset;
};
const CFaultCase kFaults[] = {
    // a and b are known
    // where a statement goes wrong
    {"", 0},
    {"   ", 3},
    {";", 0},
    {"y", 1},
    {"y =", 3},
    {"y = ;", 4},
    {"1 = a", 0},
    {"y + 1 = a", 2},
    {"y = 1 2", 6},
    {"y = (a", 6},
    {"y = a)", 5},
    {"y = ()", 5},
    {"y = +a", 4},
    {"y = -~!a", kAccepted},
    {"y = a ! b", 6},
    {"y = a, b", 5},
    {"y = a : b", 6},
    {"y = a ? b", 9},
    {"y = a ? b : ", 12},
    {"y = a < b < a", 10},
    {"y = (a < b) < a", kAccepted},
    {"y = a == b == a", kAccepted},
    {"y = if(a, b)", 11},
    {"y = if(a < b, a == b, a ? 1 : 2)", kAccepted},
    {"y = if a then b else 1", 7},
    {"y = abs(a < b)", 10},
    {"y = abs((a < b))", kAccepted},
    {"y = pow(a)", 9},
    {"y = pow(a, b, 1)", 12},
    {"y = rand(1)", 9},
    {"y = sin()", 8},
    {"y = sin a", 8},
    {"y = 1; ) nonsense", kAccepted},
    // names and keywords
    {"y = x", 4},
    {"y = y + 1", kAccepted},
    {"y = a + nope * 2", 8},
    {"y = A", 4},
    {"y = ABS(a)", 4},
    {"y = then", 4},
    {"if = 1", 0},
    {"else = 1", 0},
    {"rand = 1", 0},
    {"iffy = a", kAccepted},
    {"abs2 = 1", kAccepted},
    {"then_x = 1", kAccepted},
    {"a_1b_2 = 2", kAccepted},
    {"_y = 1", 0},
    {"y_ = 1", 1},
    {"y = a_", 5},
    {"y = a__b", 5},
    {"y = ab", 4},
    {"2y = 1", 0},
    // numbers
    {"y = 1.5E-3 + 12 + 12.5 + 1e5 + 2e+12", kAccepted},
    {"y = .5", 4},
    {"y = 1.", 5},
    {"y = 1.5.2", 7},
    {"y = 1.e5", 5},
    {"y = 1e", 5},
    {"y = 1e+", 5},
    {"y = 1e123", 8},
    {"y = 1e1.5", 7},
    {"y = 12ab", 6},
    // operators
    {"y == 1", 2},
    {"y = a = b", 6},
    {"y = a => b", 6},
    {"y = a <= = b", 9},
    {"y = a &&& b", 8},
    {"y=a&&b||a&b|a^b<=a+-b", kAccepted},
    {"y=a!=!b", kAccepted},
    {"y = a <> b", 7},
    // bytes of no token
    {"y = \x80", 4},
    {"\xE9 = 1", 0},
    {"y = a # b", 6},
    {"y = 'a'", 4},
    {"y =\f1", 3},
    {"y = a\xFF", 5},
    {"\t y\r\n=\n1", kAccepted},
    // comments: the number of stars in front of the slash decides
    {"/* note */ y = nope", 15},
    {"y = 1 /**/", kAccepted},
    {"y = 1 /* a", 7},
    {"y = 1 /* a *", 7},
    {"y = 1 /*/", 7},
    {"y = 1 /* a **", 7},
    {"y = 1 /***/", kAccepted},
    {"y = 1 /***/ b", 12},
    {"y = 1 /***/ b */", kAccepted},
    {"y = 1 /****/ b */", 13},
    {"y = 1 /* a **/ b", 15},
    {"y = 1 /* a **/ b *", 15},
    {"y = 1 /* a **/ b /* c **/ a", 26},
    {"y = 1 /* ** x */ b", 17},
    {"y = 1 /* a\n\r */ b", 16},
    {"y = 1 / /* x */ b", kAccepted},
    {"y = 1 // note", 7},
    {"y = 1 // note\n", kAccepted},
    {"y = 1 // note\r", kAccepted},
    {"y = 1 // a\r b", 12},
    {"y = 1 // a\r b\r a", 15},
    {"y = 1 // a\r b\n", kAccepted},
    {"y = 1 // a\n b", 12},
    {"y = 1 // a\n b\n", 12},
    {"// x = 2\r\ny = b", kAccepted},
};

TEST(EquationParser, FaultsAreFoundWhereTheBadTokenStarts) {
  CParser parser;
  for (const CFaultCase& c : kFaults) {
    CStringArray names;
    names.Add("a");
    names.Add("b");
    CLineCodeList code;
    EXPECT_EQ(c.offset == kAccepted, parser.Parse(c.statement, &code, &names)) << c.statement;
    if (c.offset != kAccepted) {
      EXPECT_EQ(c.offset, parser.GetLastError()) << c.statement;
    }
  }
  CStringArray names;
  CLineCodeList code;
  EXPECT_EQ(0, parser.Parse(CString("y = 1\0", 6), &code, &names)) << "a zero byte ended the statement";
  EXPECT_EQ(5, parser.GetLastError());
  EXPECT_EQ(0, parser.Parse("y = 1", nullptr, &names));
  EXPECT_EQ(0, parser.Parse("y = 1", &code, nullptr));
  EXPECT_EQ(5, parser.GetLastError()) << "a call without a parse is no failed parse";
}

TEST(EquationParser, DeepNestingIsAFaultAndNoCrash) {
  CParser parser;
  for (const char* open : {"(", "-", "1+", "a?", "if(", "sin(", "1==", "1?1:"}) {
    std::string many;
    for (int i = 0; i < 200000; ++i) many += open;
    CStringArray names;
    names.Add("a");
    CLineCodeList code;
    EXPECT_EQ(0, parser.Parse(CString("y = " + many + "1"), &code, &names)) << open;
    EXPECT_GT(parser.GetLastError(), 1000) << open;
    EXPECT_LT(parser.GetLastError(), 50000) << open;
    CLineCodeList next;
    EXPECT_EQ(1, parser.Parse("z = (a - 1) * 2", &next, &names)) << "behind " << open;
    EXPECT_EQ(2, next.GetCount()) << "behind " << open;
  }
  CStringArray names;
  CLineCodeList code;
  EXPECT_EQ(1, parser.Parse(CString("y = " + std::string(2000, '(') + "1" + std::string(2000, ')')), &code,
                            &names));
}

struct CCodeCase {
  const char *statement, *code;
};
const CCodeCase kCodes[] = {
    // a, b and c are -2, -3 and -4; a new variable is -5
    {"y = 5", "269 5 0"},
    {"y = 1.5E-3", "269 0.0015 0"},
    {"y = 007.50e+2", "269 750 0"},
    {"y = a", "269 -2 0"},
    {"y = y + 1", "269 1 -5"},
    {"y = -a", "270 -2 0"},
    {"y = --a", "270 -2 0|270 -1 0"},
    {"y = a - -b", "270 -3 0|270 -1 -2"},
    {"y = -a * b", "270 -2 0|271 -3 -1"},
    {"y = ~abs(a)", "285 -2 0|283 -1 0"},
    {"y = !a", "284 -2 0"},
    {"z = a + b * 2 - 1", "271 2 -3|269 -1 -2|270 1 -1"},
    {"y = a - b - c", "270 -3 -2|270 -4 -1"},
    {"y = a / b % c * 2", "272 -3 -2|273 -4 -1|271 2 -1"},
    {"y = a - (b - c)", "270 -4 -3|270 -1 -2"},
    {"y = (a) - (b)", "269 -2 0|269 -3 0|270 -1 -1"},
    {"y = (1 + 2) * rand()", "269 2 1|291 0 0|271 -1 -1"},
    {"y = 5 + rand()", "291 0 0|269 -1 5"},
    {"y = pow(a + 1, 3)", "269 1 -2|293 3 -1"},
    {"y = a < b + 1", "269 1 -3|274 -1 -2"},
    {"y = a >= b", "277 -3 -2"},
    {"y = a == b || c", "269 -2 0|269 -4 0|268 -1 -3|278 -1 -1"},
    {"y = a == b != c", "269 -2 0|269 -3 0|269 -4 0|279 -1 -1|278 -1 -1"},
    {"y = a && b && c", "267 -3 -2|267 -4 -1"},
    {"y = a & b | c ^ a", "264 -3 -2|265 -2 -4|266 -1 -1"},
    {"y = a > 0 ? b : c", "275 0 -2|1002 -1 0 ->3|269 -3 0|1003 0 0 ->4|269 -4 0"},
    {"y = 2 * if(a, b, c) + 1", "269 -2 0|1002 -1 0 ->3|269 -3 0|1003 0 0 ->4|269 -4 0|271 -1 2|269 1 -1"},
    {"y = a ? b : c ? a : b",
     "269 -2 0|1002 -1 0 ->3|269 -3 0|1003 0 0 ->8|269 -4 0|1002 -1 0 ->7|269 -2 0|1003 0 0 ->8|269 -3 0"},
    {"y = 7; z = nope", "269 7 0"},
    {"/** note **/ x = 1; /* more */ y = 2;", "269 2 0"},
};

std::string Show(const CLineCodeList& code) {
  std::string all;
  for (const CFlatLine& line : FlatLines(code)) {
    char text[100];
    std::snprintf(text, sizeof text, "%s%d %g %g", all.empty() ? "" : "|", line.code, line.op1, line.op2);
    all += text;
    if (line.jump >= 0) all += " ->" + std::to_string(line.jump);
  }
  return all;
}

TEST(EquationParser, StatementsBecomeTheseLines) {
  CParser parser;
  for (const CCodeCase& c : kCodes) {
    CStringArray names;
    for (const char* name : {"a", "b", "c"}) names.Add(name);
    CLineCodeList code;
    EXPECT_EQ(1, parser.Parse(c.statement, &code, &names)) << c.statement;
    EXPECT_EQ(c.code, Show(code)) << c.statement;
    EXPECT_EQ(4, names.GetSize()) << c.statement;
  }
}

TEST(EquationParser, AFaultyStatementHasEnteredItsName) {
  struct {
    const char *statement, *names;
  } const kCases[] = {
      {"new = nope", "a|new|"}, {"new", "a|new|"}, {"a = nope", "a|"}, {"1 = new", "a|"}, {"= 1", "a|"}};
  for (const auto& c : kCases) {
    CStringArray names;
    names.Add("a");
    CLineCodeList code;
    EXPECT_EQ(0, CParser().Parse(c.statement, &code, &names)) << c.statement;
    EXPECT_EQ(c.names, Join(names)) << c.statement;
  }
}

}  // namespace
}  // namespace vastra
