#include "vastra/ui/dialog.h"

#include <gtest/gtest.h>

#include <QComboBox>
#include <QLineEdit>
#include <QPlainTextEdit>

#include "tests/support/windows.h"

namespace vastra {
namespace {

constexpr CControl kControls[] = {{CControl::groupBox, "Names", {7, 7, 100, 100}, CControl::grow},
                                  {CControl::dragListBox, "Names", {10, 17, 94, 80}, CControl::grow},
                                  {CControl::multiListBox, "Others", {110, 17, 94, 80}, CControl::moveX},
                                  {CControl::edit, "Line", {110, 100, 90, 14}},
                                  {CControl::multiLineEdit, "Text", {7, 112, 197, 40}},
                                  {CControl::checkBox, "Black & White", {7, 155, 90, 12}},
                                  {CControl::defaultButton, "OK", {7, 170, 50, 14}, CControl::move},
                                  {CControl::button, "Cancel", {60, 170, 50, 14}}};
constexpr CDialogTemplate kTemplate = {"Test", {212, 190}, kControls, CDialogTemplate::resizable};

class CTestDlg : public CDialog {
 public:
  explicit CTestDlg(CWnd* parent = nullptr) : CDialog(kTemplate, parent) {}
  void OnInitDialog() override {
    if (endsAtOnce) EndDialog(7);
    On("Black & White", [this] { ++clicks; });
    On(
        "Names", [this] { ++doubleClicks; }, ENotify::doubleClicked);
    On(
        "Text", [this] { ++focused; }, ENotify::focused);
  }
  void OnOK() override {
    if (!refuses) CDialog::OnOK();
  }
  void PostNcDestroy() override { ++gone; }

  bool endsAtOnce = false, refuses = false;
  int clicks = 0, doubleClicks = 0, focused = 0, gone = 0;
};

TEST(Dialog, EndsByButtonKeyOrCloseBox) {
  const struct {
    const char* what;
    void (*user)(QWidget*);
    int result;
  } cases[] = {{"OK", [](QWidget* window) { Click(window, "OK"); }, IDOK},
               {"Cancel", [](QWidget* window) { Click(window, "Cancel"); }, IDCANCEL},
               {"Return", [](QWidget* window) { QTest::keyClick(window, Qt::Key_Return); }, IDOK},
               {"Escape", [](QWidget* window) { QTest::keyClick(window, Qt::Key_Escape); }, IDCANCEL},
               {"close box", [](QWidget* window) { window->close(); }, IDCANCEL}};
  for (const auto& [what, user, result] : cases) {
    CTestDlg dialog;
    WhileModal([&, wanted = result] { EXPECT_EQ(dialog.DoModal(), wanted); }, user);
    EXPECT_EQ(dialog.gone, 1) << what;
  }
  CTestDlg dialog;
  dialog.endsAtOnce = true;
  EXPECT_EQ(dialog.DoModal(), 7) << "ended before it was shown";
  dialog.endsAtOnce = false;
  dialog.refuses = true;
  WhileModal([&] { EXPECT_EQ(dialog.DoModal(), IDCANCEL); },
             [&](QWidget* window) {
               Click(window, "OK");
               EXPECT_TRUE(window->isVisible()) << "a refused OK closes the dialog";
             });
}

TEST(Dialog, IsCancelledWhenItsParentIsDeleted) {
  CWnd parent;
  parent.CreateTopLevel("", {0, 0, 100, 100}, nullptr, CWnd::plain);
  parent.ShowWindow(SW_SHOW);
  CTestDlg dialog(&parent);
  WhileModal([&] { EXPECT_EQ(dialog.DoModal(), IDOK); }, [](QWidget* window) { Click(window, "OK"); });
  QTimer::singleShot(0, [&] { delete parent.Widget(); });
  EXPECT_EQ(dialog.DoModal(), IDCANCEL) << "the result of the run before";
}

TEST(Dialog, StaysOpenUntilItIsDestroyed) {
  CTestDlg dialog;
  ASSERT_EQ(dialog.Create(), 1);
  dialog.ShowWindow(SW_SHOW);
  QApplication::setActiveWindow(dialog.Widget());
  dialog.Edit("Line").SetFocus();
  const int before = dialog.focused;
  dialog.Edit("Text").SetFocus();
  QCoreApplication::processEvents();
  EXPECT_EQ(dialog.focused, before + 1);
  Click(dialog.Widget(), "Black & White");
  EXPECT_EQ(dialog.clicks, 1);
  EXPECT_EQ(dialog.Button("Black & White").GetWindowText(), "Black & White");
  EXPECT_EQ(dialog.Button("Black & White").GetCheck(), 1);
  QTest::keyClick(dialog.Widget(), Qt::Key_Escape);
  EXPECT_EQ(dialog.gone, 1);
  EXPECT_EQ(dialog.Widget(), nullptr);

  CTestDlg ended;
  ended.endsAtOnce = true;
  EXPECT_EQ(ended.Create(), 0);
  EXPECT_EQ(ended.gone, 1);
}

TEST(Dialog, ControlsFollowTheEdges) {
  CTestDlg dialog;
  dialog.Create();
  const auto placeOf = [&](auto& control) { return control.GetPlace(); };
  const CRect names = placeOf(dialog.List("Names")), others = placeOf(dialog.List("Others"));
  const CRect ok = placeOf(dialog.Button("OK")), cancel = placeOf(dialog.Button("Cancel"));
  dialog.ShowWindow(SW_SHOW);
  dialog.Widget()->resize(dialog.Widget()->size() + QSize(50, 30));
  QCoreApplication::processEvents();
  EXPECT_EQ(placeOf(dialog.List("Names")),
            (CRect{names.left, names.top, names.right + 50, names.bottom + 30}));
  EXPECT_EQ(placeOf(dialog.List("Others")), others.Moved(50, 0));
  EXPECT_EQ(placeOf(dialog.Button("OK")), ok.Moved(50, 30));
  EXPECT_EQ(placeOf(dialog.Button("Cancel")), cancel);
}

TEST(Dialog, TextsKeepTheirBytesUntilTheyAreEdited) {
  CTestDlg dialog;
  dialog.Create();
  CEdit& line = dialog.Edit("Line");
  CEdit& text = dialog.Edit("Text");
  CListBox& list = dialog.List("Names");
  const CString latin1 = "Ofen \xE4", mixed = "a \xC2\xA0 b\r\nc\nd\r\n";
  line.SetWindowText(latin1);
  text.SetWindowText(mixed);
  list.AddString(latin1);
  EXPECT_EQ(line.GetWindowText(), latin1);
  EXPECT_EQ(text.GetWindowText(), mixed);
  EXPECT_EQ(list.GetText(0), latin1);
  EXPECT_EQ(list.Find("Ofen \xC3\xA4"), -1) << "shown alike, but another name";
  line.SetWindowText(CString(std::string(40000, 'x')));
  EXPECT_EQ(line.GetWindowText().GetLength(), 40000);
  line.SetWindowText(latin1);
  QTest::keyClicks(Find<QLineEdit>(dialog.Widget(), "Line"), "!");
  EXPECT_EQ(line.GetWindowText(), "Ofen \xC3\xA4!");
  auto* lines = Find<QPlainTextEdit>(dialog.Widget(), "Text");
  lines->moveCursor(QTextCursor::End);
  QTest::keyClick(lines, Qt::Key_Return);
  EXPECT_EQ(text.GetWindowText(), "a \xC2\xA0 b\r\nc\r\nd\r\n\r\n");
}

TEST(Dialog, MarksThePlaceOfAByte) {
  CTestDlg dialog;
  dialog.Create();
  CEdit& text = dialog.Edit("Text");
  text.SetWindowText("\xC3\xA4 = b;\r\nc = d;");
  for (const auto& [offset, marked] : {std::pair(13, "d"), std::pair(14, ";"), std::pair(15, "")}) {
    text.SelectAt(offset, 1);
    EXPECT_EQ(text.GetSelectedText(), marked) << offset;
  }
}

TEST(Dialog, ListsReturnAndMoveTheMarkedEntries) {
  CTestDlg dialog;
  dialog.Create();
  dialog.ShowWindow(SW_SHOW);
  CStringArray names;
  for (const char* name : {"a", "b", "c"}) names.Add(name);
  CListBox& one = dialog.List("Names");
  CListBox& several = dialog.List("Others");
  one.SetTexts(names);
  several.SetTexts(names);
  EXPECT_EQ(one.GetCurSel(), -1);
  auto* list = Find<QListWidget>(dialog.Widget(), "Names");
  const auto middle = [list](int row) { return list->visualItemRect(list->item(row)).center(); };
  QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, middle(0));
  EXPECT_EQ(one.GetCurSel(), 0);
  list->setFocus();
  QTest::keyClick(list, Qt::Key_Down, Qt::ControlModifier);
  EXPECT_EQ(Shown(list), (std::vector<std::string>{"b", "a", "c"}));
  EXPECT_EQ(one.GetCurSel(), 1);
  QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, middle(2));
  EXPECT_EQ(one.GetCurSel(), 2);
  QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, middle(2));
  EXPECT_EQ(dialog.doubleClicks, 1);
  several.SelectAll();
  EXPECT_EQ(several.GetSelItems(), (std::vector<int>{0, 1, 2}));
  one.DeleteString(0);
  EXPECT_EQ(one.GetCount(), 2);
  one.SetTexts(names);
  list->setCurrentRow(0, QItemSelectionModel::NoUpdate);  // as the tab key does
  EXPECT_EQ(one.GetCurSel(), -1);
  QTest::keyClick(list, Qt::Key_Down);
  EXPECT_EQ(one.GetCurSel(), 0) << "the arrow skips the first entry";
  QTest::keyClick(list, Qt::Key_Down);
  EXPECT_EQ(one.GetCurSel(), 1);
}

constexpr CControl kChoices[] = {{CControl::firstRadioButton, "Red", {7, 7, 60, 12}},
                                 {CControl::radioButton, "Green", {7, 20, 60, 12}},
                                 {CControl::firstRadioButton, "Small", {77, 7, 60, 12}},
                                 {CControl::radioButton, "Large", {77, 20, 60, 12}},
                                 {CControl::comboBox, "Kind", {7, 40, 100, 14}},
                                 {CControl::comboEdit, "Basis", {7, 60, 100, 14}},
                                 {CControl::numberEdit, "Period", {7, 80, 60, 14}},
                                 {CControl::listBox, "Nodes", {140, 7, 60, 60}},
                                 {CControl::button, "Read", {140, 80, 50, 14}}};
constexpr CDialogTemplate kChoicesTemplate = {"Choices", {210, 100}, kChoices};

class CChoicesDlg : public CDialog {
 public:
  CChoicesDlg() : CDialog(kChoicesTemplate) {}
  void OnInitDialog() override {
    for (const char* text : {"one", "Two", "two"}) {
      Combo("Kind").AddString(text);
      Combo("Basis").AddString(text);
    }
    On(
        "Basis", [this] { ++selected; }, ENotify::selected);
    On("Read", [this] { isRead = ReadNumber("Period", 10, 65000, number); });
  }

  int selected = 0, isRead = -1;
  UINT number = 7;
};

TEST(Dialog, RadioButtonsExcludeOthersOfTheirGroup) {
  CChoicesDlg dialog;
  dialog.Create();
  const auto checked = [&] {
    std::string names;
    for (const char* name : {"Red", "Green", "Small", "Large"})
      if (dialog.Button(name).GetCheck()) names += name[0];
    return names;
  };
  EXPECT_EQ(checked(), "");
  for (const char* name : {"Red", "Large", "Green"}) Click(dialog.Widget(), name);
  EXPECT_EQ(checked(), "GL");
  dialog.Button("Small").SetCheck(1);
  EXPECT_EQ(checked(), "GS");
  for (const char* name : {"Small", "Large"}) {
    dialog.Button(name).SetCheck(1);
    for (const char* each : {"Small", "Large"})
      EXPECT_EQ((dialog.Button(each).Widget()->focusPolicy() & Qt::TabFocus) != 0, each == std::string(name));
  }
}

TEST(Dialog, ComboBoxReturnsAnEntryOrTheTypedText) {
  CChoicesDlg dialog;
  dialog.Create();
  dialog.ShowWindow(SW_SHOW);
  CComboBox& basis = dialog.Combo("Basis");
  auto* edit = Find<QComboBox>(dialog.Widget(), "Basis");
  EXPECT_EQ(dialog.Combo("Kind").GetCurSel(), 0);
  basis.SetCurSel(2);
  EXPECT_EQ(dialog.selected, 0) << "the user did not choose it";
  EXPECT_EQ(basis.Find("two"), 2);
  EXPECT_EQ(basis.GetWindowText(), "two");
  edit->lineEdit()->selectAll();
  QTest::keyClicks(edit->lineEdit(), "TWO");
  EXPECT_EQ(basis.GetWindowText(), "TWO") << "an entry of another case replaces it";
  EXPECT_EQ(basis.GetCurSel(), -1);
  QTest::keyClick(edit->lineEdit(), Qt::Key_Return);
  EXPECT_EQ(basis.GetCount(), 3) << "the typed text becomes an entry";
  dialog.selected = 0;
  QTest::keyClick(edit, Qt::Key_Up);
  EXPECT_EQ(dialog.selected, 1);
  basis.SetWindowText("Ofen \xE4");
  EXPECT_EQ(basis.GetWindowText(), "Ofen \xC3\xA4");
}

TEST(Dialog, NumberOutsideItsBoundsIsReported) {
  const CTestPrompter prompter;
  CChoicesDlg dialog;
  dialog.Create();
  dialog.ShowWindow(SW_SHOW);
  auto* edit = Find<QLineEdit>(dialog.Widget(), "Period");
  QTest::keyClicks(edit, "-1e0x7");
  EXPECT_EQ(edit->text(), "107") << "only digits can be typed";
  const struct {
    const char* text;
    UINT number;  // 0: refused
  } cases[] = {{"10", 10}, {" 65000 ", 65000}, {"9", 0}, {"65001", 0},
               {"", 0},    {"12a", 0},         {"-", 0}, {"99999999999999999999", 0}};
  for (const auto& [text, number] : cases) {
    dialog.number = 7;
    dialog.Edit("Period").SetWindowText(text);
    Click(dialog.Widget(), "Read");
    EXPECT_EQ(dialog.isRead, number != 0) << text;
    EXPECT_EQ(dialog.number, number ? number : 7) << text;
  }
  EXPECT_EQ(prompter.asked, std::vector<std::string>(6, "|Please enter a whole number from 10 to 65000.|30"));
  EXPECT_EQ(edit->selectedText(), "99999999999999999999");
}

TEST(Dialog, ListSearchContinuesAtItsStart) {
  CChoicesDlg dialog;
  dialog.Create();
  CListBox& list = dialog.List("Nodes");
  EXPECT_EQ(list.FindStringExact(-1, ""), -1);
  for (const char* text : {"Kiln", "Ofen \xC3\xA4", "KILN", "Kiln 2"}) list.AddString(text);
  const struct {
    int after;
    const char* text;
    int found;
  } cases[] = {{-1, "kiln", 0},         {0, "kiln", 2}, {2, "kiln", 0}, {-1, "OFEN \xC3\x84", 1},
               {1, "Ofen \xC3\xA4", 1}, {3, "Kiln", 0}, {-1, "Kil", -1}};
  for (const auto& [after, text, found] : cases)
    EXPECT_EQ(list.FindStringExact(after, text), found) << after << " " << text;
}

}  // namespace
}  // namespace vastra
