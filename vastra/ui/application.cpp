#include "vastra/ui/application.h"

#include <QApplication>
#include <QColorDialog>
#include <QFileDialog>
#include <QMessageBox>
#include <QPointer>
#include <QThread>

#include <clocale>

#include "vastra/ui/convert.h"
#include "vastra/ui/screen_fit.h"
#include "vastra/ui/text.h"
#include "vastra/ui/window.h"

namespace vastra {
namespace {

QMessageBox::Icon IconOf(UINT type) {
  switch (type & 0xF0) {
    case MB_ICONSTOP:
      return QMessageBox::Critical;
    case MB_ICONQUESTION:
      return QMessageBox::Question;
    case MB_ICONEXCLAMATION:
      return QMessageBox::Warning;
    default:
      return QMessageBox::NoIcon;
  }
}

QMessageBox::StandardButtons ButtonsOf(UINT type) {
  switch (type & 0x0F) {
    case MB_OKCANCEL:
      return QMessageBox::Ok | QMessageBox::Cancel;
    case MB_YESNO:
      return QMessageBox::Yes | QMessageBox::No;
    case MB_YESNOCANCEL:
      return QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel;
    default:
      return QMessageBox::Ok;
  }
}

int AnswerOf(int button) {
  switch (button) {
    case QMessageBox::Ok:
      return IDOK;
    case QMessageBox::Yes:
      return IDYES;
    case QMessageBox::No:
      return IDNO;
    default:
      return IDCANCEL;
  }
}

// A dialog of the toolkit over the active window. If that window is destroyed, so is the dialog.
template <class DIALOG>
class COverActive {
 public:
  COverActive() : m_dialog(new DIALOG(GetActiveWidget())) {}
  ~COverActive() { delete m_dialog; }
  COverActive(const COverActive&) = delete;
  COverActive& operator=(const COverActive&) = delete;

  DIALOG* operator->() const { return m_dialog; }
  // The result of exec; 0 also if the dialog was destroyed.
  int Run() {
    const int result = m_dialog->exec();
    return m_dialog ? result : 0;
  }

 private:
  QPointer<DIALOG> m_dialog;
};

int ShowBox(const CString& text, const CString& title, UINT type) {
  COverActive<QMessageBox> box;
  box->setIcon(IconOf(type));
  box->setWindowTitle(title.IsEmpty() ? QApplication::applicationName() : ToScreen(title));
  box->setText(ToScreen(text));
  box->setStandardButtons(ButtonsOf(type));
  box->setTextFormat(Qt::PlainText);
  if (type & MB_DEFBUTTON2)
    box->setDefaultButton((type & 0x0F) == MB_OKCANCEL ? QMessageBox::Cancel : QMessageBox::No);
  return AnswerOf(box.Run());
}

class CBoxes : public CPrompter {
 public:
  // A worker waits until the user has answered on the thread of the windows.
  int Show(const CString& text, const CString& title, UINT type) override {
    int answer = IDCANCEL;
    const auto show = [&] { answer = ShowBox(text, title, type); };
    if (QThread::currentThread() == qApp->thread())
      show();
    else
      QMetaObject::invokeMethod(qApp, show, Qt::BlockingQueuedConnection);
    return answer;
  }
};

// Converts "Text Files (*.txt)|*.txt|All Files (*.*)|*.*||" to the form of the toolkit.
QStringList FiltersOf(const CString& filter) {
  const QStringList parts = ToScreen(filter).split('|');
  QStringList filters;
  for (qsizetype i = 0; i + 1 < parts.size() && !parts[i].isEmpty(); i += 2) {
    const qsizetype words = parts[i].indexOf(" (");
    const QString pattern = parts[i + 1] == "*.*" ? "*" : parts[i + 1];
    filters += parts[i].left(words) + " (" + QString(pattern).replace(';', ' ') + ")";
  }
  return filters;
}

// A chooser starts in the folder of the last choice. The first one starts in the folder of StartIn, or in the
// start folder of the program, since the current directory can have changed.
class CDialogs : public CChooser {
 public:
  int ChooseFile(const CFileQuestion& question, CString& path) override {
    CStringArray paths;
    if (!Ask(question, question.mustExist ? QFileDialog::ExistingFile : QFileDialog::AnyFile, paths))
      return 0;
    path = paths[0];
    return 1;
  }

  int ChooseFiles(const CFileQuestion& question, CStringArray& paths) override {
    return Ask(question, QFileDialog::ExistingFiles, paths);
  }

  int ChooseFolder(CString& path) override {
    COverActive<QFileDialog> dialog;
    dialog->setFileMode(QFileDialog::Directory);
    dialog->setOption(QFileDialog::ShowDirsOnly);
    dialog->setDirectory(path.IsEmpty() ? m_folder : QDir(m_base).filePath(ToScreen(path)));
    CStringArray paths;
    if (!Take(dialog, paths)) return 0;
    path = paths[0];
    return 1;
  }

  int ChooseColour(COLORREF& colour) override {
    COverActive<QColorDialog> dialog;
    dialog->setCurrentColor(ToColour(colour));
    if (!dialog.Run()) return 0;
    colour = FromColour(dialog->selectedColor());
    return 1;
  }

  void StartIn(const CString& folder) override { m_folder = m_base = ToScreen(folder); }

 private:
  int Ask(const CFileQuestion& question, QFileDialog::FileMode mode, CStringArray& paths) {
    COverActive<QFileDialog> dialog;
    dialog->setAcceptMode(question.save ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
    dialog->setFileMode(mode);
    dialog->setOption(QFileDialog::DontConfirmOverwrite, !question.asksToOverwrite);
    dialog->setNameFilters(FiltersOf(question.filter));
    dialog->setDefaultSuffix(ToScreen(question.defaultExtension));
    dialog->setDirectory(m_folder);
    if (!question.name.IsEmpty()) dialog->selectFile(ToScreen(question.name));
    return Take(dialog, paths);
  }

  // 1: a path was chosen.
  int Take(COverActive<QFileDialog>& dialog, CStringArray& paths) {
    if (!dialog.Run() || dialog->selectedFiles().isEmpty()) return 0;
    m_folder = dialog->directory().absolutePath();
    paths.RemoveAll();
    for (const QString& path : dialog->selectedFiles()) paths.Add(FromScreen(path));
    return 1;
  }

  QString m_folder = QDir::currentPath();
  QString m_base = m_folder;  // of relative paths
};

}  // namespace

CWindows::CWindows()
    : m_prompter(std::make_unique<CBoxes>()),
      m_chooser(std::make_unique<CDialogs>()),
      m_fit(std::make_unique<CScreenFit>()) {
  // The application object has set the user's locale; the engine needs a decimal point.
  std::setlocale(LC_NUMERIC, "C");
  m_formerPrompter = SetPrompter(m_prompter.get());
  m_formerChooser = SetChooser(m_chooser.get());
}

CWindows::~CWindows() {
  SetPrompter(m_formerPrompter);
  SetChooser(m_formerChooser);
}

void AtApplicationEnd(void (*routine)()) {
  qRemovePostRoutine(routine);
  qAddPostRoutine(routine);
}

}  // namespace vastra
