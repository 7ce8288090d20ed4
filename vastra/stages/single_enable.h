// The enable equations of one log output or of one summary: on each sample they compute three flags that
// lie in a buffer link until they are asked for. A flag counts as set if its value, cut to an integer towards
// zero, is not 0: 0.9 is not set, -1.0 is.
#pragma once

#include "vastra/config/enable_config.h"
#include "vastra/stages/log_facade.h"

namespace vastra {

class CFileLink;
class CLink;

// The names of the flags, in their places.
inline constexpr const char* kLogFlags[3] = {"SampleIsValid", "WriteToLog", "RestartLog"};
inline constexpr const char* kSummaryFlags[3] = {"SampleIsValid", "WriteToSummary", "RestartSummary"};

// What the enable objects have in common. The three flags go by their place.
class VASTRA_API CSingleEnable : public CLogFacade {
 public:
  ~CSingleEnable() override { Close(); }

  // Builds and opens the chain for samples of names; an open object closes first.
  int Open(CStringArray& names);
  void Close();
  // Runs the equations on sample: 0 on a closed object, else the result of the chain.
  int Verify(CLogSample& sample);
  CEnableConfig* GetOptions() { return &m_options; }

 protected:
  // flags are the names of the three flags.
  explicit CSingleEnable(const char* const (&flags)[3]) : m_flags(flags) {}
  // The flag at place, as an integer, as the last sample made it; 0 on a closed object and before the first
  // sample. Each question reads the buffer link, which leaves its lines in the console's trace.
  int Flag(int place);

 private:
  const char* const (&m_flags)[3];
  CLink* m_pHeadLink = nullptr;      // the equator, owned
  CFileLink* m_pFileLink = nullptr;  // the buffer, in the chain
  CEnableConfig m_options;
  CLogSample m_answer;  // of the last question, kept for its memory
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
