// Results of statements: in the reference interpreter, line by line, and in the form that runs for every
// sample.
#include "vastra/equations/execution.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <sstream>

#include "tests/support/names.h"
#include "vastra/equations/equator.h"
#include "vastra/equations/program.h"
#include "vastra/equations/random.h"

namespace vastra {
namespace {

using CSampleValues = CArray<float, float>;
constexpr double kUndefined = kUndefinedResult;

// Compares bit for bit; any two NaN are the same.
template <class T>
bool IsSameResult(T a, T b) {
  return (std::isnan(a) && std::isnan(b)) || std::memcmp(&a, &b, sizeof a) == 0;
}

// The inputs of all tests. A statement assigns y.
const CStringArray kNames = Names({"x", "m", "f", "p", "q", "n", "i"});
constexpr float kInputs[] = {0.0f, -0.0f, 1.1f, 4.7f, -2.5f, NAN, HUGE_VALF};

// Expressions and their value.
const struct {
  double value;
  const char* expressions;
} kValues[] = {
    {0,
     "1 / i; x; m; -m; -x; (m); m + x; if(1, m, 2); if(f, m, q); q % 2; n % 2; -2147483648 % -1; "
     "2147483648 % -1; i % -1; n & 1; ~-1; abs(0 - 0.5); abs(n); 2.5 && 0; x || m; !2; !n; 3 < 3; "
     "3 > 3; 4 <= 3; 3 >= 4; x != m; f == 1.1; n == n; n < 1; n > 1; n <= 1; n >= 1; 2 == 2 == 1; "
     "log(1); sqrt(0); sqrt((m)); "
     "p > 4 && q > 0 || f > 2; p > 4 && q < 0 && f > 2; p * f - p * f"},
    {1,
     "y + 1; 7.9 % 2.9; 7 % -3; p % 3; 3 & 1.9; i | 1; 0.5 && -1; x || 0.1; !m; n && 1; n || 0; "
     "p > 4 && q < 0; p > 4 && q > 0 || f > 1; 2 < 3; 3 > 2; 3 <= 3; 3 >= 3; x == m; f != 1.1; f == f; "
     "n != n; i == i; !(n < 1); (1 < 2) + (3 < 2) * 10; 1 == 2 || 2; cos(x); "
     "rand() >= 0 && rand() <= 32767; if(n, 1, 2); if(p & 6, 1, 0); if(p > 4, 1, 0); (p > 4) + x * f; "
     "if(if(f, sin(f) > 0, cos(x) > 2), 1, 3)"},
    {kUndefined,
     "1 / 0; (f + 1) / 0; 1 / m; x / x; 1 / 0 + 1; 2 - 1 / x * 3; 7 % 0.5; 7 % x; 5 % n; 1 % 4294967296; 0 "
     "&& 1 / 0; "
     "1 || 1 / 0; x && log(x); log(0); log(m); log(q); sqrt(q); if(f, 1 / 0, 2); if(1 / x, 1, 2)"},
    {2,
     "100 / 10 / 5; 1 / 0.5; abs(-2.7); abs(q); !0 + 1; if(x, 1 / 0, 2); if(m, 1, 2); if(n < 1, 1, 2); "
     "if(n >= 1, 1, 2); f ? x ? 1 : 2 : 3; cos(x) + if(x, sin(f), exp(x))"},
    {-0.0,
     "m * 1; q * x; m * 1 + m; if(1, m * 1, 2); if(f, m * 1, q); if(x, q, m * 1); sqrt(m); (m) * q; "
     "(x) * q"},
    {NAN, "i - i; n + 1; 1 / n; log(n); sqrt(n); pow(-8, 1 / 3)"},
    {5,
     "5; 10 - 3 - 2; 2 - -3; 6 ^ 3; 4 | 1; 2 + 3 * 1; pow(2, 3) - 3; x != 0 ? 1 / x : 5; if(if(x, 0, 1), "
     "if(x, 2, 5), 7)"},
    {-5, "~4.7; ~p; 1 - if(x, 1, 2) - if(f, 4, 8)"},
    {double{1.1f}, "f; if(n != n, f, 2)"},
    {-1, "-7 % 3; 0 - 7 % 3; q | -1; q | 1; if(f, x - 1, 2)"},
    {255, "-1 & 255; 4294967295 & 255"},
    {INFINITY, "exp(1000); pow(0, -1)"},
    {3, "x ? 1 : f ? 3 : 4; 2 * if(f, p > 4, 7) + 1"},
    {0.1 + 0.2, "0.1 + 0.2"},
    {double{4.7f} * 0.1, "p * 0.1"},
    {2147483647, "~2147483648"},
    {2147483648.0, "abs(2147483648)"},
    {std::sin(double{1.1f}), "sin(f)"},
    {std::tan(-2.5), "tan(q)"},
    {std::exp(-2.5), "exp(q)"},
    {std::log(double{4.7f}), "log(p)"},
    {std::sqrt(double{4.7f}), "sqrt(p)"},
    {double{4.7f} - 1 / double{1.1f} * -2.5, "p - (f ? 1 / f : 2) * (x ? 1 : q)"},
};

TEST(Execution, EveryOperationHasItsValueInBothForms) {
  CSampleValues inputs;
  for (const float input : kInputs) inputs.Add(input);
  for (const auto& [value, expressions] : kValues) {
    std::istringstream stream(expressions);
    for (std::string expression; std::getline(stream, expression, ';');) {
      SCOPED_TRACE(expression);
      const CStringArray statements = Names({("y = " + expression).c_str()});
      const bool isDefined = value != kUndefined;
      CEquator reference, lowered;
      CArray<double, double> results;
      ASSERT_EQ(reference.Compile(kNames, statements).statement, 0);
      reference.RunByLines(inputs, results);
      EXPECT_TRUE(IsSameResult(results[0], value)) << results[0];
      EXPECT_EQ(reference.GetUndefined().empty(), isDefined);

      CProgram program(kNames.GetSize(), 1);
      program.Add(reference.GetCode(0), 0);
      EXPECT_FALSE(program.IsInterpreted(0));
      lowered.Compile(kNames, statements);
      lowered.Run(inputs);
      const float stored = lowered.GetValue(inputs, lowered.FindValue("y"));
      EXPECT_TRUE(IsSameResult(stored, isDefined ? static_cast<float>(value) : HUGE_VALF)) << stored;
      EXPECT_EQ(lowered.GetUndefined().empty(), isDefined);
    }
  }
}

TEST(Execution, RandomNumbersAreTheUpperBitsOfTheState) {
  SeedRandom(1);
  for (const int expected : {41, 18467, 6334, 26500}) EXPECT_EQ(NextRandom(), expected);
}

const struct {
  const char* what;
  std::vector<CFlatLine> lines;  // a jump goes to the line after the line it names
  int defined;
  double result;  // -7: as it was
} kLists[] = {
    {"no lines", {}, 1, -7},
    {"no such opcode", {{269, 5, 0, -1}, {280, 1, 1, -1}, {1234, 0, 0, -1}}, 1, 5},
    {"a placeholder", {{0, 0, 0, -1}, {269, 5, 0, -1}}, 1, 5},
    {"an empty stack keeps -1", {{269, 5, -1, -1}}, 1, 4},
    {"the right operand is on top", {{269, 9, 0, -1}, {269, 4, 0, -1}, {270, -1, -1, -1}}, 1, 5},
    {"a jump past the end", {{269, 5, 0, -1}, {1003, 0, 0, 2}, {269, 6, 0, -1}}, 1, 5},
    {"a jump over the next line", {{1003, 0, 0, 1}, {272, 0, 1, -1}, {269, 6, 0, -1}}, 1, 6},
    {"a test of a literal", {{1002, 0, 0, 1}, {269, 1, 0, -1}, {269, 2, 0, -1}}, 1, 2},
    {"a variable that is not there", {{269, -102, 5, -1}}, 1, 5},
    {"a variable far away", {{269, -1e300, 5, -1}}, 1, 5},
    {"lines after an undefined one run", {{272, 0, 1, -1}, {269, 1, 2, -1}}, 0, kUndefined},
};

TEST(Execution, ListsOfAnyOriginRun) {
  CSampleValues values;
  values.Add(3.0f);
  for (const auto& c : kLists) {
    CExecutionStruct statement;
    std::vector<POSITION> places;
    for (const CFlatLine& line : c.lines)
      places.push_back(statement.GetHead()->AddTail(CLineCode(line.code, line.op1, line.op2)));
    for (std::size_t i = 0; i < places.size(); ++i)
      if (const CFlatLine& line = c.lines[i]; line.jump >= 0)
        statement.GetHead()->GetAt(places[i]).Set(line.code, line.op1, line.op2,
                                                  places[static_cast<std::size_t>(line.jump)]);
    double result = -7;
    EXPECT_EQ(statement.Execute(nullptr, result), 0) << c.what;
    EXPECT_EQ(result, -7) << c.what << ": a run without values changed the result";
    EXPECT_EQ(statement.Execute(&values, result), c.defined) << c.what;
    EXPECT_EQ(result, c.result) << c.what;
  }
}

}  // namespace
}  // namespace vastra
