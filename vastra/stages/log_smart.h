// CLogSmart: connects logic of the host to the samples. On its input side it computes variables from each
// sample and keeps their newest values, which the logic reads by index. On its output side it keeps further
// variables, which the logic writes by index; the stage appends them to each sample that it returns.
//
//   Write(sample)   the equations run on the sample; the stage keeps a copy of it
//   the logic       ReadInputVar, then WriteOutputVar; a variable that is not written keeps its value
//   Read(sample)    the copy, with its time, followed by the output variables
#pragma once

#include "vastra/config/smart_config.h"
#include "vastra/stages/log_facade.h"

namespace vastra {

class CFileLink;
class CLink;

class VASTRA_API CLogSmart : public CLogFacade {
 public:
  CLogSmart() = default;
  ~CLogSmart() override { Close(); }

  // names are those of the samples to come; none of them may also be an output variable. All output variables
  // start at 0.0. On 0 the stage is closed.
  int Open(CStringArray& names);
  void Close();

  int Write(CLogSample& sample);
  int Read(CLogSample& sample);

  // The names of the samples from Read: those of Open, then the output variables; 0 on a closed stage.
  int GetVarNames(CStringArray& names);
  // The same from a closed stage, for samples of names; 0 on an open stage, which stays open.
  int PreGetVarNames(CStringArray& result, CStringArray& names);

  // The index of name among the input or output variables of the configuration, also on a closed stage: 1, or
  // 0 with index 0. The logic asks once after Open and then uses the numbers.
  int GetInputIndex(CString& name, UINT& index) const;
  int GetOutputIndex(CString& name, UINT& index) const;

  // The value at an index; 0, with value unchanged, on a closed stage, beyond the last variable, and for an
  // input before the first Write.
  int ReadInputVar(UINT index, float& value);
  int ReadOutputVar(UINT index, float& value);
  int WriteOutputVar(UINT index, float value);

  // The input and output variables of the open stage; 0 on a closed one.
  int GetSAInputVars(CStringArray& names);
  int GetSAOutputVars(CStringArray& names);
  // Those of the configuration, also on a closed stage. Always 1.
  int GetSAInputVarsNotConnected(CStringArray& names) const;
  int GetSAOutputVarsNotConnected(CStringArray& names) const;

  CSmartConfig* GetOptions() { return &m_options; }
  void ClearConfiguration() { m_options.Clear(); }

 private:
  bool OpenInput(const CStringArray& names);
  bool OpenOutput(const CStringArray& names);
  bool ClearOutputVars();

  CSmartConfig m_options;
  CLink* m_pOutputConcatLink = nullptr;    // joins the next two, owned
  CFileLink* m_pOutputFileLink = nullptr;  // the output variables
  CFileLink* m_pCopyFileLink = nullptr;    // the copy of the sample
  CFileLink* m_pInputFileLink = nullptr;   // the input variables
  CLink* m_pInputEquatorLink = nullptr;    // computes them, owned
};

}  // namespace vastra
