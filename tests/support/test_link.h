// CTestLink: a leaf link for tests. It has the names of its configuration, reads and writes m_sample, and
// fails on request.
#pragma once

#include "vastra/core/link.h"

namespace vastra {

class CTestConfig : public CLinkConfig {
  DECLARE_DYNAMIC(CTestConfig)
 public:
  CStringArray m_names;
};
inline IMPLEMENT_DYNCREATE(CTestConfig, CLinkConfig);

class CTestLink : public CLink {
 public:
  CTestLink() : CLink(kTypeName) {}
  ~CTestLink() override { CTestLink::Close(); }

  int Write(CLogSample& sample) override {
    Begin(functionWrite);
    if (m_fails) return Fail(functionWrite, kTimeout);
    m_sample = sample;
    return End(functionWrite);
  }
  int Read(CLogSample& sample) override {
    Begin(functionRead);
    if (m_fails) return Fail(functionRead, kTimeout);
    sample.m_time = m_sample.m_time;
    sample.m_values = m_sample.m_values;
    return End(functionRead);
  }
  int GetVarNames(CStringArray& names) override {
    return m_nameless ? Fail(functionGetVarNames, kTimeout) : GiveVarNames(m_names, names);
  }
  void Close() override {
    Begin(functionClose);
    m_mode = modeNotOpened;
    End(functionClose);
  }
  int Open(CTypedPtrList<CObList, CLinkConfig*>& configs, UINT mode) override {
    BeginOpen();
    const auto config = TakeConfig(configs, RUNTIME_CLASS(CTestConfig), fault::badConfig);
    if (!config) return 0;
    m_names = static_cast<CTestConfig&>(*config).m_names;
    m_mode = mode;
    return End(functionOpen);
  }

  CLogSample m_sample;      // Read copies from it, Write copies to it
  bool m_fails = false;     // Read and Write fail
  bool m_nameless = false;  // GetVarNames fails

 private:
  inline static const CString kTypeName = "CTestLink";
  static constexpr CFault kTimeout = {severityError, "Timeout error."};

  CStringArray m_names;
};

}  // namespace vastra
