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
using CFunction = const CStep* (*)(const CStep* step, double* file, float* values, CRunning running);

CFunction Function(const CStep* step) { return reinterpret_cast<CFunction>(step->run); }

// A work has one static function Do, which does a step and gives the step that follows.
template <class Work>
const CStep* Handle(const CStep* step, double* file, float* values, CRunning running) {
  const CStep* next = Work::Do(step, file, values, running);
#if defined(VASTRA_TAIL_CALLS) && defined(__clang__)
  [[clang::musttail]] return Function(next)(next, file, values, running);
#elif defined(VASTRA_TAIL_CALLS)
  return Function(next)(next, file, values, running);
#else
  return next;
#endif
}

template <class Work>
CHandler HandlerOf() {
  return reinterpret_cast<CHandler>(static_cast<CFunction>(Handle<Work>));
}

template <CResult result>
inline void Put(const CStep* step, double* file, float* values, double& running, double made) {
  if constexpr (result == CResult::toRunning) running = made;
  if constexpr (result == CResult::toTemporary) file[step->to] = made;
  if constexpr (result == CResult::toVariable)
    file[step->to] = static_cast<double>(values[step->to] = static_cast<float>(made));
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

template <class Operation, CSource source, CResult result>
struct COperationWork {
  static const CStep* Do(const CStep* step, double* file, float* values, double& running) {
    const double op1 = Right<Operation, source>(step, file, running);
    const double op2 = Left<Operation, source>(step, file, running);
    if (Operation::kMayFail && Operation::IsUndefined(op1, op2)) [[unlikely]]
      return step + step->jump;
    Put<result>(step, file, values, running, Operation::Result(op1, op2));
    return step + 1;
  }
};

template <class Inner, class Outer, bool isInnerRight, bool isRunning, CResult result>
struct CChainWork {
  static const CStep* Do(const CStep* step, double* file, float* values, double& running) {
    const double inner = Inner::Result(file[step->a], file[step->b]);
    const double other = isRunning ? running : file[step->c];
    Put<result>(step, file, values, running,
                isInnerRight ? Outer::Result(inner, other) : Outer::Result(other, inner));
    return step + 1;
  }
};

template <class Comparison, class Logic, CResult result>
struct CLogicWork {
  static const CStep* Do(const CStep* step, double* file, float* values, double& running) {
    const double holds = Comparison::Result(file[step->a], file[step->b]);
    Put<result>(step, file, values, running, Logic::Result(holds, running));
    return step + 1;
  }
};

template <class Comparison, bool isSum, CResult result>
struct CSelectWork {
  static const CStep* Do(const CStep* step, double* file, float* values, double& running) {
    const bool holds = Comparison::Result(file[step->a], file[step->b]) != 0.0;
    const double chosen = file[holds ? step->c : step->d];
    Put<result>(step, file, values, running, isSum ? chosen + 0.0 : chosen);
    return step + 1;
  }
};

template <class Comparison, CSource source>
struct CTestWork {
  static const CStep* Do(const CStep* step, double* file, float*, double& running) {
    const double op1 = Right<Comparison, source>(step, file, running);
    const double op2 = Left<Comparison, source>(step, file, running);
    return Comparison::Result(op1, op2) != 0.0 ? step + 1 : step + step->jump;
  }
};

template <CSource source>
struct CTestZeroWork {
  static const CStep* Do(const CStep* step, double* file, float*, double& running) {
    const double tested = source == CSource::fromFile ? file[step->a] : running;
    return tested == 0.0 ? step + step->jump : step + 1;
  }
};

template <CResult result>
struct CCopyWork {
  static const CStep* Do(const CStep* step, double* file, float* values, double& running) {
    Put<result>(step, file, values, running, file[step->a]);
    return step + 1;
  }
};

struct CJumpWork {
  static const CStep* Do(const CStep* step, double*, float*, double&) { return step + step->jump; }
};

const CStep* Stop(const CStep* step, double*, float*, CRunning) { return step; }

// From a value known when a statement is lowered to one known when this file is compiled: calls make with the
// operation of a code, with a result or with a truth as a type. Null if the code is none of these.
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

using CComparisons = COperations<COperationLess, COperationGreater, COperationLessEqual,
                                 COperationGreaterEqual, COperationEqual, COperationNotEqual>;
using CChainables = COperations<COperationPlus, COperationMinus, COperationTimes>;
using CLogics = COperations<COperationLogicAnd, COperationLogicOr>;
struct CNothing {
  static constexpr int kCode = opNone;
};
#define VASTRA_COMMA_OPERATION(number, Name, ...) , COperation##Name
using CAllOperations = COperations<CNothing VASTRA_OPERATIONS(VASTRA_COMMA_OPERATION)>;
#undef VASTRA_COMMA_OPERATION

CHandler OperationHandler(const CStepKind& kind) {
  return ForCode(CAllOperations(), kind.code, [&]<class Operation>(Operation) -> CHandler {
    if constexpr (Operation::kCode == opNone) {
      return nullptr;
    } else {
      return ForSource<Operation::kOperands>(kind.source, [&](auto source) {
        return ForResult(kind.result, [&](auto result) {
          return HandlerOf<COperationWork<Operation, source(), result()>>();
        });
      });
    }
  });
}

CHandler ChainHandler(const CStepKind& kind) {
  return ForCode(CChainables(), kind.code, [&]<class Inner>(Inner) {
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

CHandler LogicHandler(const CStepKind& kind) {
  return ForCode(CComparisons(), kind.code, [&]<class Comparison>(Comparison) {
    return ForCode(CLogics(), kind.outer, [&]<class Logic>(Logic) {
      return ForResult(kind.result,
                       [&](auto result) { return HandlerOf<CLogicWork<Comparison, Logic, result()>>(); });
    });
  });
}

CHandler SelectHandler(const CStepKind& kind) {
  return ForCode(CComparisons(), kind.code, [&]<class Comparison>(Comparison) {
    return ForTruth(kind.family == CFamily::selectSum, [&](auto isSum) {
      return ForResult(kind.result,
                       [&](auto result) { return HandlerOf<CSelectWork<Comparison, isSum(), result()>>(); });
    });
  });
}

CHandler TestHandler(const CStepKind& kind) {
  return ForCode(CComparisons(), kind.code, [&]<class Comparison>(Comparison) {
    return ForSource<2>(kind.source,
                        [&](auto source) { return HandlerOf<CTestWork<Comparison, source()>>(); });
  });
}

template <class... Operations>
bool Has(COperations<Operations...>, int code) {
  return ((Operations::kCode == code) || ...);
}

}  // namespace

bool IsComparison(int code) { return Has(CComparisons(), code); }
bool IsChainable(int code) { return Has(CChainables(), code); }

CHandler FindHandler(const CStepKind& kind) {
  switch (kind.family) {
    case CFamily::operation:
      return OperationHandler(kind);
    case CFamily::chain:
      return ChainHandler(kind);
    case CFamily::logic:
      return LogicHandler(kind);
    case CFamily::select:
    case CFamily::selectSum:
      return SelectHandler(kind);
    case CFamily::test:
      return TestHandler(kind);
    case CFamily::testZero:
      return ForSource<1>(kind.source, [](auto source) { return HandlerOf<CTestZeroWork<source()>>(); });
    case CFamily::copy:
      return ForResult(kind.result, [](auto result) { return HandlerOf<CCopyWork<result()>>(); });
    case CFamily::jump:
      return HandlerOf<CJumpWork>();
    case CFamily::stop:
      break;
  }
  return reinterpret_cast<CHandler>(Stop);
}

#ifdef VASTRA_TAIL_CALLS
const CStep* RunSteps(const CStep* step, double* file, float* values) {
  return Function(step)(step, file, values, 0.0);
}
#else
const CStep* RunSteps(const CStep* step, double* file, float* values) {
  double running = 0.0;
  while (Function(step) != Stop) step = Function(step)(step, file, values, running);
  return step;
}
#endif

}  // namespace vastra
