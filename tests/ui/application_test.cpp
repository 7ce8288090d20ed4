#include "vastra/ui/application.h"

#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>

#include <atomic>
#include <thread>

#include "tests/support/files.h"
#include "tests/support/windows.h"

namespace vastra {
namespace {

TEST(Boxes, HaveTheirButtonsAndReturnTheAnswer) {
  const CWindows real;
  using B = QMessageBox;
  const struct {
    UINT type;
    B::StandardButton pressed;  // NoButton: the Return key
    int answer;
    B::StandardButtons all;
  } kCases[] = {{MB_OK, B::Ok, IDOK, B::Ok},
                {MB_OKCANCEL, B::Cancel, IDCANCEL, B::Ok | B::Cancel},
                {MB_YESNO | MB_ICONQUESTION, B::No, IDNO, B::Yes | B::No},
                {MB_YESNOCANCEL, B::Yes, IDYES, B::Yes | B::No | B::Cancel},
                {MB_YESNO, B::NoButton, IDYES, B::Yes | B::No},
                {MB_YESNO | MB_DEFBUTTON2, B::NoButton, IDNO, B::Yes | B::No}};
  for (const auto& row : kCases) {
    const auto user = [&](QWidget* window) {
      auto* box = qobject_cast<QMessageBox*>(window);
      ASSERT_TRUE(box);
      EXPECT_EQ(box->standardButtons(), row.all);
      EXPECT_EQ(box->windowTitle(), "Title");
      EXPECT_EQ(box->textFormat(), Qt::PlainText);
      row.pressed ? box->button(row.pressed)->click() : QTest::keyClick(window, Qt::Key_Return);
    };
    WhileModal([&] { EXPECT_EQ(AfxMessageBox("a <b>text</b>", "Title", row.type), row.answer); }, user);
  }
}

TEST(Boxes, AWorkerWaitsForTheAnswer) {
  const CWindows real;
  std::atomic<int> answer{0};
  std::thread worker([&] { answer = AfxMessageBox("from a worker", MB_YESNO); });
  const auto user = [&](QWidget* window) {
    EXPECT_EQ(answer, 0);
    qobject_cast<QMessageBox*>(window)->button(QMessageBox::Yes)->click();
  };
  WhileModal([&] { EXPECT_TRUE(QTest::qWaitFor([&] { return answer != 0; }, 20000)); }, user);
  worker.join();
  EXPECT_EQ(answer, IDYES);
}

TEST(Choosers, SeveralFilesKeepTheOrderOfTheChoiceAndTheFolderIsRemembered) {
  const CWindows real;
  const CTempDir dir;
  for (const char* name : {"a.rph", "b.rph", "c.txt"}) WriteBytes(dir / name, "");
  CFileQuestion question;
  question.filter = "Heat Files (*.rph;*.heat)|*.rph;*.heat||";
  QString folder = QDir::currentPath();
  QDir::setCurrent("/");
  const auto restore = qScopeGuard([folder] { QDir::setCurrent(folder); });
  const struct {
    const char* typed;  // null: cancelled
    std::vector<std::string> names;
  } kCases[] = {{R"("b.rph" "a.rph")", {"b.rph", "a.rph"}}, {"a.rph", {"a.rph"}}, {nullptr, {"before"}}};
  for (const auto& row : kCases) {
    CStringArray paths;
    paths.Add("before");
    const auto user = [&](QWidget* window) {
      auto* dialog = qobject_cast<QFileDialog*>(window);
      ASSERT_TRUE(dialog);
      EXPECT_EQ(dialog->nameFilters(), QStringList("Heat Files (*.rph *.heat)"));
      EXPECT_EQ(dialog->directory().absolutePath(), std::exchange(folder, dir.Path().Std().c_str()));
      dialog->setDirectory(folder);
      if (!row.typed) return;
      window->findChild<QLineEdit*>("fileNameEdit")->setText(row.typed);
      QTest::keyClick(window, Qt::Key_Return);
    };
    WhileModal([&] { EXPECT_EQ(ChooseFiles(question, paths), row.typed ? 1 : 0); }, user);
    std::vector<std::string> names;
    for (const CString& path : paths) names.push_back(std::filesystem::path(path.Std()).filename());
    EXPECT_EQ(names, row.names);
  }
}

}  // namespace
}  // namespace vastra
