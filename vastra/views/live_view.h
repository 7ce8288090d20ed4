// CLiveView: what the trend window and the scan grid have in common. Both show variables of the trending
// stage that the user has chosen: the host calls Refresh at its own pace, and Refresh takes the newest
// sample. Both let the user change the extra variables of that stage, and tell each other when that happens.
#pragma once

#include "vastra/core/sample.h"
#include "vastra/ui/dialog.h"
#include "vastra/views/name_index.h"
#include "vastra/views/selection_file.h"

namespace vastra {

class CLogInput;
class CLogTrendings;

// What one view has of its own for what both do.
struct CLiveViewKind {
  UINT limit;           // of variables that can be chosen
  const char* removed;  // what the user is told when some of them have gone
  const char *extension, *fileName, *filter;
};

class VASTRA_API CLiveView : public CDialog {
 public:
  // The variables of the stage have changed: takes their names anew from its options. Chosen ones that are
  // not there any more go, and the user is told.
  void ResetVarNames();

 protected:
  CLiveView(const CDialogTemplate& model, const CLiveViewKind& kind) : CDialog(model), m_kind(kind) {}

  // Maps the chosen names to the values of a sample; what is lost goes. Nothing is refreshed meanwhile.
  void CalcVarIndex();
  virtual void OnNamesLost() {}            // m_selected is shorter now
  virtual void OnIndexed() {}              // m_index is good
  virtual void OnNamesReset() {}           // ResetVarNames has done its work
  virtual void RedrawAll() = 0;            // soon or at once
  virtual CLiveView* Sibling() const = 0;  // the other view; null: it is not open

  // Takes the newest sample and hands each value that is there to take, with its place in m_index.
  template <class TAKE>
  void EachValue(TAKE take) {
    if (!ReadSample()) return;
    const auto count = static_cast<UINT>(m_sample.m_values.GetSize());
    for (int i = 0; i < m_index.GetSize(); ++i)
      if (m_index[i] < count) take(i, m_sample.m_values[static_cast<int>(m_index[i])]);
  }
  int ReadSample();  // 0: there is none, or one without values

  // A button's handler. The window may go while a box of the handler is open; the object outlives it.
  void OnButton(const char* caption, std::function<void()> handler);
  // The object goes, as soon as nothing runs in it.
  void PostNcDestroy() override;

  // What buttons do. EditSelection: 1, or 0 if the selection stays as it was.
  int EditSelection();
  void Configure();
  void ToggleFreeze();
  int AskFile(bool save, CString& path) const;

  static void Tell(const char* text);  // null: nothing to tell

  CLogInput* m_pInput = nullptr;
  CLogTrendings* m_pTrendings = nullptr;
  CLogSample m_sample;      // the newest
  CStringArray m_allNames;  // in the order of its values
  CStringArray m_selected;  // chosen ones
  CUIntArray m_index;       // for each of these its place in m_allNames
  int m_ready = 1;          // 0: the tables are being rebuilt, Refresh does nothing
  int m_frozen = 0;

 private:
  class CStay;
  void TakeNames();
  void ReopenStage(const CStringArray& extraVars);

  const CLiveViewKind& m_kind;
  bool m_isBusy = false;  // something runs in it
  bool m_isGone = false;  // the window is
};

}  // namespace vastra
