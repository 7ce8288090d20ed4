// Statement lists typical of loggers, on samples of 16 inputs: run by an equator link, compiled into this
// program by its own compiler, and evaluated by muParser. All three must give the same floats, bit for bit,
// before they are timed.
#include <muParser.h>

#include <bit>
#include <cmath>
#include <cstdio>
#include <memory>

#include "bench/ratios.h"
#include "vastra/equations/equator.h"

// The lists. Each row has the name that a statement assigns and its right side, which must mean the same in
// the three languages: comparisons next to && and || are in parentheses. Variables keep their values from
// sample to sample; x0 to x15 are the inputs.
#define LIST_SCALING(S)               \
  S(0, T0, x0 * 0.1 - 40)             \
  S(1, T1, x1 * 0.1 - 40)             \
  S(2, T2, (x2 - 4) * 6.25)           \
  S(3, T3, (x3 - 4) * 6.25)           \
  S(4, Flow, x4 * 0.0125 + x5 * 0.25) \
  S(5, Level, x6 * 2.5 + 12.5)        \
  S(6, F, x7 * 1.8 + 32)              \
  S(7, Current, x8 / 27.648)          \
  S(8, Volt, x9 * 0.001)              \
  S(9, Power, x10* x11 * 0.001)       \
  S(10, Offset, x12 - 273.15)         \
  S(11, Rpm, x13 * 60 / 1024)

#define LIST_COUNTERS(S)                                     \
  S(0, n, n + 1)                                             \
  S(1, Sum, Sum + x0)                                        \
  S(2, Mean, Sum / n)                                        \
  S(3, Minutes, REST(n, 60) == 0 ? Minutes + 1 : Minutes)    \
  S(4, OnTime, x1 > 50 ? OnTime + 0.5 : OnTime)              \
  S(5, Since, x2 > 90 ? 0 : Since + 1)                       \
  S(6, Max, x3 > Max ? x3 : Max)                             \
  S(7, Edges, (x4 > 50) && (Last <= 50) ? Edges + 1 : Edges) \
  S(8, Last, x4)

#define LIST_CONDITIONALS(S)                                 \
  S(0, Limited, x0<20 ? 20 : x0> 80 ? 80 : x0)               \
  S(1, Heating, x1 > 80 ? 0 : x1 < 20 ? 1 : Heating)         \
  S(2, Larger, x2 > x3 ? x2 : x3)                            \
  S(3, Band, x4 > 75 ? 3 : x4 > 50 ? 2 : x4 > 25 ? 1 : 0)    \
  S(4, Dead, x5 - Dead > 2 ? x5 : Dead - x5 > 2 ? x5 : Dead) \
  S(5, Gain, x6 > 50 ? x6 * 1.5 - 20 : x6 * 0.5)             \
  S(6, Chosen, x7 > 50 ? x8 : x9)                            \
  S(7, Alarm, (x10 > 95) || (x11 > 95) ? 1 : 0)

#define LIST_ENABLE(S)                                    \
  S(0, SampleIsValid, (x0 > 0) && (x0 < 100) && (x1 > 0)) \
  S(1, WriteToLog, (x2 > 50) || (REST(n, 10) == 0))       \
  S(2, RestartLog, (x3 > 90) && (Before <= 90))           \
  S(3, Before, x3)                                        \
  S(4, n, n + 1)

#define LIST_MIXED(S)                                    \
  S(0, Mean, (x0 + x1 + x2 + x3) / 4)                    \
  S(1, Smooth, Smooth + 0.1 * (x4 - Smooth))             \
  S(2, Delta, x5 - Old)                                  \
  S(3, Old, x5)                                          \
  S(4, Level, x6 * 0.25 + x7 * 0.5 + x8 * 0.25)          \
  S(5, Share, x9 > 0 ? x10 / x9 * 100 : 0)               \
  S(6, Energy, Energy + x11 * x12 / 3600)                \
  S(7, Good, (Mean > 10) && (Mean < 90) && (Delta < 50)) \
  S(8, Count, Good != 0 ? Count + 1 : Count)             \
  S(9, Error, (Level - 50) * (Level - 50))

#define LIST_ROOTS(S)                          \
  S(0, Flow, 12.5 * sqrt(x0))                  \
  S(1, Steam, 3.2 * sqrt(x1 * x2))             \
  S(2, Apparent, sqrt(x3* x3 + x4 * x4))       \
  S(3, Weir, 1.37 * pow(x5, 2.48))             \
  S(4, Polytropic, x6* pow(x7 / 50 + 1, 0.29)) \
  S(5, Total, Total + Flow * 0.1)

#define LIST_WAVES(S)                            \
  S(0, Angle, Angle > 6.2831 ? 0 : Angle + 0.01) \
  S(1, Wave, x0* sin(Angle))                     \
  S(2, Other, x1* cos(Angle))                    \
  S(3, Sum, Wave + Other)                        \
  S(4, North, x2* cos(x3 * 0.01745))             \
  S(5, East, x2* sin(x3 * 0.01745))

#define LIST_LOGS(S)                                      \
  S(0, Vapour, 6.112 * exp(17.62 * x0 / (243.12 + x0)))   \
  S(1, Ln, log(x1 + 1))                                   \
  S(2, Dew, 243.12 * log(x2 + 1) / (17.62 - log(x2 + 1))) \
  S(3, Sound, 10 * log(x3 * x3 + 1))                      \
  S(4, Decay, Decay * 0.99 + exp(0 - x4 * 0.1))           \
  S(5, Ntc, x5 > 10 ? 3950 / (log(x5 / 10) + 13.25) - 273.15 : 0)

#define LISTS(L)                     \
  L(scaling, LIST_SCALING)           \
  L(counters, LIST_COUNTERS)         \
  L(conditionals, LIST_CONDITIONALS) \
  L(enable, LIST_ENABLE) L(mixed, LIST_MIXED) L(roots, LIST_ROOTS) L(waves, LIST_WAVES) L(logs, LIST_LOGS)

namespace vastra::bench {
namespace {

constexpr int kInputs = 16, kSamples = 64, kMaxVariables = 16;

struct CStatementText {
  std::string target, right;
};

// REST(a, b) is a % b in a statement.
double Rest(double left, double right) { return static_cast<int>(left) % static_cast<int>(right); }
#define REST(a, b) Rest(a, b)

// The lists as C++. Statements read and write variables as floats, and compute in double.
#define DECLARE(i, target, right) [[maybe_unused]] double target = static_cast<double>(kept[i]);
#define COMPUTE(i, target, right) target = static_cast<double>(kept[i] = static_cast<float>(right));
#define NATIVE(name, LIST)                                                                              \
  [[gnu::noinline]] void Native_##name(const float* x, float* kept) {                                   \
    [[maybe_unused]] const double x0 = x[0], x1 = x[1], x2 = x[2], x3 = x[3], x4 = x[4], x5 = x[5],     \
                                  x6 = x[6], x7 = x[7], x8 = x[8], x9 = x[9], x10 = x[10], x11 = x[11], \
                                  x12 = x[12], x13 = x[13], x14 = x[14], x15 = x[15];                   \
    LIST(DECLARE)                                                                                       \
    LIST(COMPUTE)                                                                                       \
  }
LISTS(NATIVE)
#undef REST

// The lists as text.
#define REST(a, b) (a % b)
#define QUOTE(text) #text
#define TEXT(i, target, right) {#target, QUOTE(right)},
#define TEXTS(name, LIST) const std::vector<CStatementText> kTexts_##name = {LIST(TEXT)};
LISTS(TEXTS)

// The same samples for all.
const std::vector<CArray<float, float>>& Samples() {
  static const auto samples = [] {
    std::vector<CArray<float, float>> made(kSamples);
    for (int i = 0; i < kSamples; ++i)
      for (int k = 0; k < kInputs; ++k)
        made[static_cast<std::size_t>(i)].Add(
            static_cast<float>(50.5 + 49.5 * std::sin(0.1 * i * (k % 5 + 1) + k)));
    return made;
  }();
  return samples;
}

// One list in one of the languages. Run returns the floats of all variables after a sample.
class CLanguage {
 public:
  virtual ~CLanguage() = default;
  virtual void Run(const CArray<float, float>& sample) = 0;
  virtual float GetValue(int variable) const = 0;
};

class COurs : public CLanguage {
 public:
  explicit COurs(const std::vector<CStatementText>& texts) {
    CStringArray inputs, equations;
    for (int i = 0; i < kInputs; ++i) inputs.Add(CString("x" + std::to_string(i)));
    for (const CStatementText& text : texts) equations.Add(CString(text.target + " = " + text.right));
    const CEquationFault fault = m_equator.Compile(inputs, equations);
    if (fault.statement) std::printf("statement %d, %d: %s\n", fault.statement, fault.offset, fault.text);
  }
  void Run(const CArray<float, float>& sample) override { m_equator.Run(sample); }
  float GetValue(int variable) const override {
    return m_equator.GetValue({}, static_cast<UINT>(kInputs + variable));
  }

 private:
  CEquator m_equator;
};

class CNative : public CLanguage {
 public:
  explicit CNative(void (*function)(const float*, float*)) : m_function(function) {}
  void Run(const CArray<float, float>& sample) override { m_function(sample.GetData(), m_kept); }
  float GetValue(int variable) const override { return m_kept[variable]; }

 private:
  void (*m_function)(const float*, float*);
  float m_kept[kMaxVariables] = {};
};

double MuRest(double left, double right) { return Rest(left, right); }
double MuLog(double value) { return std::log(value); }
double MuPow(double base, double exponent) { return std::pow(base, exponent); }

class CMuParser : public CLanguage {
 public:
  explicit CMuParser(const std::vector<CStatementText>& texts) {
    for (std::size_t i = 0; i < texts.size(); ++i) {
      mu::Parser& parser = m_parsers.emplace_back();
      parser.DefineOprt("%", MuRest, mu::prMUL_DIV, mu::oaLEFT);
      parser.DefineFun("log", MuLog);
      parser.DefineFun("pow", MuPow);
      for (int k = 0; k < kInputs; ++k) parser.DefineVar("x" + std::to_string(k), &m_inputs[k]);
      for (std::size_t k = 0; k < texts.size(); ++k) parser.DefineVar(texts[k].target, &m_variables[k]);
      parser.SetExpr(texts[i].right);
      parser.Eval();  // compiles
    }
  }
  void Run(const CArray<float, float>& sample) override {
    for (int i = 0; i < kInputs; ++i) m_inputs[i] = static_cast<double>(sample[i]);
    for (std::size_t i = 0; i < m_parsers.size(); ++i)
      m_variables[i] = static_cast<double>(static_cast<float>(m_parsers[i].Eval()));
  }
  float GetValue(int variable) const override { return static_cast<float>(m_variables[variable]); }

 private:
  std::vector<mu::Parser> m_parsers;
  double m_inputs[kInputs] = {};
  double m_variables[kMaxVariables] = {};
};

// Repeats the samples.
void Measure(benchmark::State& state, CLanguage& language) {
  std::size_t sample = 0;
  for (auto _ : state) {
    language.Run(Samples()[sample]);
    sample = (sample + 1) % kSamples;
    benchmark::ClobberMemory();
  }
}

struct CList {
  std::string name;
  const std::vector<CStatementText>* texts;
  void (*native)(const float*, float*);
};
#define ROW(name, LIST) {#name, &kTexts_##name, Native_##name},
const CList kLists[] = {LISTS(ROW)};

// Whether the three give the same floats for a thousand samples.
bool AreSame(const CList& list) {
  COurs ours(*list.texts);
  CNative native(list.native);
  CMuParser muParser(*list.texts);
  for (int i = 0; i < 1000; ++i) {
    for (CLanguage* language : {static_cast<CLanguage*>(&ours), static_cast<CLanguage*>(&native),
                                static_cast<CLanguage*>(&muParser)})
      language->Run(Samples()[static_cast<std::size_t>(i % kSamples)]);
    for (int k = 0; k < static_cast<int>(list.texts->size()); ++k) {
      const auto bits = [k](const CLanguage& language) { return std::bit_cast<UINT>(language.GetValue(k)); };
      if (bits(ours) == bits(native) && bits(ours) == bits(muParser)) continue;
      std::printf("%s, sample %d, %s: %.9g by us, %.9g natively, %.9g by muParser\n", list.name.c_str(), i,
                  (*list.texts)[static_cast<std::size_t>(k)].target.c_str(), ours.GetValue(k),
                  native.GetValue(k), muParser.GetValue(k));
      return false;
    }
  }
  return true;
}

template <class Language, class... Args>
void Register(const std::string& name, const Args&... args) {
  auto language = std::make_shared<Language>(args...);
  benchmark::RegisterBenchmark(name.c_str(),
                               [language](benchmark::State& state) { Measure(state, *language); });
}

}  // namespace
}  // namespace vastra::bench

int main(int argc, char** argv) {
  using namespace vastra::bench;
  CGoal native = {"statement lists: time beside the same compiled natively", {}, {}, 2.4, false};
  CGoal muParser = {"statement lists: speed beside muParser", {}, {}, 3, true};
  for (const CList& list : kLists) {
    if (!AreSame(list)) return 1;
    Register<COurs>("Ours/" + list.name, *list.texts);
    Register<CNative>("Native/" + list.name, list.native);
    Register<CMuParser>("MuParser/" + list.name, *list.texts);
    for (CGoal* goal : {&native, &muParser}) goal->ours.push_back("Ours/" + list.name);
    native.peers.push_back("Native/" + list.name);
    muParser.peers.push_back("MuParser/" + list.name);
  }
  return RunWithGoals(argc, argv, {native, muParser});
}
