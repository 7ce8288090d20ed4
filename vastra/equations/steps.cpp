#include "vastra/equations/steps.h"

#include <type_traits>

#include "vastra/equations/opcodes.h"

namespace vastra {
namespace {

// Does one step and all that follow it up to a stop, which it gives; or, driven by a loop, gives the next
// one. running: what the last step made.
#ifdef VASTRA_TAIL_CALLS
using CRunning = double;
#else
using CRunning = double&;
#endif
using CFunction = const CStep* (*)(const CStep* step, double* file, CRunning running);
CFunction Function(const CStep* step) { return reinterpret_cast<CFunction>(step->run); }

// A work has one static function Do, which does a step and gives the step that follows.
template <class Work>
const CStep* Handle(const CStep* step, double* file, CRunning running) {
  const CStep* next = Work::Do(step, file, running);
#if defined(VASTRA_TAIL_CALLS) && defined(__clang__)
  [[clang::musttail]] return Function(next)(next, file, running);
#elif defined(VASTRA_TAIL_CALLS)
  return Function(next)(next, file, running);
#else
  return next;
#endif
}

const CStep* Stop(const CStep* step, double*, CRunning) { return step; }

template <class Work>
CHandler HandlerOf() {
  return reinterpret_cast<CHandler>(static_cast<CFunction>(Handle<Work>));
}

template <CResult result>
void Put(const CStep* step, double* file, double& running, double made) {
  if constexpr (result == CResult::toRunning) running = made;
  if constexpr (result == CResult::toTemporary) file[step->to] = made;
  if constexpr (result == CResult::toVariable) file[step->to] = static_cast<double>(static_cast<float>(made));
}

template <class Operation, CSource source>
double Right(const CStep* step, const double* file, double running) {
  if constexpr (Operation::kOperands == 0) return 0.0;
  return source == CSource::rightRunning ? running : file[step->a];
}
template <class Operation, CSource source>
double Left(const CStep* step, const double* file, double running) {
  if constexpr (Operation::kOperands < 2) return 0.0;
  return source == CSource::leftRunning ? running : file[step->b];
}
template <class Comparison, CSource source>
bool Holds(const CStep* step, const double* file, double running) {
  return Comparison::Raw(Right<Comparison, source>(step, file, running),
                         Left<Comparison, source>(step, file, running));
}

template <class Operation, CSource source, CResult result>
struct COperationWork {
  static const CStep* Do(const CStep* step, double* file, double& running) {
    const double op1 = Right<Operation, source>(step, file, running);
    const double op2 = Left<Operation, source>(step, file, running);
    if (Operation::kMayFail && Operation::IsUndefined(op1, op2)) [[unlikely]]
      return step + step->jump;
    Put<result>(step, file, running, Operation::Result(op1, op2));
    return step + 1;
  }
};

template <class Inner, class Outer, bool isInnerRight, bool isRunning, CResult result>
struct CChainWork {
  static const CStep* Do(const CStep* step, double* file, double& running) {
    const double inner = Inner::Result(file[step->a], file[step->b]);
    const double other = isRunning ? running : file[step->c[0]];
    Put<result>(step, file, running,
                isInnerRight ? Outer::Result(inner, other) : Outer::Result(other, inner));
    return step + 1;
  }
};

template <class Left, class Outer, class Right, CResult result>
struct CPairWork {
  static const CStep* Do(const CStep* step, double* file, double& running) {
    const double left = Left::Result(file[step->a], file[step->b]);
    const double right = Right::Result(file[step->c[0]], file[step->c[1]]);
    Put<result>(step, file, running, Outer::Result(right, left));
    return step + 1;
  }
};

template <class Logic>
double Both(bool left, bool right) {
  return AsDouble(Logic::kCode == opLogicAnd ? left & right : left | right);
}

template <class Comparison, class Logic, CResult result>
struct CLogicWork {
  static const CStep* Do(const CStep* step, double* file, double& running) {
    const bool holds = Holds<Comparison, CSource::fromFile>(step, file, running);
    Put<result>(step, file, running, Both<Logic>(holds, running != 0.0));
    return step + 1;
  }
};

template <class First, class Second, class Logic, CResult result>
struct CLogicPairWork {
  static const CStep* Do(const CStep* step, double* file, double& running) {
    const bool first = Holds<First, CSource::fromFile>(step, file, running);
    const bool second = Second::Raw(file[step->c[0]], file[step->c[1]]);
    Put<result>(step, file, running, Both<Logic>(first, second));
    return step + 1;
  }
};

// Without a branch: which side is taken is seldom foreseeable.
template <class Comparison, CSource source, CResult result>
struct CSelectWork {
  static const CStep* Do(const CStep* step, double* file, double& running) {
    const bool holds = Holds<Comparison, source>(step, file, running);
    Put<result>(step, file, running, file[step->c[holds]] + file[step->d[holds]]);
    return step + 1;
  }
};

template <class Comparison, CSource source>
struct CTestWork {
  static const CStep* Do(const CStep* step, double* file, double& running) {
    return Holds<Comparison, source>(step, file, running) ? step + 1 : step + step->jump;
  }
};

template <CResult result>
struct CCopyWork {
  static const CStep* Do(const CStep* step, double* file, double& running) {
    Put<result>(step, file, running, file[step->a]);
    return step + 1;
  }
};

struct CJumpWork {
  static const CStep* Do(const CStep* step, double*, double&) { return step + step->jump; }
};

// From a value known when a statement is lowered to one known when this file is compiled: each of these calls
// make with the operation of a code, with a source, a result or a truth, as a type. Null if there is none.
template <class... Operations>
struct COperations {};
template <class... Operations, class Make>
CHandler ForCode(COperations<Operations...>, int code, Make make) {
  CHandler handler = nullptr;
  ((Operations::kCode == code ? void(handler = make(Operations())) : void()), ...);
  return handler;
}
template <class Make>
CHandler ForResult(CResult result, Make make) {
  using enum CResult;
  if (result == toRunning) return make(std::integral_constant<CResult, toRunning>());
  if (result == toTemporary) return make(std::integral_constant<CResult, toTemporary>());
  return make(std::integral_constant<CResult, toVariable>());
}
template <class Make>
CHandler ForTruth(bool truth, Make make) {
  return truth ? make(std::true_type()) : make(std::false_type());
}
// count: how many operands the operation has.
template <int count, class Make>
CHandler ForSource(CSource source, Make make) {
  using enum CSource;
  if (source == fromFile) return make(std::integral_constant<CSource, fromFile>());
  if constexpr (count > 0)
    if (source == rightRunning) return make(std::integral_constant<CSource, rightRunning>());
  if constexpr (count > 1)
    if (source == leftRunning) return make(std::integral_constant<CSource, leftRunning>());
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
        return ForTruth(kind.source != CSource::fromFile, [&](auto isRunning) {
          return ForResult(kind.result, [&](auto result) {
            return HandlerOf<CChainWork<Inner, Outer, isRight(), isRunning(), result()>>();
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
  using enum CFamily;
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
const CStep* RunSteps(const CStep* step, double* file) { return Function(step)(step, file, 0.0); }
#else
const CStep* RunSteps(const CStep* step, double* file) {
  double running = 0.0;
  while (Function(step) != Stop) step = Function(step)(step, file, running);
  return step;
}
#endif

}  // namespace vastra
