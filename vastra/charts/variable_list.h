// CVariableList: the variables that a chart can show, by node, with a search. They are dragged into the plot
// as text, a line for each name, or chosen by a double click or Enter.
#pragma once

#include <QWidget>

#include <functional>
#include <map>
#include <vector>

#include "vastra/platform/string.h"

class QLabel;
class QLineEdit;
class QTreeWidget;
class QTreeWidgetItem;

namespace vastra {

// A node and its variables.
struct CListedNode {
  CString name;
  std::vector<CString> variables;

  bool operator==(const CListedNode&) const = default;
};

class CVariableList : public QWidget {
 public:
  // choose: of the chosen variables.
  CVariableList(std::function<void(const std::vector<CString>&)> choose, QWidget* parent);

  // Variables that are in no group come last, in their order.
  void SetVariables(const std::vector<CString>& variables, const std::vector<CListedNode>& groups);
  std::vector<CString> Variables() const;  // in the order of the list
  void SetUnits(const std::map<CString, CString>& units);
  void SetComments(const std::map<CString, CString>& comments);
  // The variables that are in the chart, with their colours as 0xRRGGBB.
  void Mark(const std::map<CString, unsigned>& colours);
  void FocusSearch();
  int BestWidth() const;  // that shows the names whole

 protected:
  // Down leads from the search to the list.
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void FocusList();
  void Fill();
  void AddItem(QTreeWidgetItem* parent, const CString& variable);
  void ShowItem(QTreeWidgetItem& item);
  void Search();
  void ChooseSelected();
  void ShowCount(int shown);

  const std::function<void(const std::vector<CString>&)> m_choose;
  QLineEdit* m_search;
  QTreeWidget* m_tree;
  QLabel* m_count;
  std::vector<CString> m_variables;
  std::vector<CListedNode> m_groups;
  std::map<CString, CString> m_units, m_comments;
  std::map<CString, unsigned> m_marks;
  std::vector<QTreeWidgetItem*> m_items;  // of variables
};

}  // namespace vastra
