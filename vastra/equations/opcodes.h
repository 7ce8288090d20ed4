// The instruction set of compiled equations, one row for each opcode. The scanner uses its words, both forms
// of execution use its operations, and tools and documentation use the rest.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdlib>

#include "vastra/core/truncate.h"
#include "vastra/equations/random.h"

namespace vastra {

// The results of integer operators, as double. The smallest integer has no positive counterpart, and its
// remainder by -1 would trap.
inline double Remainder(double left, double right) {
  const int divisor = TruncateToInt(right);
  return divisor == -1 ? 0.0 : TruncateToInt(left) % divisor;
}
inline double Magnitude(double value) { return std::fabs(static_cast<double>(TruncateToInt(value))); }

// The result of any operation, as double. A bool selects from a table: the processor could rarely predict a
// branch on it.
inline double AsDouble(double value) { return value; }
inline double AsDouble(int value) { return value; }
inline double AsDouble(bool truth) {
  static constexpr double kTruths[] = {0.0, 1.0};
  return kTruths[truth];
}

// X(opcode, C++ name, spelling, operands, result, undefined if, the same in words). op1 is the right operand,
// or the only one; op2 is the left operand. An opcode is also the token number of its operator or function. A
// bool result becomes 1.0 or 0.0; any value except 0.0 counts as true.
#define VASTRA_OPERATIONS(X)                                                                        \
  X(264, BitAnd, "&", 2, TruncateToInt(op2) & TruncateToInt(op1), false, "")                        \
  X(265, BitXor, "^", 2, TruncateToInt(op2) ^ TruncateToInt(op1), false, "")                        \
  X(266, BitOr, "|", 2, TruncateToInt(op2) | TruncateToInt(op1), false, "")                         \
  X(267, LogicAnd, "&&", 2, (op2 != 0.0) & (op1 != 0.0), false, "")                                 \
  X(268, LogicOr, "||", 2, (op2 != 0.0) | (op1 != 0.0), false, "")                                  \
  X(269, Plus, "+", 2, op1 + op2, false, "")                                                        \
  X(270, Minus, "-", 2, op2 - op1, false, "")                                                       \
  X(271, Times, "*", 2, op1* op2, false, "")                                                        \
  X(272, Divide, "/", 2, op2 / op1, op1 == 0.0, "the right side is 0")                              \
  X(273, Modulo, "%", 2, Remainder(op2, op1), TruncateToInt(op1) == 0, "the right side, cut, is 0") \
  X(274, Less, "<", 2, op2 < op1, false, "")                                                        \
  X(275, Greater, ">", 2, op2 > op1, false, "")                                                     \
  X(276, LessEqual, "<=", 2, op2 <= op1, false, "")                                                 \
  X(277, GreaterEqual, ">=", 2, op2 >= op1, false, "")                                              \
  X(278, Equal, "==", 2, op1 == op2, false, "")                                                     \
  X(279, NotEqual, "!=", 2, op1 != op2, false, "")                                                  \
  X(283, BitNot, "~", 1, ~TruncateToInt(op1), false, "")                                            \
  X(284, LogicNot, "!", 1, op1 == 0.0, false, "")                                                   \
  X(285, Abs, "abs", 1, Magnitude(op1), false, "")                                                  \
  X(286, Sin, "sin", 1, std::sin(op1), false, "")                                                   \
  X(287, Cos, "cos", 1, std::cos(op1), false, "")                                                   \
  X(288, Tan, "tan", 1, std::tan(op1), false, "")                                                   \
  X(289, Exp, "exp", 1, std::exp(op1), false, "")                                                   \
  X(290, Log, "log", 1, std::log(op1), op1 <= 0.0, "the argument is 0 or negative")                 \
  X(291, Rand, "rand", 0, NextRandom(), false, "")                                                  \
  X(292, Sqrt, "sqrt", 1, std::sqrt(op1), op1 < 0.0, "the argument is negative")                    \
  X(293, Pow, "pow", 2, std::pow(op2, op1), false, "")

// Opcodes: opBitAnd, ..., opPow, and those without an operator.
enum : int {
  opNone = 0,  // a placeholder of the code generator
#define VASTRA_OPCODE(number, Name, ...) op##Name = number,
  VASTRA_OPERATIONS(VASTRA_OPCODE)
#undef VASTRA_OPCODE
      opJumpIfZero = 1002,
  opJump = 1003,
};

// Each operation as a class, COperationPlus and so on, for templates that are compiled for one operation.
#define VASTRA_OPERATION(number, Name, spelling, count, result, undefined, words)                           \
  struct COperation##Name {                                                                                 \
    static constexpr int kCode = number;                                                                    \
    static constexpr int kOperands = count;                                                                 \
    static constexpr bool kMayFail = sizeof(words) > 1;                                                     \
    static bool IsUndefined([[maybe_unused]] double op1, [[maybe_unused]] double op2) { return undefined; } \
    static auto Raw([[maybe_unused]] double op1, [[maybe_unused]] double op2) { return result; }            \
    static double Result(double op1, double op2) { return AsDouble(Raw(op1, op2)); }                        \
  };
VASTRA_OPERATIONS(VASTRA_OPERATION)
#undef VASTRA_OPERATION

// One row of the table at run time.
struct COpcode {
  int code;
  int operands;
  const char* spelling;
  const char* undefinedIf;  // empty: never undefined
  // Sets result and returns true; returns false if the operation is undefined. Null for jumps.
  bool (*compute)(double op1, double op2, double& result);
};

// The row of an opcode; null for any other number.
VASTRA_API const COpcode* FindOpcode(int code);

// All rows, ordered by opcode.
VASTRA_API const COpcode* GetOpcodes(std::size_t& count);

}  // namespace vastra
