#include "vastra/ui/dialog.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>

#include <tuple>

#include "tests/support/windows.h"
#include "vastra/ui/text.h"

namespace vastra {
namespace {

constexpr const char* kWords = "A text that has room for two lines";
constexpr CControl kControls[] = {{CControl::groupBox, "Names", {7, 7, 100, 100}, CControl::grow},
                                  {CControl::dragListBox, "Names", {10, 17, 94, 80}, CControl::grow},
                                  {CControl::multiListBox, "Others", {110, 17, 94, 80}, CControl::moveX},
                                  {CControl::edit, "Line", {110, 100, 90, 14}},
                                  {CControl::multiLineEdit, "Text", {7, 112, 197, 40}},
                                  {CControl::checkBox, "Black & White", {7, 155, 90, 12}},
                                  {CControl::defaultButton, "OK", {7, 170, 50, 14}, CControl::move},
                                  {CControl::button, "Cancel", {60, 170, 50, 14}},
                                  {CControl::firstRadioButton, "Red", {217, 7, 60, 12}},
                                  {CControl::radioButton, "Green", {217, 20, 60, 12}},
                                  {CControl::firstRadioButton, "Small", {287, 7, 60, 12}},
                                  {CControl::radioButton, "Large", {287, 20, 60, 12}},
                                  {CControl::comboEdit, "Basis", {217, 60, 100, 14}},
                                  {CControl::numberEdit, "Period", {217, 80, 60, 14}},
                                  {CControl::button, "Read", {287, 80, 50, 14}},
                                  {CControl::text, kWords, {217, 100, 60, 24}}};
constexpr CDialogTemplate kTemplate = {"Test", {350, 190}, kControls, CDialogTemplate::resizable};

class CTestDlg : public CDialog {
 public:
  explicit CTestDlg(CWnd* parent = nullptr) : CDialog(kTemplate, parent) {}
  void OnInitDialog() override {
    if (endsAtOnce) return EndDialog(7);
    const std::pair<const char*, ENotify> kNoted[] = {
        {"Black & White", ENotify::clicked}, {"Text", ENotify::focused}, {"Basis", ENotify::selected}};
    for (const auto& [caption, what] : kNoted) {
      const auto note = [this, name = caption] { noted += name; };
      On(caption, note, what);
    }
    On("Read", [this] { isRead = ReadNumber("Period", 10, 65000, number); });
  }
  void PostNcDestroy() override { ++gone; }
  std::string Take() { return std::exchange(noted, {}); }

  bool endsAtOnce = false;
  int gone = 0, isRead = -1;
  UINT number = 0;
  std::string noted;
};

class Dialog : public testing::Test {
 protected:
  Dialog() {
    m_dialog.Create();
    m_dialog.ShowWindow(SW_SHOW);
    m_window = m_dialog.Widget();
  }
  CTestDlg m_dialog;
  QWidget* m_window;
};

TEST(ModalDialog, EndsByButtonKeyCloseBoxOrTheEndOfItsParent) {
  CWnd parent;
  parent.CreateTopLevel("", {0, 0, 100, 100}, nullptr, CWnd::plain);
  parent.ShowWindow(SW_SHOW);
  CTestDlg dialog(&parent);
  const std::pair<std::function<void(QWidget*)>, int> kCases[] = {
      {[](QWidget* window) { Click(window, "OK"); }, IDOK},
      {[](QWidget* window) { Click(window, "Cancel"); }, IDCANCEL},
      {[](QWidget* window) { QTest::keyClick(window, Qt::Key_Escape); }, IDCANCEL},
      {[](QWidget* window) { window->close(); }, IDCANCEL},
      {[](QWidget* window) { QTest::keyClick(window, Qt::Key_Return); }, IDOK},
      {[&](QWidget*) { delete parent.Widget(); }, IDCANCEL}};
  for (const auto& [user, result] : kCases) {
    WhileModal([&, wanted = result] { EXPECT_EQ(dialog.DoModal(), wanted); }, user);
    EXPECT_EQ(std::exchange(dialog.gone, 0), 1);
  }
  dialog.endsAtOnce = true;
  EXPECT_EQ(dialog.DoModal(), 7) << "ended before it was shown";
}

TEST_F(Dialog, StaysOpenUntilItIsDestroyed) {
  QApplication::setActiveWindow(m_window);
  m_dialog.Edit("Text").SetFocus();
  QCoreApplication::processEvents();
  Click(m_window, "Black & White");
  EXPECT_EQ(m_dialog.Take(), "TextBlack & White");
  EXPECT_EQ(m_dialog.Button("Black & White").GetWindowText(), "Black & White");
  EXPECT_TRUE(Find<QLabel>(m_window, kWords)->hasHeightForWidth()) << "a label that wraps";
  QTest::keyClick(m_window, Qt::Key_Escape);
  EXPECT_EQ(m_dialog.gone, 1);
  EXPECT_EQ(m_dialog.Widget(), nullptr);
  m_dialog.endsAtOnce = true;
  EXPECT_EQ(m_dialog.Create(), 0);
  EXPECT_EQ(m_dialog.gone, 2);
}

TEST_F(Dialog, ControlsFollowTheEdges) {
  const auto places = [&] {
    return std::vector<CRect>{m_dialog.List("Names").GetPlace(), m_dialog.List("Others").GetPlace(),
                              m_dialog.Button("OK").GetPlace(), m_dialog.Button("Cancel").GetPlace()};
  };
  std::vector<CRect> wanted = places();
  m_window->resize(m_window->size() + QSize(50, 30));
  QCoreApplication::processEvents();
  wanted[0].right += 50, wanted[0].bottom += 30;
  wanted[1] = wanted[1].Moved(50, 0);
  wanted[2] = wanted[2].Moved(50, 30);
  EXPECT_EQ(places(), wanted);
}

TEST_F(Dialog, TextsKeepTheirBytesUntilTheyAreEdited) {
  CEdit& line = m_dialog.Edit("Line");
  CEdit& text = m_dialog.Edit("Text");
  CListBox& list = m_dialog.List("Names");
  const CString latin1 = "Ofen \xE4", mixed = "a \xC2\xA0 b\r\nc\nd\r\n";
  text.SetWindowText(mixed);
  list.AddString(latin1);
  EXPECT_EQ(text.GetWindowText(), mixed);
  EXPECT_EQ(list.GetText(0), latin1);
  EXPECT_EQ(list.Find("Ofen \xC3\xA4"), -1) << "shown alike, but another name";
  for (const CString& wanted : {CString(std::string(40000, 'x')), latin1}) {
    line.SetWindowText(wanted);
    EXPECT_EQ(line.GetWindowText(), wanted);
  }
  QTest::keyClicks(Find<QLineEdit>(m_window, "Line"), "!");
  EXPECT_EQ(line.GetWindowText(), "Ofen \xC3\xA4!");
  auto* lines = Find<QPlainTextEdit>(m_window, "Text");
  lines->moveCursor(QTextCursor::End);
  QTest::keyClick(lines, Qt::Key_Return);
  EXPECT_EQ(text.GetWindowText(), "a \xC2\xA0 b\r\nc\r\nd\r\n\r\n");
  for (const auto& [offset, marked] : {std::pair(11, "d"), {99, ""}}) {
    text.SelectAt(offset, 1);
    EXPECT_EQ(text.GetSelectedText(), marked) << offset;
  }
}

TEST_F(Dialog, TheFirstArrowKeySelectsTheCurrentEntry) {
  for (const char* text : {"a", "b"}) m_dialog.List("Names").AddString(text);
  auto* list = Find<QListWidget>(m_window, "Names");
  list->setCurrentRow(0, QItemSelectionModel::Clear);  // as the tab key does
  for (const int entry : {-1, 0, 1}) {
    EXPECT_EQ(m_dialog.List("Names").GetCurSel(), entry);
    QTest::keyClick(list, Qt::Key_Down);
  }
}

TEST_F(Dialog, RadioButtonsExcludeOthersOfTheirGroup) {
  std::string checked, tabStops;
  const auto note = [&] {
    for (const char* name : {"Red", "Green", "Small", "Large"})
      if (m_dialog.Button(name).GetCheck()) checked += name[0];
    for (const char* name : {"Small", "Large"})
      if (m_dialog.Button(name).Widget()->focusPolicy() & Qt::TabFocus) tabStops += name[0];
  };
  for (const char* name : {"Red", "Large", "Green"}) Click(m_window, name);
  for (const char* name : {"Small", "Large"}) m_dialog.Button(name).SetCheck(1), note();
  EXPECT_EQ(checked + " " + tabStops, "GSGL SL");
}

TEST_F(Dialog, ComboBoxReturnsAnEntryOrTheTypedText) {
  CComboBox& basis = m_dialog.Combo("Basis");
  for (const char* text : {"one", "Two", "two"}) basis.AddString(text);
  auto* edit = Find<QComboBox>(m_window, "Basis");
  basis.SetCurSel(2);
  EXPECT_EQ(basis.Find("two"), 2);
  EXPECT_EQ(basis.GetWindowText(), "two");
  QTest::keyClick(edit, Qt::Key_Up);
  EXPECT_EQ(m_dialog.Take(), "Basis");
  edit->lineEdit()->selectAll();
  QTest::keyClicks(edit->lineEdit(), "TWO");
  EXPECT_EQ(basis.GetWindowText(), "TWO") << "an entry of another case replaces it";
  EXPECT_EQ(basis.GetCurSel(), -1);
  QTest::keyClick(edit->lineEdit(), Qt::Key_Return);
  EXPECT_EQ(edit->count(), 3) << "the typed text becomes an entry";
  EXPECT_EQ(m_dialog.Take(), "") << "the user did not choose an entry";
}

TEST_F(Dialog, NumberOutsideItsBoundsIsReported) {
  CTestPrompter prompter;
  auto* edit = Find<QLineEdit>(m_window, "Period");
  QTest::keyClicks(edit, "-1e0x7");
  EXPECT_EQ(edit->text(), "107") << "only digits can be typed";
  for (const auto& [text, number] : {std::pair("10", 10u), {"65000", 65000}, {"9", 7}, {"65001", 7}}) {
    m_dialog.number = 7;  // if the text is refused
    m_dialog.Edit("Period").SetWindowText(text);
    Click(m_window, "Read");
    EXPECT_EQ(m_dialog.isRead, number != 7) << text;
    EXPECT_EQ(m_dialog.number, number) << text;
  }
  EXPECT_EQ(prompter.Take(),
            std::vector<std::string>(2, "|Please enter a whole number from 10 to 65000.|30"));
  EXPECT_EQ(edit->selectedText(), "65001");
}

TEST(Text, InvalidUtf8IsShownAsLatin1) {
  const std::pair<CString, const char16_t*> kCases[] = {
      {"Ofen \xC3\xA4", u"Ofen \u00E4"},
      {"Ofen \xE4", u"Ofen \u00E4"},
      {"\xC3\xA4 and \xE4", u"\u00C3\u00A4 and \u00E4"},  // one bad byte: all of it
      {"cut \xC3", u"cut \u00C3"}};
  for (const auto& [bytes, shown] : kCases) EXPECT_EQ(ToScreen(bytes).toStdU16String(), shown);
  EXPECT_EQ(ToScreen(CString("a\0b", 3)).size(), 3);
}

TEST(Text, APlaceCountsEachLineEndAndEachCharacterOnce) {
  const std::tuple<const char*, int, int> kCases[] = {
      {"a\r\nb", 2, 1},       {"a\r\nb", 3, 2},   {"a\r\nb", 4, 3},
      {"a\nb", 2, 2},         {"", 0, 0},         {"\xC3\xA4 = x", 1, 0},
      {"\xC3\xA4 = x", 5, 4}, {"\xE4 = x", 4, 4}, {"\xF0\x9F\x98\x80 = x", 7, 5}};
  for (const auto& [text, offset, place] : kCases)
    EXPECT_EQ(ScreenPlace(text, offset), place) << text << " at " << offset;
  EXPECT_EQ(FromScreenLines(ToScreenLines("a\r\nb\r\n")), "a\r\nb\r\n");
}

}  // namespace
}  // namespace vastra
