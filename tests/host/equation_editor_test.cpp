// The equation editor: its rules, and the window as a user sees it.
#include <QCheckBox>
#include <QComboBox>
#include <QCompleter>
#include <QLabel>
#include <QTableWidget>

#include "host/desktop/equation_edit.h"
#include "host/desktop/equation_help_rules.h"
#include "host/desktop/equation_places.h"
#include "tests/host/desktop_window.h"
#include "tests/support/names.h"

namespace vastra {
namespace {

// The tokens as "kind:text", with the initial of the kind; at the end "+" inside a comment.
std::string Tokens(const std::string& line, bool isInComment = false) {
  std::string shown;
  for (const CEquationToken& token : EquationTokens(std::string_view(line), isInComment))
    shown += "nf0c."[static_cast<int>(token.kind)] + line.substr(token.begin, token.length) + " ";
  return shown + (isInComment ? "+" : "");
}

TEST(EquationHelp, WordsHaveTheKindsOfTheLanguage) {
  const char* const cases[][2] = {
      {"y=1.5e-3*a_1", "ny .= 01.5e-3 .* na_1 "},
      {"if(sqrt(x)>0,abs,2.)", "fif .( fsqrt .( nx .) .> 00 ., fabs ., 02 .. .) "},
      {"a /* b * c */ d /* e", "na c/* b * c */ nd c/* e +"},
      {"a / b // c\rd", "na ./ nb c// c\rd "},
      {"\xC3\xA9", ".\xC3 .\xA9 "}};
  for (const auto& [line, tokens] : cases) EXPECT_EQ(Tokens(line), tokens);
  EXPECT_EQ(Tokens("b */ c = 1", true), "cb */ nc .= 01 ");
  EXPECT_EQ(Tokens("*", true), "c* +");
  EXPECT_EQ(CompletionsOf("s", Names({"Sum", "a", "Sum"})), Names({"Sum", "sin(", "sqrt("}));
}

TEST(EquationHelp, AFaultIsAtItsTokenAndNamesWhatWasMeant) {
  const std::tuple<const char*, int, int, const char*> cases[] = {
      {"y = Temp;\r\nz = Tmp;", 15, 3, "equation 2: there is no variable \"Tmp\"; did you mean \"Temp\"?"},
      {"y = 900 - ;", 10, 1, "equation 1: no statement of the language"},
      {"y = 1; z = (", 12, 0, "equation 2: no statement of the language"},
      {"y = z; z = Temp", -1, 0, ""},
      {"", -1, 0, ""}};
  for (const auto& [text, offset, length, message] : cases) {
    const CEquationTextFault fault = CEquationTrial().Compile(text, Names({"Temp"}), true);
    EXPECT_EQ(fault.offset, offset) << text;
    EXPECT_EQ(fault.length, length) << text;
    EXPECT_EQ(fault.message, message);
  }
  EXPECT_EQ(CEquationTrial().Compile("y = Temp;", {}, false).offset, -1) << "the names are not known";
}

TEST(EquationHelp, ATrialKeepsVariablesFromSampleToSample) {
  CEquationTrial trial;
  trial.Compile("n = n + b; q = 1 / a; // c\r\nr = d;", Names({"a", "b", "c", "d"}), true);
  EXPECT_EQ(trial.Read(), Names({"a", "b", "d"}));
  for (int i = 0; i < 2; ++i) trial.Run({0, 3, 7});
  const auto results = trial.Results();
  ASSERT_EQ(results.size(), 3u);
  EXPECT_EQ(results[0].value, 6);
  EXPECT_TRUE(results[1].isUndefined && !results[0].isUndefined);
  EXPECT_EQ(results[2].value, 7);
  EXPECT_GT(trial.Compile("n = ", Names({"a"}), true).offset, 0);
  EXPECT_EQ(trial.Results().size(), 3u) << "a fault changes the program";
}

class EquationEditor : public Desktop {
 protected:
  static QWidget* Editor() { return TopLevel("Equation Editor"); }
  static CEquationEdit* Field() { return Find<CEquationEdit>(Editor(), "Equations"); }
  static std::string Fault() { return Find<QLabel>(Editor(), "Fault")->text().toStdString(); }
  static void Choose(const char* place) {
    auto* choice = Find<QComboBox>(Editor(), "Place");
    const int index = choice->findText(place);
    ASSERT_GE(index, 0) << place;
    choice->setCurrentIndex(index);
    emit choice->activated(index);
  }
  static void Type(const char* text) {
    Field()->selectAll();
    QTest::keyClicks(Field(), text);
  }
  // The number in the row of a variable.
  static QTableWidgetItem* Value(const char* name) {
    auto* table = Find<QTableWidget>(Editor(), "Values");
    for (int row = 0; row < table->rowCount(); ++row)
      if (table->item(row, 0)->text() == name) return table->item(row, 1);
    throw std::runtime_error(name);
  }
};

TEST_F(EquationEditor, ATextIsCheckedTriedAndApplied) {
  CTestWindow window(m_demo);
  ActionOf(window, "Equation Editor")->trigger();
  EXPECT_EQ(Find<QComboBox>(Editor(), "Place")->count(), 4);  // input, smart, output, trend
  Choose("output \"All\", Enable Equations");
  EXPECT_EQ(Field()->toPlainText(), "WriteToLog = 1;");
  EXPECT_EQ(Fault(), "No fault");

  Type("WriteToLog = a > bb;");
  EXPECT_NE(Fault().find("there is no variable \"bb\"; did you mean \"b\"?"), std::string::npos);
  EXPECT_EQ(Field()->extraSelections().front().cursor.selectedText(), "bb");
  EXPECT_FALSE(Find<QAbstractButton>(Editor(), "&Apply")->isEnabled());

  Type("n = n + 1; WriteToLog = a > b + n;");
  EXPECT_EQ(Fault(), "No fault");
  Value("a")->setText("3");
  EXPECT_FALSE(Find<QCheckBox>(Editor(), "&Newest sample")->isChecked());
  const int before = Value("n")->text().toInt();
  Click(Editor(), "Next &Sample");
  EXPECT_EQ(Value("n")->text().toInt(), before + 1);
  EXPECT_EQ(Value("WriteToLog")->text(), before + 1 < 3 ? "1" : "0");

  Click(Editor(), "&Apply");
  EXPECT_TRUE(window.isWindowModified());
  ActionOf(window, "Save")->trigger();
  EXPECT_NE(ReadBytes(m_demo).find("\"enableText\": \"n = n + 1; WriteToLog = a > b + n;\""),
            std::string::npos);
  EXPECT_NE(ReadBytes(m_demo).find("\" WriteToLog = a > b + n\""), std::string::npos);
}

TEST_F(EquationEditor, TheNewestSampleIsTriedWhileTheLoggerRuns) {
  CTestWindow window(m_demo);
  ASSERT_TRUE(Runs(window, 3));
  ActionOf(window, "Equation Editor")->trigger();
  Choose("trend, equations");
  EXPECT_TRUE(Wait([&] { return Value("c")->text().toFloat() > 2; }));
  EXPECT_EQ(Value("c")->text().toFloat(), Value("a")->text().toFloat() + Value("b")->text().toFloat());
  Field()->selectAll();
  ASSERT_TRUE(Stops(window));
}

TEST_F(EquationEditor, TheCheckLeadsToTheFaultInAnEquation) {
  std::string text = Configuration(kSimulator);
  text.replace(text.find("WriteToLog = 1;"), 15, "WriteToLog = 1; x = aa;");
  WriteBytes(m_demo, text);
  CTestWindow window(m_demo);
  ActionOf(window, "Check")->trigger();
  Click(TopLevel("Check"), "&Go There");
  ASSERT_TRUE(Editor());
  EXPECT_EQ(Find<QComboBox>(Editor(), "Place")->currentText(), "output \"All\", Enable Equations");
  EXPECT_EQ(Field()->textCursor().position(), 20);
  Type("WriteToLog = 1; x = a;");
  Click(Editor(), "&Apply");
  EXPECT_EQ(Find<QTreeWidget>(TopLevel("Check"), "Findings")->topLevelItemCount(), 0);
}

TEST_F(EquationEditor, WordsAreOfferedAndCompletedByKeys) {
  CTestWindow window(m_demo);
  ActionOf(window, "Equation Editor")->trigger();
  Choose("output \"All\", Enable Equations");
  Type("Wr");
  auto* words = Field()->findChild<QCompleter*>();
  ASSERT_TRUE(words->popup()->isVisible());
  QTest::keyClick(words->popup(), Qt::Key_Return);
  EXPECT_EQ(Field()->toPlainText(), "WriteToLog");
  QTest::keyClicks(Field(), " = sq");
  QTest::keyClick(words->popup(), Qt::Key_Tab);
  EXPECT_EQ(Field()->toPlainText(), "WriteToLog = sqrt(");
  QTest::keyClick(Field(), Qt::Key_Space, Qt::ControlModifier);
  EXPECT_GT(words->popup()->model()->rowCount(), 10);
  QTest::keyClick(words->popup(), Qt::Key_Escape);
  EXPECT_FALSE(words->popup()->isVisible());
  QTest::keyClicks(Field(), "a)");
  EXPECT_EQ(Fault(), "No fault");

  window.boxes.answer = IDCANCEL;
  Choose("trend, equations");
  EXPECT_EQ(window.boxes.Take(), Texts{"|Apply the changes of the equations?|23"});
  EXPECT_EQ(Field()->toPlainText(), "WriteToLog = sqrt(a)");
  window.close();
  EXPECT_EQ(window.boxes.Take(), Texts{"|Apply the changes of the equations?|23"});
  window.boxes.answer = IDYES;
  Editor()->close();
  EXPECT_EQ(window.boxes.Take().size(), 1u);
  EXPECT_TRUE(window.isWindowModified());
}

}  // namespace
}  // namespace vastra
