#include "vastra/ui/application.h"

#include <gtest/gtest.h>

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
    B::StandardButton pressed;
    int answer;
    B::StandardButtons all;
  } cases[] = {{MB_OK, B::Ok, IDOK, B::Ok},
               {MB_OKCANCEL, B::Cancel, IDCANCEL, B::Ok | B::Cancel},
               {MB_YESNO | MB_ICONQUESTION, B::No, IDNO, B::Yes | B::No},
               {MB_YESNOCANCEL, B::Yes, IDYES, B::Yes | B::No | B::Cancel}};
  for (const auto& [type, pressed, answer, all] : cases) {
    int given = 0;
    WhileModal([&, boxType = type] { given = AfxMessageBox("a <b>text</b>", "Title", boxType); },
               [&, button = pressed, wanted = all](QWidget* window) {
                 auto* box = qobject_cast<QMessageBox*>(window);
                 ASSERT_TRUE(box);
                 EXPECT_EQ(box->standardButtons(), wanted);
                 EXPECT_EQ(box->windowTitle(), "Title");
                 EXPECT_EQ(box->textFormat(), Qt::PlainText);
                 box->button(button)->click();
               });
    EXPECT_EQ(given, answer) << type;
  }
}

TEST(Boxes, ReturnPressesTheSecondButtonIfThatIsTheDefault) {
  const CWindows real;
  for (const auto& [type, answer] : {std::pair(MB_YESNO, IDYES), std::pair(MB_YESNO | MB_DEFBUTTON2, IDNO)}) {
    int given = 0;
    WhileModal([&, boxType = type] { given = AfxMessageBox("", boxType); },
               [](QWidget* window) { QTest::keyClick(window, Qt::Key_Return); });
    EXPECT_EQ(given, answer);
  }
}

TEST(Boxes, AWorkerWaitsForTheAnswer) {
  const CWindows real;
  std::atomic<int> answer{0};
  std::thread worker;
  WhileModal(
      [&] {
        worker = std::thread([&] { answer = AfxMessageBox("from a worker", MB_YESNO); });
        EXPECT_TRUE(QTest::qWaitFor([&] { return answer != 0; }, 20000));
      },
      [&](QWidget* window) {
        EXPECT_EQ(answer, 0);
        qobject_cast<QMessageBox*>(window)->button(QMessageBox::Yes)->click();
      });
  worker.join();
  EXPECT_EQ(answer, IDYES);
}

TEST(Choosers, SeveralFilesKeepTheOrderOfTheChoice) {
  const CWindows real;
  const CTempDir dir;
  for (const char* name : {"a.rph", "b.rph", "c.txt"}) WriteBytes(dir / name, "");
  CFileQuestion question;
  question.filter = "Heat Files (*.rph;*.heat)|*.rph;*.heat||";
  const struct {
    const char* typed;
    std::vector<std::string> names;  // empty: cancelled
  } kCases[] = {{R"("b.rph" "a.rph")", {"b.rph", "a.rph"}}, {"a.rph", {"a.rph"}}, {nullptr, {}}};
  for (const auto& c : kCases) {
    CStringArray paths;
    paths.Add("from before");
    int chosen = -1;
    WhileModal([&] { chosen = ChooseFiles(question, paths); },
               [&](QWidget* window) {
                 auto* dialog = qobject_cast<QFileDialog*>(window);
                 ASSERT_TRUE(dialog);
                 EXPECT_EQ(dialog->nameFilters(), QStringList("Heat Files (*.rph *.heat)"));
                 dialog->setDirectory(dir.Path().Std().c_str());
                 if (!c.typed) return;
                 window->findChild<QLineEdit*>("fileNameEdit")->setText(c.typed);
                 QTest::keyClick(window, Qt::Key_Return);
               });
    EXPECT_EQ(chosen, c.typed ? 1 : 0);
    std::vector<std::string> names;
    for (const CString& path : paths) names.push_back(std::filesystem::path(path.Std()).filename());
    EXPECT_EQ(names, c.typed ? c.names : std::vector<std::string>{"from before"});
  }
}

}  // namespace
}  // namespace vastra
