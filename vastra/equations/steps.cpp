#include "vastra/equations/steps.h"

#include <type_traits>

#include "vastra/equations/opcodes.h"

namespace vastra {
namespace {

// Runs one step. With tail calls also runs all steps after it and returns the stop that ends them; in a loop
// returns the next step. accumulator: the result of the last step.
#ifdef VASTRA_TAIL_CALLS
using CAccumulator = double;
#else
using CAccumulator = double&;
#endif
using CFunction = const CStep* (*)(const CStep* step, double* registers, CAccumulator accumulator);
CFunction Function(const CStep* step) { return reinterpret_cast<CFunction>(step->run); }

// Work has one static function Do, which runs a step and returns the next one.
template <class Work>
const CStep* Handle(const CStep* step, double* registers, CAccumulator accumulator) {
  const CStep* next = Work::Do(step, registers, accumulator);
#if defined(VASTRA_TAIL_CALLS) && defined(__clang__)
  [[clang::musttail]] return Function(next)(next, registers, accumulator);
#elif defined(VASTRA_TAIL_CALLS)
  return Function(next)(next, registers, accumulator);
#else
  return next;
#endif
}

const CStep* Stop(const CStep* step, double*, CAccumulator) { return step; }

template <class Work>
CHandler HandlerOf() {
  return reinterpret_cast<CHandler>(static_cast<CFunction>(Handle<Work>));
}

template <EResult result>
void Put(const CStep* step, double* registers, double& accumulator, double made) {
  if constexpr (result == EResult::toAccumulator) accumulator = made;
  if constexpr (result == EResult::toTemporary) registers[step->to] = made;
  if constexpr (result == EResult::toVariable)
    registers[step->to] = static_cast<double>(static_cast<float>(made));
}

template <class Operation, ESource source>
double Right(const CStep* step, const double* registers, double accumulator) {
  if constexpr (Operation::kOperands == 0) return 0.0;
  return source == ESource::rightAccumulator ? accumulator : registers[step->a];
}
template <class Operation, ESource source>
double Left(const CStep* step, const double* registers, double accumulator) {
  if constexpr (Operation::kOperands < 2) return 0.0;
  return source == ESource::leftAccumulator ? accumulator : registers[step->b];
}
template <class Comparison, ESource source>
bool Holds(const CStep* step, const double* registers, double accumulator) {
  return Comparison::Raw(Right<Comparison, source>(step, registers, accumulator),
                         Left<Comparison, source>(step, registers, accumulator));
}

template <class Operation, ESource source, EResult result>
struct COperationWork {
  static const CStep* Do(const CStep* step, double* registers, double& accumulator) {
    const double op1 = Right<Operation, source>(step, registers, accumulator);
    const double op2 = Left<Operation, source>(step, registers, accumulator);
    if (Operation::kMayFail && Operation::IsUndefined(op1, op2)) [[unlikely]]
      return step + step->jump;
    Put<result>(step, registers, accumulator, Operation::Result(op1, op2));
    return step + 1;
  }
};

template <class Inner, class Outer, bool isInnerRight, bool isAccumulator, EResult result>
struct CChainWork {
  static const CStep* Do(const CStep* step, double* registers, double& accumulator) {
    const double inner = Inner::Result(registers[step->a], registers[step->b]);
    const double other = isAccumulator ? accumulator : registers[step->c[0]];
    Put<result>(step, registers, accumulator,
                isInnerRight ? Outer::Result(inner, other) : Outer::Result(other, inner));
    return step + 1;
  }
};

template <class Left, class Outer, class Right, EResult result>
struct CPairWork {
  static const CStep* Do(const CStep* step, double* registers, double& accumulator) {
    const double left = Left::Result(registers[step->a], registers[step->b]);
    const double right = Right::Result(registers[step->c[0]], registers[step->c[1]]);
    Put<result>(step, registers, accumulator, Outer::Result(right, left));
    return step + 1;
  }
};

template <class Logic>
double Both(bool left, bool right) {
  return AsDouble(Logic::kCode == opLogicAnd ? left & right : left | right);
}

template <class Comparison, class Logic, EResult result>
struct CLogicWork {
  static const CStep* Do(const CStep* step, double* registers, double& accumulator) {
    const bool holds = Holds<Comparison, ESource::fromRegisters>(step, registers, accumulator);
    Put<result>(step, registers, accumulator, Both<Logic>(holds, accumulator != 0.0));
    return step + 1;
  }
};

template <class First, class Second, class Logic, EResult result>
struct CLogicPairWork {
  static const CStep* Do(const CStep* step, double* registers, double& accumulator) {
    const bool first = Holds<First, ESource::fromRegisters>(step, registers, accumulator);
    const bool second = Second::Raw(registers[step->c[0]], registers[step->c[1]]);
    Put<result>(step, registers, accumulator, Both<Logic>(first, second));
    return step + 1;
  }
};

// Has no branch, because the processor could rarely predict it.
template <class Comparison, ESource source, EResult result>
struct CSelectWork {
  static const CStep* Do(const CStep* step, double* registers, double& accumulator) {
    const bool holds = Holds<Comparison, source>(step, registers, accumulator);
    Put<result>(step, registers, accumulator, registers[step->c[holds]] + registers[step->d[holds]]);
    return step + 1;
  }
};

template <class Comparison, ESource source>
struct CTestWork {
  static const CStep* Do(const CStep* step, double* registers, double& accumulator) {
    return Holds<Comparison, source>(step, registers, accumulator) ? step + 1 : step + step->jump;
  }
};

template <EResult result>
struct CCopyWork {
  static const CStep* Do(const CStep* step, double* registers, double& accumulator) {
    Put<result>(step, registers, accumulator, registers[step->a]);
    return step + 1;
  }
};

struct CJumpWork {
  static const CStep* Do(const CStep* step, double*, double&) { return step + step->jump; }
};

// These functions turn a value that is known when a statement is lowered into a template argument: each calls
// make with an operation, a source, a result or a bool as a type. Returns null if there is none.
template <class... Operations>
struct COperations {};
template <class... Operations, class Make>
CHandler ForCode(COperations<Operations...>, int code, Make make) {
  CHandler handler = nullptr;
  ((Operations::kCode == code ? void(handler = make(Operations())) : void()), ...);
  return handler;
}
template <class Make>
CHandler ForResult(EResult result, Make make) {
  using enum EResult;
  if (result == toAccumulator) return make(std::integral_constant<EResult, toAccumulator>());
  if (result == toTemporary) return make(std::integral_constant<EResult, toTemporary>());
  return make(std::integral_constant<EResult, toVariable>());
}
template <class Make>
CHandler ForTruth(bool truth, Make make) {
  return truth ? make(std::true_type()) : make(std::false_type());
}
// count: how many operands the operation has.
template <int count, class Make>
CHandler ForSource(ESource source, Make make) {
  using enum ESource;
  if (source == fromRegisters) return make(std::integral_constant<ESource, fromRegisters>());
  if constexpr (count > 0)
    if (source == rightAccumulator) return make(std::integral_constant<ESource, rightAccumulator>());
  if constexpr (count > 1)
    if (source == leftAccumulator) return make(std::integral_constant<ESource, leftAccumulator>());
  return nullptr;
}

using CComparisons = COperations<COperationLess, COperationLessEqual, COperationEqual, COperationNotEqual>;
using CChainables = COperations<COperationPlus, COperationMinus, COperationTimes>;
using CLogics = COperations<COperationLogicAnd, COperationLogicOr>;
struct CNoOperation {
  static constexpr int kCode = opNone;
};
#define VASTRA_LISTED(number, Name, ...) , COperation##Name
using CAllOperations = COperations<CNoOperation VASTRA_OPERATIONS(VASTRA_LISTED)>;
#undef VASTRA_LISTED

template <class... Operations>
bool Has(COperations<Operations...>, int code) {
  return ((Operations::kCode == code) || ...);
}

CHandler OperationHandler(const CStepKind& kind) {
  return ForCode(CAllOperations(), kind.code, [&]<class Operation>(Operation) -> CHandler {
    if constexpr (Operation::kCode == opNone)
      return nullptr;
    else
      return ForSource<Operation::kOperands>(kind.source, [&](auto source) {
        return ForResult(kind.result, [&](auto result) {
          return HandlerOf<COperationWork<Operation, source(), result()>>();
        });
      });
  });
}

CHandler ChainHandler(const CStepKind& kind) {
  return ForCode(CChainables(), kind.code, [&]<class Inner>(Inner) {
    if (kind.outer == opDivide)
      return ForResult(kind.result, [&](auto result) {
        return HandlerOf<CChainWork<Inner, COperationDivide, false, false, result()>>();
      });
    return ForCode(CChainables(), kind.outer, [&]<class Outer>(Outer) {
      return ForTruth(kind.isInnerRight, [&](auto isRight) {
        return ForTruth(kind.source != ESource::fromRegisters, [&](auto isAccumulator) {
          return ForResult(kind.result, [&](auto result) {
            return HandlerOf<CChainWork<Inner, Outer, isRight(), isAccumulator(), result()>>();
          });
        });
      });
    });
  });
}

CHandler PairHandler(const CStepKind& kind) {
  return ForCode(CChainables(), kind.code, [&]<class Left>(Left) {
    return ForCode(CChainables(), kind.outer, [&]<class Outer>(Outer) {
      return ForCode(CChainables(), kind.second, [&]<class Right>(Right) {
        return ForResult(kind.result,
                         [&](auto result) { return HandlerOf<CPairWork<Left, Outer, Right, result()>>(); });
      });
    });
  });
}

CHandler LogicHandler(const CStepKind& kind) {
  return ForCode(CComparisons(), kind.code, [&]<class Comparison>(Comparison) {
    return ForCode(CLogics(), kind.outer, [&]<class Logic>(Logic) {
      return ForResult(kind.result,
                       [&](auto result) { return HandlerOf<CLogicWork<Comparison, Logic, result()>>(); });
    });
  });
}

CHandler LogicPairHandler(const CStepKind& kind) {
  return ForCode(CComparisons(), kind.code, [&]<class First>(First) {
    return ForCode(CComparisons(), kind.second, [&]<class Second>(Second) {
      return ForCode(CLogics(), kind.outer, [&]<class Logic>(Logic) {
        return ForResult(kind.result, [&](auto result) {
          return HandlerOf<CLogicPairWork<First, Second, Logic, result()>>();
        });
      });
    });
  });
}

CHandler SelectHandler(const CStepKind& kind) {
  return ForCode(CComparisons(), kind.code, [&]<class Comparison>(Comparison) {
    return ForSource<2>(kind.source, [&](auto source) {
      return ForResult(kind.result,
                       [&](auto result) { return HandlerOf<CSelectWork<Comparison, source(), result()>>(); });
    });
  });
}

CHandler TestHandler(const CStepKind& kind) {
  return ForCode(CComparisons(), kind.code, [&]<class Comparison>(Comparison) {
    return ForSource<2>(kind.source,
                        [&](auto source) { return HandlerOf<CTestWork<Comparison, source()>>(); });
  });
}

CHandler CopyHandler(const CStepKind& kind) {
  return ForResult(kind.result, [](auto result) { return HandlerOf<CCopyWork<result()>>(); });
}

}  // namespace

bool IsComparison(int code) { return Has(CComparisons(), code); }
bool IsChainable(int code) { return Has(CChainables(), code); }

CHandler FindHandler(const CStepKind& kind) {
  using enum EFamily;
  switch (kind.family) {
    case operation:
      return OperationHandler(kind);
    case chain:
      return ChainHandler(kind);
    case pair:
      return PairHandler(kind);
    case logic:
      return LogicHandler(kind);
    case logicPair:
      return LogicPairHandler(kind);
    case select:
      return SelectHandler(kind);
    case test:
      return TestHandler(kind);
    case copy:
      return CopyHandler(kind);
    case jump:
      return HandlerOf<CJumpWork>();
    case stop:
      return reinterpret_cast<CHandler>(Stop);
  }
  return nullptr;
}

#ifdef VASTRA_TAIL_CALLS
const CStep* RunSteps(const CStep* step, double* registers) { return Function(step)(step, registers, 0.0); }
#else
const CStep* RunSteps(const CStep* step, double* registers) {
  double accumulator = 0.0;
  while (Function(step) != Stop) step = Function(step)(step, registers, accumulator);
  return step;
}
#endif

}  // namespace vastra
