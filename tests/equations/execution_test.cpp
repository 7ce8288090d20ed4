// What statements give: on the plain machine, line by line, and in the form that runs for every sample.
#include "vastra/equations/execution.h"

#include <gtest/gtest.h>

#include <random>

#include "tests/equations/both_machines.h"

namespace vastra {
namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kUndefined = kUndefinedResult;

// The inputs of all tests. A statement assigns y.
const struct {
  const char* name;
  float value;
} kInputs[] = {{"x", 0.0f},
               {"m", -0.0f},
               {"f", 1.1f},
               {"p", 4.7f},
               {"q", -2.5f},
               {"n", std::numeric_limits<float>::quiet_NaN()},
               {"i", std::numeric_limits<float>::infinity()}};

struct CValueCase {
  const char* expression;
  double value;
};
const CValueCase kValues[] = {
    // arithmetic
    {"5", 5},
    {"y + 1", 1},
    {"10 - 3 - 2", 5},
    {"100 / 10 / 5", 2},
    {"2 - -3", 5},
    {"2 + 3 * 4", 14},
    {"f", double{1.1f}},
    {"0.1 + 0.2", 0.1 + 0.2},
    {"p * 0.1", double{4.7f} * 0.1},
    {"1 / 0.5", 2},
    {"1 / 0", kUndefined},
    {"1 / m", kUndefined},
    {"x / x", kUndefined},
    {"1 / 0 + 1", kUndefined},
    {"2 - 1 / x * 3", kUndefined},
    {"i - i", kNan},
    {"n + 1", kNan},
    {"1 / n", kNan},
    {"1 / i", 0},
    // zero and its sign
    {"x", 0.0},
    {"m", 0.0},
    {"-m", 0.0},
    {"-x", 0.0},
    {"m * 1", -0.0},
    {"q * x", -0.0},
    {"(m)", 0.0},
    {"m * 1 + m", -0.0},
    {"m + x", 0.0},
    {"if(1, m, 2)", 0.0},
    {"if(1, m * 1, 2)", -0.0},
    {"if(f, m * 1, q)", -0.0},
    {"if(x, q, m * 1)", -0.0},
    {"if(f, m, q)", 0.0},
    {"sqrt(m)", -0.0},
    // integers
    {"7 % 0.5", kUndefined},
    {"7 % x", kUndefined},
    {"7.9 % 2.9", 1},
    {"-7 % 3", -1},
    {"7 % -3", 1},
    {"0 - 7 % 3", -1},
    {"q % 2", 0},
    {"p % 3", 1},
    {"n % 2", 0},
    {"5 % n", kUndefined},
    {"1 % 4294967296", kUndefined},
    {"-2147483648 % -1", 0},
    {"2147483648 % -1", 0},
    {"i % -1", 0},
    {"3 & 1.9", 1},
    {"6 | 1", 7},
    {"6 ^ 3", 5},
    {"-1 & 255", 255},
    {"q | x", -2},
    {"n & 1", 0},
    {"i | 1", 1},
    {"4294967295 & 255", 255},
    {"~4.7", -5},
    {"~p", -5},
    {"~-1", 0},
    {"~2147483648", 2147483647},
    {"abs(0 - 0.5)", 0},
    {"abs(-2.7)", 2},
    {"abs(q)", 2},
    {"abs(n)", 0},
    {"abs(2147483648)", 2147483648.0},
    // truth
    {"2.5 && 0", 0},
    {"0.5 && -1", 1},
    {"x || 0.1", 1},
    {"x || m", 0},
    {"!2", 0},
    {"!m", 1},
    {"!0 + 1", 2},
    {"n && 1", 1},
    {"n || 0", 1},
    {"!n", 0},
    {"0 && 1 / 0", kUndefined},
    {"1 || 1 / 0", kUndefined},
    {"x && log(x)", kUndefined},
    {"p > 4 && q < 0", 1},
    {"p > 4 && q > 0 || f > 1", 1},
    {"2 < 3", 1},
    {"3 < 3", 0},
    {"3 > 2", 1},
    {"3 > 3", 0},
    {"3 <= 3", 1},
    {"4 <= 3", 0},
    {"3 >= 3", 1},
    {"3 >= 4", 0},
    {"x == m", 1},
    {"x != m", 0},
    {"f == 1.1", 0},
    {"f != 1.1", 1},
    {"f == f", 1},
    {"n == n", 0},
    {"n != n", 1},
    {"n < 1", 0},
    {"n > 1", 0},
    {"n <= 1", 0},
    {"n >= 1", 0},
    {"i == i", 1},
    {"!(n < 1)", 1},
    {"(1 < 2) + (3 < 2) * 10", 1},
    {"1 == 2 || 2", 1},
    {"2 == 2 == 1", 0},
    // functions
    {"sin(f)", std::sin(double{1.1f})},
    {"cos(x)", 1},
    {"tan(q)", std::tan(-2.5)},
    {"exp(1000)", kInfinity},
    {"exp(q)", std::exp(-2.5)},
    {"log(p)", std::log(double{4.7f})},
    {"log(1)", 0},
    {"log(0)", kUndefined},
    {"log(m)", kUndefined},
    {"log(q)", kUndefined},
    {"log(n)", kNan},
    {"sqrt(0)", 0},
    {"sqrt(p)", std::sqrt(double{4.7f})},
    {"sqrt(q)", kUndefined},
    {"sqrt(n)", kNan},
    {"pow(2, 3)", 8},
    {"pow(p, q)", std::pow(double{4.7f}, -2.5)},
    {"pow(-8, 1 / 3)", kNan},
    {"pow(0, -1)", kInfinity},
    {"rand() >= 0 && rand() <= 32767", 1},
    // conditionals
    {"if(x, 1 / 0, 2)", 2},
    {"if(f, 1 / 0, 2)", kUndefined},
    {"x != 0 ? 1 / x : 9", 9},
    {"if(m, 1, 2)", 2},
    {"if(n, 1, 2)", 1},
    {"if(n < 1, 1, 2)", 2},
    {"if(n >= 1, 1, 2)", 2},
    {"if(n != n, f, 2)", double{1.1f}},
    {"x ? 1 : f ? 3 : 4", 3},
    {"f ? x ? 1 : 2 : 3", 2},
    {"if(if(x, 0, 1), if(x, 5, 6), 7)", 6},
    {"2 * if(f, p > 4, 7) + 1", 3},
    {"1 - if(x, 1, 2) - if(f, 4, 8)", -5},
    {"if(1 / x, 1, 2)", kUndefined},
    {"p - (f ? 1 / f : 2) * (x ? 1 : q)", double{4.7f} - 1 / double{1.1f} * -2.5},
};

CStringArray InputNames() {
  CStringArray names;
  for (const auto& input : kInputs) names.Add(input.name);
  return names;
}

CSampleValues InputValues() {
  CSampleValues values;
  for (const auto& input : kInputs) values.Add(input.value);
  return values;
}

TEST(Execution, EveryOperationGivesItsValueOnBothMachines) {
  for (const CValueCase& c : kValues) {
    CStringArray statements;
    statements.Add(CString("y = ") + c.expression);
    CEquator plain, lowered;
    ASSERT_EQ(0, plain.Compile(InputNames(), statements).statement) << c.expression;
    ASSERT_EQ(0, lowered.Compile(InputNames(), statements).statement) << c.expression;
    const bool isDefined = c.value != kUndefined;

    CArray<double, double> results;
    plain.RunByLines(InputValues(), results);
    EXPECT_TRUE(IsSameResult(c.value, results[0])) << c.expression << " gives " << results[0];
    EXPECT_EQ(isDefined, plain.GetUndefined().empty()) << c.expression;

    lowered.Run(InputValues());
    const float value = lowered.GetValue(InputValues(), lowered.FindValue("y"));
    EXPECT_TRUE(IsSameResult(isDefined ? static_cast<float>(c.value) : HUGE_VALF, value))
        << c.expression << " gives " << value << " lowered";
    EXPECT_EQ(isDefined, lowered.GetUndefined().empty()) << c.expression << " lowered";
  }
}

struct CListCase {
  const char* what;
  std::vector<CFlatLine> lines;  // a jump goes behind the line it names
  int defined;
  double result;  // -7: as it was
};
const CListCase kLists[] = {
    {"no lines", {}, 1, -7},
    {"no such opcode", {{269, 5, 0, -1}, {280, 1, 1, -1}, {1234, 0, 0, -1}}, 1, 5},
    {"a placeholder", {{0, 0, 0, -1}, {269, 5, 0, -1}}, 1, 5},
    {"an empty stack keeps -1", {{269, 5, -1, -1}}, 1, 4},
    {"the right operand lies on top", {{269, 9, 0, -1}, {269, 4, 0, -1}, {270, -1, -1, -1}}, 1, 5},
    {"a jump past the end", {{269, 5, 0, -1}, {1003, 0, 0, 2}, {269, 6, 0, -1}}, 1, 5},
    {"a jump behind the next line", {{1003, 0, 0, 1}, {272, 0, 1, -1}, {269, 6, 0, -1}}, 1, 6},
    {"a test of a literal", {{1002, 0, 0, 1}, {269, 1, 0, -1}, {269, 2, 0, -1}}, 1, 2},
    {"a variable that is not there", {{269, -102, 5, -1}}, 1, 5},
    {"a variable far away", {{269, -1e300, 5, -1}}, 1, 5},
    {"lines behind an undefined one run", {{272, 0, 1, -1}, {269, 1, 2, -1}}, 0, kUndefined},
};

TEST(Execution, ListsOfAnyOriginRun) {
  CSampleValues values;
  values.Add(3.0f);
  for (const CListCase& c : kLists) {
    CExecutionStruct statement;
    std::vector<POSITION> places;
    for (const CFlatLine& line : c.lines)
      places.push_back(statement.GetHead()->AddTail(CLineCode(line.code, line.op1, line.op2)));
    for (std::size_t i = 0; i < places.size(); ++i)
      if (const CFlatLine& line = c.lines[i]; line.jump >= 0)
        statement.GetHead()->GetAt(places[i]).Set(line.code, line.op1, line.op2,
                                                  places[static_cast<std::size_t>(line.jump)]);
    double result = -7;
    EXPECT_EQ(0, statement.Execute(nullptr, result)) << c.what;
    EXPECT_EQ(-7, result) << c.what << ": a run without values changed the result";
    EXPECT_EQ(c.defined, statement.Execute(&values, result)) << c.what;
    EXPECT_EQ(c.result, result) << c.what;
  }
}

// Makes statements of the whole language by the rules of its grammar.
class CWriter {
 public:
  explicit CWriter(unsigned seed) : m_random(seed) {}

  std::string Statement() { return Pick({"y", "z", "w", "x"}) + " = " + Expression(1 + Below(3)); }

  CSampleValues Sample() {
    static constexpr float kOdd[] = {0.0f,  -0.0f,  1.0f,  -1.0f, 2.5f,           1.1f,      1e30f,
                                     -3e9f, 1e-40f, 32.0f, 0.5f,  -2147483648.0f, HUGE_VALF, NAN};
    CSampleValues values;
    for ([[maybe_unused]] const auto& input : kInputs)
      values.Add(Below(2) ? kOdd[static_cast<std::size_t>(Below(static_cast<int>(std::size(kOdd))))]
                          : static_cast<float>(Below(2000) - 1000) / 8);
    return values;
  }

 private:
  static constexpr int kSum = 7, kUnary = 9;

  int Below(int limit) { return static_cast<int>(m_random() % static_cast<unsigned>(limit)); }
  std::string Pick(std::initializer_list<const char*> texts) {
    return texts.begin()[Below(static_cast<int>(texts.size()))];
  }

  std::string Expression(int depth) {
    const std::string condition = Level(0, depth);
    if (depth == 0 || Below(6)) return condition;
    return condition + " ? " + Expression(depth - 1) + " : " + Expression(depth - 1);
  }
  std::string Operator(int level) {
    switch (level) {
      case 0:
        return Pick({" == ", " != "});
      case 1:
        return " || ";
      case 2:
        return " && ";
      case 3:
        return " | ";
      case 4:
        return " ^ ";
      case 5:
        return " & ";
      case 6:
        return Pick({" < ", " > ", " <= ", " >= "});
      case kSum:
        return Pick({" + ", " - "});
      default:
        return Pick({" * ", " / ", " % ", " * ", " * "});
    }
  }
  std::string Level(int level, int depth) {
    if (level == kUnary) return Unary(depth);
    std::string text = Level(level + 1, depth);
    const bool isRelation = level == 6;
    for (int i = isRelation ? 1 : 2; i > 0 && Below(level >= kSum ? 4 : 9) == 0; --i)
      text += Operator(level) + Level(level + 1, depth);
    return text;
  }
  std::string Unary(int depth) {
    if (Below(8) == 0) return Pick({"-", "!", "~"}) + Unary(depth);
    if (depth == 0 || Below(3) == 0)
      return Pick({"x", "m", "f", "p", "q", "n", "i", "y", "z", "w", "0", "1", "2", "0.5", "3000000000"});
    switch (Below(8)) {
      case 0:
        return Pick({"abs(", "sin(", "cos(", "exp(", "log(", "sqrt(", "tan("}) + Level(kSum, depth - 1) + ")";
      case 1:
        return "pow(" + Level(kSum, depth - 1) + ", " + Level(kSum, depth - 1) + ")";
      case 2:
        return Below(3) ? Unary(depth - 1) : "rand()";
      case 3:
      case 4:
        return "if(" + Expression(depth - 1) + ", " + Expression(depth - 1) + ", " + Expression(depth - 1) +
               ")";
      default:
        return "(" + Expression(depth - 1) + ")";
    }
  }

  std::mt19937 m_random;
};

TEST(Execution, BothMachinesAgreeOnRandomStatements) {
  for (unsigned seed = 0; seed < 1000; ++seed) {
    CWriter writer(seed);
    CStringArray statements;
    std::string all;
    for (const char* text : {"y = y", "z = z", "w = w"}) statements.Add(text);  // all of them are known
    for (int i = 0; i < 3; ++i) {
      const std::string statement = writer.Statement();
      statements.Add(CString(statement));
      all += statement + "; ";
    }
    const std::vector<CSampleValues> samples = {writer.Sample(), writer.Sample(), writer.Sample()};
    CEquationFault fault;
    EXPECT_EQ("", CompareMachines(InputNames(), statements, samples, fault))
        << "seed " << seed << ": " << all;
    ASSERT_EQ(0, fault.statement) << all;
  }
}

}  // namespace
}  // namespace vastra
