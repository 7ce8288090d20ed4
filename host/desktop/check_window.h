// CCheckWindow: the list of what is wrong with the configuration. It comes before a start that it prevents or
// that the user has to confirm, and on request. It stays open beside the other windows while the user
// repairs one place after the other.
#pragma once

#include <QDialog>

#include <functional>
#include <set>

#include "host/desktop/check_rules.h"

class QLabel;
class QPlainTextEdit;
class QPushButton;
class QTreeWidget;

namespace vastra {

class CCheckWindow : public QDialog {
 public:
  struct CListener {
    std::function<void(const CString& key)> open;  // shows a place of the configuration
    std::function<void()> check;                   // checks again, and calls ShowEntries
    std::function<void()> start;                   // starts, in spite of the warnings
  };

  CCheckWindow(CListener listener, QWidget* parent);

  // asksToStart: the user wants to start the logger, and can do so here as soon as there is no error.
  void SetEntries(std::vector<CCheckEntry> entries, bool asksToStart);
  bool AsksToStart() const { return m_asksToStart; }
  // Brings the window to the front, with the focus on what the user probably does next.
  void BringUp();
  // Whether a start does not have to ask: all warnings are harmless, or the user has started in spite of
  // them.
  bool AreAccepted(const std::vector<CCheckEntry>& entries) const;
  // The warnings that the user has accepted, as a string, and back. Empty: none, as for another
  // configuration.
  CString Accepted() const;
  void SetAccepted(const CString& accepted);
  void Forget();

 private:
  void MakeList();
  void MakeButtons();
  void FillList();
  void GoThere();
  void Start();
  void ShowDetails();

  bool CanStart() const { return m_asksToStart && !HasError(m_entries); }

  const CListener m_listener;
  std::vector<CCheckEntry> m_entries;
  bool m_asksToStart = false;
  std::set<CString> m_accepted;  // lines of warnings
  QLabel* m_verdict;
  QTreeWidget* m_list;
  QPlainTextEdit* m_details;
  QPushButton *m_start = nullptr, *m_open = nullptr, *m_again = nullptr;
};

}  // namespace vastra
