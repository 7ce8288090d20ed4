#include "vastra/ui/application.h"

#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>

#include <future>

#include "tests/support/files.h"
#include "tests/support/windows.h"

namespace vastra {
namespace {

using namespace std::chrono_literals;

TEST(Boxes, HaveTheirButtonsAndReturnTheAnswerAlsoToAWorker) {
  const CWindows real;
  using B = QMessageBox;
  const struct {
    UINT type;
    B::StandardButton pressed;  // NoButton: the Return key
    int answer;
    B::StandardButtons all;
  } kCases[] = {{MB_OK, B::Ok, IDOK, B::Ok},
                {MB_OKCANCEL, B::Cancel, IDCANCEL, B::Ok | B::Cancel},
                {MB_YESNOCANCEL, B::Yes, IDYES, B::Yes | B::No | B::Cancel},
                {MB_YESNO, B::NoButton, IDYES, B::Yes | B::No},
                {MB_YESNO | MB_DEFBUTTON2, B::NoButton, IDNO, B::Yes | B::No}};
  for (const auto& row : kCases) {
    const auto user = [&](QWidget* window) {
      auto* box = qobject_cast<QMessageBox*>(window);
      EXPECT_EQ(box->thread(), qApp->thread());
      EXPECT_EQ(box->standardButtons(), row.all);
      EXPECT_EQ(box->windowTitle(), "Title");
      EXPECT_EQ(box->textFormat(), Qt::PlainText);
      row.pressed ? box->button(row.pressed)->click() : QTest::keyClick(window, Qt::Key_Return);
    };
    const auto ask = [&] { return AfxMessageBox("a <b>text</b>", "Title", row.type); };
    WhileModal([&] { EXPECT_EQ(ask(), row.answer); }, user);
    auto worker = std::async(std::launch::async, ask);
    const auto isAnswered = [&] { return worker.wait_for(0s) == std::future_status::ready; };
    WhileModal([&] { EXPECT_TRUE(QTest::qWaitFor(isAnswered, 20000)); }, user);
    EXPECT_EQ(worker.get(), row.answer);
  }
}

TEST(Choosers, SeveralFilesKeepTheOrderOfTheChoiceAndTheFolderIsRemembered) {
  const CWindows real;
  const CTempDir dir;
  for (const char* name : {"a.rph", "b.rph"}) WriteBytes(dir / name, "");
  CFileQuestion question;
  question.filter = "Heat Files (*.rph;*.heat)|*.rph;*.heat||";
  QString folder = QDir::currentPath();
  QDir::setCurrent("/");
  const auto restore = qScopeGuard([folder] { QDir::setCurrent(folder); });
  const std::pair<const char*, const char*> kCases[] = {
      {R"("b.rph" "a.rph")", "b.rph|a.rph|"}, {"a.rph", "a.rph|"}, {nullptr, "before|"}};
  for (const auto& [typed, chosen] : kCases) {
    CStringArray paths;
    paths.Add("before");
    const auto user = [&, text = typed](QWidget* window) {
      auto* dialog = qobject_cast<QFileDialog*>(window);
      EXPECT_EQ(dialog->nameFilters(), QStringList("Heat Files (*.rph *.heat)"));
      EXPECT_EQ(dialog->directory().absolutePath(), std::exchange(folder, dir.Path().Std().c_str()));
      dialog->setDirectory(folder);
      if (!text) return;  // the user cancels
      window->findChild<QLineEdit*>("fileNameEdit")->setText(text);
      QTest::keyClick(window, Qt::Key_Return);
    };
    WhileModal([&, isChosen = typed != nullptr] { EXPECT_EQ(ChooseFiles(question, paths), isChosen); }, user);
    std::string names;
    for (const CString& path : paths) names += std::filesystem::path(path.Std()).filename().string() + "|";
    EXPECT_EQ(names, chosen);
  }
}

TEST(Choosers, AConfigurationBringsItsFolder) {
  const CWindows real;
  const CTempDir dir;
  std::filesystem::create_directories((dir / "logs").Std());
  StartChoosersIn(dir.Path());
  const std::pair<const char*, CString> kCases[] = {
      {"", dir.Path()}, {"logs", dir / "logs"}, {"/", "/"}, {"", dir.Path()}};
  for (const auto& [typed, begin] : kCases) {
    CString folder = typed;
    WhileModal([&] { ChooseFolder(folder); },
               [&, expected = begin](QWidget* window) {
                 const QDir is = qobject_cast<QFileDialog*>(window)->directory();
                 EXPECT_EQ(is.absolutePath().toStdString(), expected.Std());
               });
  }
}

}  // namespace
}  // namespace vastra
