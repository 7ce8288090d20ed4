// CHelpWindow: the guide, with the other pages that it refers to and their pictures, which are part of the
// program. CHelp opens it at the part that explains a window.
#pragma once

#include <QPointer>
#include <QTextBrowser>

#include <vector>

class QComboBox;
class QLineEdit;
class QPushButton;

namespace vastra {

// Shows pictures no wider than the window.
class CHelpBrowser : public QTextBrowser {
 public:
  using QTextBrowser::QTextBrowser;

 protected:
  QVariant loadResource(int type, const QUrl& name) override;
};

class CHelpWindow : public QWidget {
 public:
  explicit CHelpWindow(QWidget* parent);

  // Shows a page of docs/ from the heading with that anchor on; an empty or unknown one: from its begin.
  void Open(const QString& page, const QString& anchor);
  // The heading of the part that was opened or found.
  QString Heading() const;

 private:
  struct CVisit {
    QString page;
    int scrolled = 0, place = 0;
  };

  void MakeBar();
  void Show(const QString& page);
  void Follow(const QUrl& link);
  void GoBack();
  void GoTo(const QTextBlock& heading);
  void FillSections();
  void Find(QTextDocument::FindFlags flags = {});

  QString m_page;
  std::vector<CVisit> m_visits;  // before the present one
  CHelpBrowser* m_browser;
  QPushButton* m_back;
  QComboBox* m_sections;
  QLineEdit* m_words;
};

// Opens the guide for the window in which the user presses F1, also from a modal dialog.
class CHelp : public QObject {
 public:
  explicit CHelp(QObject* parent);
  ~CHelp() override { delete m_window.data(); }
  bool eventFilter(QObject* object, QEvent* event) override;
  // window null: the begin of the guide.
  void Show(const QWidget* window);

 private:
  QPointer<CHelpWindow> m_window;  // null: not opened yet, or closed with its dialog
};

}  // namespace vastra
