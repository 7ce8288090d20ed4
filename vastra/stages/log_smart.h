// CLogSmart: where logic of the host meets the samples. On its input side it computes a set of variables from
// each sample and keeps their newest values, which the logic reads by index. On its output side lies a set of
// further variables, which the logic writes by index; the stage gives each sample out with them behind its
// own.
//
//   Write(sample)   the equations run on the sample; a copy of it is kept
//   the logic       ReadInputVar, then WriteOutputVar; what is not written again keeps its value
//   Read(sample)    the copy, with its time, and the output variables behind it
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

  // names are those of the samples to come; none of them may be an output variable too. All output variables
  // start at 0.0. On 0 the stage is closed.
  int Open(CStringArray& names);
  void Close();

  int Write(CLogSample& sample);
  int Read(CLogSample& sample);

  // The names of the samples that Read gives: those of Open, then the output variables; 0 on a closed stage.
  int GetVarNames(CStringArray& names);
  // The same from a closed stage, for samples of names; 0 on an open one, which stays open.
  int PreGetVarNames(CStringArray& result, CStringArray& names);

  // The place of name among the input or output variables of the configuration, open or not: 1, or 0 with
  // index 0. The logic asks once after Open and uses the numbers from then on.
  int GetInputIndex(CString& name, UINT& index) const;
  int GetOutputIndex(CString& name, UINT& index) const;

  // The value at an index; 0, with value left alone, on a closed stage, beyond the last variable, and for an
  // input before the first Write.
  int ReadInputVar(UINT index, float& value);
  int ReadOutputVar(UINT index, float& value);
  int WriteOutputVar(UINT index, float value);

  // The input and output variables of the open stage; 0 on a closed one.
  int GetSAInputVars(CStringArray& names);
  int GetSAOutputVars(CStringArray& names);
  // Those of the configuration, open or not. Always 1.
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
  CLink* m_pInputEquatorLink = nullptr;    // in front of them, owned
};

}  // namespace vastra
