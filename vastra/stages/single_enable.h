// The enable equations of one log output or of one summary: on each sample they compute three flags, which a
// buffer link keeps until they are read. A flag is set if its value, truncated to an integer, is not 0: 0.9
// is not set, -1.0 is.
#pragma once

#include "vastra/config/enable_config.h"
#include "vastra/stages/log_facade.h"

namespace vastra {

class CFileLink;
class CLink;

// The names of the flags; Flag uses their indexes.
inline constexpr const char* kLogFlags[3] = {"SampleIsValid", "WriteToLog", "RestartLog"};
inline constexpr const char* kSummaryFlags[3] = {"SampleIsValid", "WriteToSummary", "RestartSummary"};

// The common part of the enable objects. The flags are accessed by index.
class VASTRA_API CSingleEnable : public CLogFacade {
 public:
  ~CSingleEnable() override { Close(); }

  // Builds and opens the chain for samples of names; an open object is closed first.
  int Open(CStringArray& names);
  void Close();
  // Runs the equations on sample: 0 on a closed object, otherwise the result of the chain.
  int Verify(CLogSample& sample);
  CEnableConfig* GetOptions() { return &m_options; }

 protected:
  // flags are the names of the three flags.
  explicit CSingleEnable(const char* const (&flags)[3]) : m_flags(flags) {}
  // The flag at index place, as an integer, computed from the last sample; 0 on a closed object and before
  // the first sample. Each call reads the buffer link, so its messages appear in the console's trace.
  int Flag(int place);

 private:
  const char* const (&m_flags)[3];
  CLink* m_pHeadLink = nullptr;      // the equator, owned
  CFileLink* m_pFileLink = nullptr;  // the buffer, in the chain
  CEnableConfig m_options;
  CLogSample m_answer;  // from the buffer; a member to reuse its memory
};

class VASTRA_API CLogSingleEnable : public CSingleEnable {
 public:
  CLogSingleEnable();
  int WriteToLog() { return Flag(1); }
  int RestartLog() { return Flag(2); }
};

class VASTRA_API CSummarySingleEnable : public CSingleEnable {
 public:
  CSummarySingleEnable();
  int IsSampleValid() { return Flag(0); }
  int WriteToSummary() { return Flag(1); }
  int RestartSummary() { return Flag(2); }
};

}  // namespace vastra
