// CEquationEdit: a field for the text of equations. It colours the words, offers those that fit while the
// user types, and underlines a fault.
#pragma once

#include <QPlainTextEdit>

#include "vastra/platform/array.h"

class QCompleter;
class QStringListModel;

namespace vastra {

class CEquationColours;

class CEquationEdit : public QPlainTextEdit {
 public:
  explicit CEquationEdit(QWidget* parent);

  // names: those that the equations can read; results: those that the user probably assigns.
  void SetNames(const CStringArray& names, const CStringArray& results);
  // Underlines length characters from place on; below 0: nothing.
  void MarkFault(int place, int length);
  // Moves the cursor there.
  void GoTo(int place);

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  bool focusNextPrevChild(bool next) override;
  void changeEvent(QEvent* event) override;

 private:
  QString WordBeforeCursor() const;
  void OfferWords(bool isAsked);
  void Complete(const QString& word);

  CEquationColours* m_colours;
  QCompleter* m_completer;
  QStringListModel* m_words;
  CStringArray m_names;  // and results
};

}  // namespace vastra
