// From the text of an editor to statements, from a statement to tokens and lines of code.
#include "vastra/equations/separator.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <sstream>

#include "tests/support/names.h"
#include "vastra/equations/parser.h"

namespace vastra {
namespace {

const struct {
  const char *text, *equations, *variables, *positions;  // each entry ends with "|"
} kTexts[] = {
    {"", "", "", "0|"},
    {" \r\n", "", "", "0|"},
    {"a=1", "a=1|", "a|", "0|"},
    {"a=1; b = 2 ;\r\n", "a=1| b = 2 |", "a|b|", "0|4|12|"},
    {" ; ", " |", "", "0|2|"},
    {"z = 1;;", "z = 1||", "z|", "0|6|7|"},
    {"x\r\ny \r\n z\t= 1", "x\r\ny \r\n z\t= 1|", "z|", "0|"},
    {"a b\nc=1", "a b\nc=1|", "c|", "0|"},
    {"a\tb=1", "a\tb=1|", "a\tb|", "0|"},
    {" = 1", " = 1|", "|", "0|"},
    {"a == b = 1", "a == b = 1|", "a|", "0|"},
    {"y /* comment */ = 1", "y /* comment */ = 1|", "*/|", "0|"},
    {"/* a; b=2 */ c = 3", "/* a| b=2 */ c = 3|", "b|", "0|5|"},
};

std::string Join(const CStringArray& array) {
  std::string all;
  for (const CString& text : array) all += text.Std() + "|";
  return all;
}

TEST(EquationSeparator, CutsAtEverySemicolonAndFindsTheNames) {
  for (const auto& c : kTexts) {
    CStringArray equations, variables;
    CArray<int, int> positions;
    EXPECT_EQ(CEquationSeparator().Separate(c.text, equations, variables, positions), 1);
    std::string places;
    for (const int place : positions) places += std::to_string(place) + "|";
    EXPECT_EQ(Join(equations), c.equations) << c.text;
    EXPECT_EQ(Join(variables), c.variables) << c.text;
    EXPECT_EQ(places, c.positions) << c.text;
    CEquationSeparator().Separate("n=1", equations, variables, positions);
    EXPECT_EQ(Join(equations), std::string(c.equations) + "n=1|") << "not appended";
    EXPECT_EQ(Join(variables), std::string(c.variables) + "n|") << "not appended";
  }
}

// Statements with the known names a and b, each before a ";". "@" marks where the parser finds a fault; a
// statement without it compiles.
constexpr const char* kStatements =
    "y@; y =@; @1 = a; y @+ 1 = a; y = 1 @2; y = (a@; y = a@); y = (@); y = @+a; y = -~!a; y = a @! b; "
    "y = a@, b; y = a @: b; y = a ? b@; y = a ? b : @; y = a < b @< a; y = (a < b) < a; y = a == b == a; "
    "y = if(a, b@); y = abs(a @< b); y = pow(a@); y = rand(@1); y = sin(@); y = sin @a; y = @x; y = y + 1; "
    "y = @A; y = @ABS(a); y = @then; @if = 1; @else = 1; @rand = 1; iffy = a; abs2 = 1; then_x = 1; "
    "a_1b_2 = 2; @_y = 1; y@_ = 1; y = a@_; y = a@__b; y = @ab; @2y = 1; y = @.5; y = 1@.; y = 1.5@.2; "
    "y = 1@.e5; y = 1@e; y = 1@e+; y = 1e12@3; y = 1e1@.5; y = 12@ab; y @== 1; y = a @= b; y = a @=> b; "
    "y = a <= @= b; y = a &&@& b; y=a!=!b; y = a <@> b; y = @\x80; @\xE9 = 1; y = a @# b; y = @'a'; "
    "y =@\f1; y = a@\xFF; \t y\r\n=\n1; y = 1 /**/; y = 1 /@* a; y = 1 /@* a *; y = 1 /@*/; "
    "y = 1 /@* a **; y = 1 /***/; y = 1 /***/ @b; y = 1 /@/ note; y = 1 // note\n; y = 1 // note\r; "
    "y = 1 // a\r @b; y = 1 // a\n @b; y = if @a then b else 1; y = abs((a < b)); y = pow(a, b@, 1); "
    "y = a + @nope * 2; y=a&&b||a&b|a^b<=a+-b; /* note */ y = @nope; y = 1 /***/ b */; y = 1 /****/ @b */; "
    "y = 1 /* a **/ @b; y = 1 /* a **/ @b *; y = 1 /* ** x */ @b; y = 1 /* a\n\r */ @b; y = 1 / /* x */ b; "
    "y = 1 // a\r b\r @a; y = 1 // a\r b\n; y = 1 // a\n @b\n; // x = 2\r\ny = b; "
    "y = if(a < b, a == b, a ? 1 : 2); y = 1.5E-3 + 12 + 12.5 + 1e5 + 2e+12; y = 1 /* a **/ b /* c **/ @a";

TEST(EquationParser, FaultsAreFoundWhereTheBadTokenStarts) {
  CParser parser;
  CLineCodeList code;
  std::vector<std::string> statements = {"@", "   @", "@;", "y = @;", "y = 1; ) nonsense"};
  std::istringstream stream(kStatements);
  for (std::string statement; std::getline(stream, statement, ';');) statements.push_back(statement);
  for (std::string statement : statements) {
    const std::size_t fault = statement.find('@');
    const bool compiles = fault == std::string::npos;
    if (!compiles) statement.erase(fault, 1);
    CStringArray names = Names({"a", "b"});
    EXPECT_EQ(parser.Parse(CString(statement), &code, &names), compiles) << statement;
    if (!compiles) {
      EXPECT_EQ(parser.GetLastError(), static_cast<int>(fault)) << statement;
    }
  }
  CStringArray names;
  EXPECT_EQ(parser.Parse(CString("y = 1\0", 6), &code, &names), 0) << "a zero byte ended the statement";
  EXPECT_EQ(parser.GetLastError(), 5);
  EXPECT_EQ(parser.Parse("y = 1", nullptr, &names), 0);
  EXPECT_EQ(parser.Parse("y = 1", &code, nullptr), 0);
  EXPECT_EQ(parser.GetLastError(), 5) << "a call without a list changed the last error";
}

TEST(EquationParser, DeepNestingIsAFault) {
  CParser parser;
  CStringArray names = Names({"a"});
  for (const std::string open : {"(", "-", "1+", "a?", "if(", "sin(", "1==", "1?1:"}) {
    SCOPED_TRACE(open);
    std::string many = "y = ";
    for (int i = 0; i < 20000; ++i) many += open;
    CLineCodeList code, next;
    EXPECT_EQ(parser.Parse(CString(many + "1"), &code, &names), 0);
    EXPECT_GT(parser.GetLastError(), 1000);
    EXPECT_LT(parser.GetLastError(), 50000);
    EXPECT_EQ(parser.Parse("z = (a - 1) * 2", &next, &names), 1);
    EXPECT_EQ(next.GetCount(), 2);
  }
  CLineCodeList code;
  const std::string deep = "y = " + std::string(2000, '(') + "1" + std::string(2000, ')');
  EXPECT_EQ(parser.Parse(CString(deep), &code, &names), 1);
}

const struct {
  const char *statement, *code;
} kCodes[] = {
    // a, b and c are -2, -3 and -4; a new variable is -5
    {"y = 5", "269 5 0"},
    {"y = 007.50e+2", "269 750 0"},
    {"y = y + 1", "269 1 -5"},
    {"y = --a", "270 -2 0|270 -1 0"},
    {"y = -a * b", "270 -2 0|271 -3 -1"},
    {"y = ~abs(a)", "285 -2 0|283 -1 0"},
    {"z = a + b * 2 - 1", "271 2 -3|269 -1 -2|270 1 -1"},
    {"y = 5 + rand()", "291 0 0|269 -1 5"},
    {"y = pow(a + 1, 3)", "269 1 -2|293 3 -1"},
    {"y = a == b || c", "269 -2 0|269 -4 0|268 -1 -3|278 -1 -1"},
    {"y = a == b != c", "269 -2 0|269 -3 0|269 -4 0|279 -1 -1|278 -1 -1"},
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
  const auto show = [](const std::string& statement) {
    CStringArray names = Names({"a", "b", "c"});
    CLineCodeList code;
    EXPECT_EQ(CParser().Parse(CString(statement), &code, &names), 1) << statement;
    EXPECT_EQ(names.GetSize(), 4) << statement;
    return Show(code);
  };
  for (const auto& c : kCodes) EXPECT_EQ(show(c.statement), c.code) << c.statement;
  const std::string zeros(400, '0');
  EXPECT_EQ(show("y = 0." + zeros + "1"), "269 0 0");
  EXPECT_EQ(show("y = 1" + zeros), "269 inf 0");
}

TEST(EquationParser, AFaultyStatementHasAddedItsName) {
  for (const auto& [statement, expected] :
       {std::pair{"new = nope", "a|new|"}, {"new", "a|new|"}, {"a = nope", "a|"}, {"1 = new", "a|"}}) {
    CStringArray names = Names({"a"});
    CLineCodeList code;
    EXPECT_EQ(CParser().Parse(statement, &code, &names), 0) << statement;
    EXPECT_EQ(Join(names), expected) << statement;
  }
}

}  // namespace
}  // namespace vastra
