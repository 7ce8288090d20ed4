// CEquationEditor: a window for all equations of the configuration, beside the editor of the sheet. It shows
// the fault while the user types, and the values on the newest sample or on one that the user has typed.
#pragma once

#include <QTimer>
#include <QWidget>

#include <functional>
#include <memory>

#include "host/desktop/equation_help_rules.h"
#include "host/desktop/equation_places.h"
#include "host/run/live_state.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QPushButton;
class QTableWidget;

namespace vastra {

class CEquationEdit;

class CEquationEditor : public QWidget {
 public:
  struct CListener {
    std::function<std::vector<CEquationPlace>()> places;
    std::function<CString(const CString& key)> words;  // for the place with this key
    // Changes the configuration. False: that is not possible now.
    std::function<bool(const CString& key, const CString& text)> apply;
    std::function<std::shared_ptr<const CLiveState>()> live;
  };

  explicit CEquationEditor(CListener listener);

  // Brings the window to the front, with the place that key names, if there is one.
  void Open(const CString& key);
  // The configuration has changed. A text that the user has changed here stays.
  void ShowConfiguration();
  CString Key() const;  // of the place that is shown
  // Asks whether to apply the changes of the text; false: the user stays here.
  bool MayLeave();

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  void MakeLayout();
  QWidget* MakeValues();
  void Choose(int place);
  void ShowPlace();
  void TakeText();
  void ShowFault(const CEquationTextFault& fault);
  bool Apply();
  void GoToFault();
  void Revert();

  void FillValues();
  void Look();
  void Run();
  void ShowResults();
  bool IsChanged() const;
  CString Text() const;
  const CEquationPlace* Place() const;

  const CListener m_listener;
  std::vector<CEquationPlace> m_places;
  int m_place = -1;
  CEquationTrial m_trial;
  CLiveNewest m_newest;
  std::uint64_t m_shown = 0;  // the sample
  QTimer m_timer;
  bool m_isFilling = false;

  QComboBox* m_choice;
  CEquationEdit* m_edit;
  QLabel* m_fault;
  QCheckBox* m_live;
  QTableWidget* m_values;
  QPushButton *m_apply, *m_revert, *m_next;
  bool m_hasFault = false;
};

}  // namespace vastra
