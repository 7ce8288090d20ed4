// The chain itself. Calls: the cost of the contract of a link, four links deep with all messages filtered,
// compared with four bare virtual calls. Work: guard, scale, select and store 100 values by four links,
// compared with one plain function with the same tables. Samples pass from the outside in, as in an output.
#include "bench/ratios.h"
#include "vastra/core/mapper_link.h"
#include "vastra/core/namer_link.h"
#include "vastra/core/scaler_link.h"

namespace vastra::bench {
namespace {

constexpr int kValues = 100;

CString Name(int i) {
  CString name;
  name.Format("Value%d", i);
  return name;
}

CStringArray Names(bool backwards) {
  CStringArray names;
  for (int i = 0; i < kValues; ++i) names.Add(Name(backwards ? kValues - 1 - i : i));
  return names;
}

void Fill(CLogSample& sample) {
  sample.m_values.SetSize(kValues);
  for (int i = 0; i < kValues; ++i) sample.m_values[i] = static_cast<float>(i) * 0.37f - 9;
}

// ---- four links

// The leaf: keeps the last sample, or only counts its calls.
class CStoreLink : public CLink {
 public:
  explicit CStoreLink(bool keeps) : CLink(kTypeName), m_keeps(keeps) {}

  int Write(CLogSample& sample) override {
    Begin(functionWrite);
    if (m_keeps) m_sample = sample;
    return End(functionWrite);
  }
  int Read(CLogSample&) override { return 0; }
  int GetVarNames(CStringArray& names) override { return GiveVarNames(Names(true), names); }
  int Open(CTypedPtrList<CObList, CLinkConfig*>& configs, UINT mode) override {
    BeginOpen();
    TakeConfig(configs, RUNTIME_CLASS(CLinkConfig), fault::badConfig);
    m_mode = mode;
    return End(functionOpen);
  }

 private:
  inline static const CString kTypeName = "CStoreLink";
  const bool m_keeps;
  CLogSample m_sample;
};

CNameConfig* NameConfig() {
  auto* config = new CNameConfig;
  config->m_names = Names(false);
  return config;
}

// A factor of -1 keeps the values in their range however often they are scaled.
CScalerConfig* ScalerConfig() {
  auto* config = new CScalerConfig;
  for (int i = 0; i < kValues; ++i) {
    CScalerConfigNode rule;
    rule.m_varName = Name(i);
    rule.m_scale = -1;
    rule.m_clamping = 1;
    rule.m_lowLimit = -1000;
    rule.m_highLimit = 1000;
    config->m_nodes.Add(rule);
  }
  return config;
}

void Drive(benchmark::State& state, CLink& chain, CLinkConfigList& configs) {
  if (!chain.Open(configs, CLink::modeWrite)) return state.SkipWithError("the chain does not open");
  CLogSample sample;
  Fill(sample);
  for (auto _ : state) benchmark::DoNotOptimize(chain.Write(sample));
}

CMessenger& Messenger() {
  static CMessenger messenger;
  CLink::SetMessenger(&messenger);
  return messenger;
}

void CallsOfLinks(benchmark::State& state) {
  Messenger();
  const std::unique_ptr<CLink> chain(
      CNamerLink::Create(CNamerLink::Create(CNamerLink::Create(new CStoreLink(false)))));
  CLinkConfigList configs;
  for (int i = 0; i < 3; ++i) configs.AddTail(NameConfig());
  configs.AddTail(new CLinkConfig);
  Drive(state, *chain, configs);
}

void WorkOfLinks(benchmark::State& state) {
  Messenger();
  const std::unique_ptr<CLink> chain(
      CNamerLink::Create(CScalerLink::Create(CMapperLink::Create(new CStoreLink(true)))));
  CLinkConfigList configs;
  configs.AddTail(NameConfig());
  configs.AddTail(ScalerConfig());
  configs.AddTail(NameConfig());
  configs.AddTail(new CLinkConfig);
  Drive(state, *chain, configs);
}

// ---- the peers

// A step without the contract: a virtual call and a check of the result.
class CBare {
 public:
  virtual ~CBare() = default;
  virtual int Write(CLogSample& sample) = 0;
};

class CBareStep : public CBare {
 public:
  explicit CBareStep(CBare& next) : m_next(next) {}
  __attribute__((noipa)) int Write(CLogSample& sample) override { return m_next.Write(sample) ? 1 : 0; }

 private:
  CBare& m_next;
};

class CBareLeaf : public CBare {
 public:
  __attribute__((noipa)) int Write(CLogSample&) override { return 1; }
};

void CallsBare(benchmark::State& state) {
  CBareLeaf leaf;
  CBareStep third(leaf), second(third), first(second);
  CBare* chain = &first;
  benchmark::DoNotOptimize(chain);
  CLogSample sample;
  Fill(sample);
  for (auto _ : state) benchmark::DoNotOptimize(chain->Write(sample));
}

struct CPlainRule {
  int index;
  float scale, low, high;
};

struct CPlain {
  std::vector<CPlainRule> rules;
  std::vector<int> map;
  std::vector<float> store;
  _timeb time;
};

__attribute__((noinline)) int PlainWrite(CPlain& plain, CLogSample& sample) {
  if (sample.m_values.GetSize() != static_cast<int>(plain.map.size())) return 0;
  float* values = sample.m_values.GetData();
  for (const CPlainRule& rule : plain.rules) {
    const double result = static_cast<double>(values[rule.index]) * static_cast<double>(rule.scale);
    float& value = values[rule.index];
    if (result > static_cast<double>(rule.high))
      value = rule.high;
    else
      value = result >= static_cast<double>(rule.low) ? static_cast<float>(result) : rule.low;
  }
  for (std::size_t i = 0; i < plain.map.size(); ++i)
    plain.store[i] = plain.map[i] < 0 ? 0 : values[plain.map[i]];
  plain.time = sample.m_time;
  return 1;
}

void WorkPlain(benchmark::State& state) {
  CPlain plain;
  for (int i = 0; i < kValues; ++i) {
    plain.rules.push_back({i, -1, -1000, 1000});
    plain.map.push_back(kValues - 1 - i);
  }
  plain.store.resize(kValues);
  CLogSample sample;
  Fill(sample);
  for (auto _ : state) benchmark::DoNotOptimize(PlainWrite(plain, sample));
}

BENCHMARK(CallsOfLinks);
BENCHMARK(CallsBare);
BENCHMARK(WorkOfLinks);
BENCHMARK(WorkPlain);

}  // namespace
}  // namespace vastra::bench

int main(int argc, char** argv) {
  return vastra::bench::RunWithGoals(
      argc, argv,
      {{"calls and filtered messages of four links : bare calls", {"CallsOfLinks"}, {"CallsBare"}, 5, false},
       {"guard, scale, select, store by links : a plain function",
        {"WorkOfLinks"},
        {"WorkPlain"},
        1.6,
        false}});
}
