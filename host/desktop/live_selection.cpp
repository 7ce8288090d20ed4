#include "host/desktop/live_selection.h"

#include <QAbstractButton>
#include <QFile>
#include <QTemporaryDir>

#include "vastra/platform/chooser.h"
#include "vastra/platform/prompt.h"
#include "vastra/ui/text.h"

namespace vastra {
namespace {

// Answers for the user while a button of a view is pressed.
class CSilentUser : public CChooser, public CPrompter {
 public:
  explicit CSilentUser(const QString& path)
      : m_path(FromScreen(path)), m_chooser(SetChooser(this)), m_prompter(SetPrompter(this)) {}
  ~CSilentUser() override {
    SetChooser(m_chooser);
    SetPrompter(m_prompter);
  }
  CSilentUser(const CSilentUser&) = delete;
  CSilentUser& operator=(const CSilentUser&) = delete;

  int ChooseFile(const CFileQuestion&, CString& path) override {
    path = m_path;
    return 1;
  }
  int ChooseFiles(const CFileQuestion&, CStringArray&) override { return 0; }
  int ChooseFolder(CString&) override { return 0; }
  int ChooseColour(COLORREF&) override { return 0; }
  int Show(const CString& text, const CString&, UINT) override {
    m_told = text;
    return IDOK;
  }
  const CString& Told() const { return m_told; }

 private:
  const CString m_path;
  CChooser* const m_chooser;
  CPrompter* const m_prompter;
  CString m_told;
};

CString Press(const CWnd& view, const QString& caption, const QString& path) {
  const CSilentUser user(path);
  for (auto* button : view.Widget()->findChildren<QAbstractButton*>())
    if (button->text() == caption) button->click();
  return user.Told();
}

// In a folder of its own, where nobody else can put something in its place.
struct CSelectionPlace {
  QTemporaryDir folder;
  QFile file{folder.filePath("selection")};
};

}  // namespace

CString SelectionOf(const CWnd& view) {
  CSelectionPlace place;
  Press(view, "Save", place.file.fileName());
  if (!place.file.open(QIODevice::ReadOnly)) return {};
  return place.file.readAll().toBase64().constData();
}

CString Select(const CWnd& view, const CString& selection) {
  if (selection.IsEmpty()) return {};
  CSelectionPlace place;
  if (!place.file.open(QIODevice::WriteOnly)) return FromScreen(place.file.errorString());
  place.file.write(QByteArray::fromBase64(QByteArray(selection)));
  place.file.close();
  return Press(view, "Load", place.file.fileName());
}

}  // namespace vastra
