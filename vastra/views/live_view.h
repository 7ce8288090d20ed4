// CLiveView: the common part of the trend window and the scan grid. Both show variables of the trending stage
// that the user has selected. The host calls Refresh, which reads the newest sample. In both the user can
// change the extra variables of the stage; then they update each other.
#pragma once

#include "vastra/core/sample.h"
#include "vastra/ui/dialog.h"
#include "vastra/views/name_index.h"
#include "vastra/views/selection_file.h"

namespace vastra {

class CLogInput;
class CLogTrendings;

// The differences between the views.
struct CLiveViewKind {
  UINT limit;           // of selected variables
  const char* removed;  // message when selected variables were removed
  const char *extension, *fileName, *filter;
};

class VASTRA_API CLiveView : public CDialog {
 public:
  // Called when the variables of the stage have changed: reads their names from its options, removes selected
  // variables that do not exist any more, and tells the user.
  void ResetVarNames();
  // After Create: the user cannot change the extra variables.
  void ForbidChanges() { Button("Config").EnableWindow(0); }

 protected:
  CLiveView(const CDialogTemplate& model, const CLiveViewKind& kind) : CDialog(model), m_kind(kind) {}

  // Maps the selected names to the values of a sample and removes those that do not exist. Refresh does
  // nothing meanwhile.
  void CalcVarIndex();
  virtual void OnNamesLost() {}            // names were removed from m_selected
  virtual void OnIndexed() {}              // m_index is valid
  virtual void OnNamesReset() {}           // ResetVarNames is done
  virtual void RedrawAll() = 0;            // soon or at once
  virtual CLiveView* Sibling() const = 0;  // the other view; null: it is not open

  // Reads the newest sample and calls take with each of its selected values and the place in m_index.
  template <class TAKE>
  void EachValue(TAKE take) {
    if (!ReadSample()) return;
    const auto count = static_cast<UINT>(m_sample.m_values.GetSize());
    for (int i = 0; i < m_index.GetSize(); ++i)
      if (m_index[i] < count) take(i, m_sample.m_values[static_cast<int>(m_index[i])]);
  }
  int ReadSample();  // 0: there is no sample, or it has no values

  // Runs the handler of a button. The window can be destroyed while a box of the handler is open; the object
  // exists until the handler has returned.
  void OnButton(const char* caption, std::function<void()> handler);
  // Deletes the object as soon as no handler runs.
  void PostNcDestroy() override;

  // The actions of buttons. EditSelection: 1, or 0 if the selection does not change.
  int EditSelection();
  void Configure();
  void ToggleFreeze();
  int AskFile(bool save, CString& path) const;

  static void Tell(const char* text);  // null: no message

  CLogInput* m_pInput = nullptr;
  CLogTrendings* m_pTrendings = nullptr;
  CLogSample m_sample;      // the newest
  CStringArray m_allNames;  // of its values, in order
  CStringArray m_selected;  // the names that the user has selected
  CUIntArray m_index;       // the place of each selected name in m_allNames
  int m_ready = 1;          // 0: the tables are being rebuilt, Refresh does nothing
  int m_frozen = 0;

 private:
  class CStay;
  void TakeNames();
  void ReopenStage(const CStringArray& extraVars);

  const CLiveViewKind& m_kind;
  bool m_isBusy = false;       // a handler runs
  bool m_isDestroyed = false;  // the window was destroyed
};

}  // namespace vastra
