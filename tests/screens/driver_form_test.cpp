// Forms of driver modules: real widgets for sound and for hostile ones.
#include "vastra/screens/driver_form_dlg.h"

#include <gtest/gtest.h>

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>

#include <cstring>

#include "tests/support/windows.h"

namespace vastra {
namespace {

using CUser = std::function<void(QWidget*)>;

// What the fields in window show, top to bottom.
std::string Shown(QWidget* window) {
  std::string all;
  for (QWidget* widget : window->findChildren<QWidget*>()) {
    const auto* line = qobject_cast<QLineEdit*>(widget);
    const auto* combo = qobject_cast<QComboBox*>(widget);
    if (!line && !combo) continue;
    all +=
        (widget->accessibleName() + "=" + (line ? line->text() : combo->currentText()) + "|").toStdString();
  }
  return all;
}

// What a module has. The guard stands behind the buffer of its text.
struct CModule {
  std::string State() const {
    return std::to_string(fields[0].number) + "|" + std::string(text, strnlen(text, 8)) + "|" +
           std::to_string(fields[2].number) + (text[8] == '#' ? "" : " the guard is gone");
  }
  char text[9] = {'a', 'b', 'c', 0, 0, 0, 0, 0, '#'};
  const char* choices[2] = {"slow", "fast"};
  DriverField fields[3] = {
      {"Period", "How long.", driverFieldNumber, -5, 100, nullptr, 0, 5, nullptr, 0},
      {"Name", "What for.", driverFieldText, 0, 0, nullptr, 0, 0, text, 8},
      {"Mode", nullptr, driverFieldChoice, 0, 0, choices, 2, 1, nullptr, 0},
  };
  DriverForm form = {"Pump", fields, 3, nullptr, nullptr};
};

class DriverFormDlg : public testing::Test {
 protected:
  static const DriverHost& Host() { return *InstalledDriverHost(); }
  int Show(const CUser& user) { return Show(m_module, user); }
  static int Show(CModule& module, const CUser& user) {
    int result = -1;
    WhileModal([&] { result = Host().ShowForm(&module.form); }, user);
    return result;
  }

  CModule m_module;
  CDriverForms m_forms;
  CTestPrompter m_prompter;
};

const char* const kPeriod = "Pump|Period: enter a whole number from -5 to 100.|30";
const char* const kMode = "Pump|Mode: choose an entry of the list.|30";
const char* const kRefused = "Driver|The driver's settings cannot be shown: the form is not valid.|30";

void Enter(QWidget* window, const char* field, const char* value) {
  Find<QLineEdit>(window, field)->setText(value);
}

TEST_F(DriverFormDlg, GivesWhatTheUserEnteredOnOkAlone) {
  for (const bool accepts : {false, true}) {
    EXPECT_EQ(accepts, Show([&](QWidget* window) {
                EXPECT_EQ("Pump", window->windowTitle().toStdString());
                EXPECT_EQ("Period=5|Name=abc|Mode=fast|", Shown(window));
                Enter(window, "Period", " -5 ");
                Enter(window, "Name", "\u20AC\u20AC1");
                Find<QComboBox>(window, "Mode")->setCurrentIndex(0);
                Click(window, accepts ? "OK" : "Cancel");
              }));
    EXPECT_EQ(accepts ? "-5|\u20AC\u20AC1|0" : "5|abc|1", m_module.State());
  }
  EXPECT_TRUE(m_prompter.Take().empty());
}

TEST_F(DriverFormDlg, RefusesAValueOutOfItsBoundsAndStaysOpenOnItsField) {
  const char* const kName = "Pump|Name: enter at most 7 bytes; the text has 8.|30";
  const struct {
    const char *field, *value, *box;
  } kCases[] = {{"Period", "-6", kPeriod},
                {"Period", "101", kPeriod},
                {"Period", "", kPeriod},
                {"Name", "12345678", kName},
                {"Name", "12345\u20AC", kName}};
  for (const auto& c : kCases) {
    EXPECT_EQ(0, Show([&](QWidget* window) {
                Enter(window, c.field, c.value);
                Click(window, "OK");
                EXPECT_EQ(std::vector<std::string>{c.box}, m_prompter.Take());
                EXPECT_EQ(Find<QLineEdit>(window, c.field), window->focusWidget());
                EXPECT_EQ(c.value, Find<QLineEdit>(window, c.field)->text().toStdString());
              }));
    EXPECT_EQ("5|abc|1", m_module.State()) << c.value;
  }
}

TEST_F(DriverFormDlg, LetsTheModuleCheckACopyOfWhatTheUserEntered) {
  m_module.form.user = &m_module;
  m_module.form.check = [](const DriverField* fields, int count, void* user) -> const char* {
    EXPECT_EQ(3, count);
    EXPECT_EQ("5|abc|1", static_cast<CModule*>(user)->State());
    if (fields[2].number == 1) throw 1;
    return fields[0].number == 6 && std::strcmp(fields[1].text, "new") == 0 ? "" : "Period has to be 6.";
  };
  EXPECT_EQ(1, Show([&](QWidget* window) {
              Enter(window, "Name", "new");
              Click(window, "OK");
              Find<QComboBox>(window, "Mode")->setCurrentIndex(0);
              Click(window, "OK");
              EXPECT_EQ("5|abc|1", m_module.State());
              Enter(window, "Period", "6");
              Click(window, "OK");
            }));
  EXPECT_EQ((std::vector<std::string>{"Pump|The driver could not check the settings.|30",
                                      "Pump|Period has to be 6.|30"}),
            m_prompter.Take());
  EXPECT_EQ("6|new|0", m_module.State());
}

TEST_F(DriverFormDlg, HelpsWithTheFieldThatHasTheFocus) {
  Show([](QWidget* window) {
    EXPECT_TRUE(QTest::qWaitForWindowActive(window));
    const auto* help = Find<QLabel>(window, "Help");
    EXPECT_EQ("How long. From -5 to 100.", help->text().toStdString());
    Find<QLineEdit>(window, "Name")->setFocus();
    EXPECT_EQ("What for.", help->text().toStdString());
    Find<QComboBox>(window, "Mode")->setFocus();
    EXPECT_EQ("", help->text().toStdString());
  });
}

TEST_F(DriverFormDlg, ShowsWhatOfAHostileFormCanBeEditedAndKeepsTheRest) {
  static const std::string kEndless(100000, 'n');
  const struct {
    const char* what;
    void (*change)(CModule& m);
    const char* shown;              // null: the form is refused
    const char* box = "";           // empty: accepted
    const char* state = "5|abc|1";  // of the module behind it
  } kCases[] = {
      {"no fields", [](CModule& m) { m.form.fields = nullptr; }, nullptr, kRefused},
      {"count below 0", [](CModule& m) { m.form.fieldCount = -2147483647 - 1; }, nullptr, kRefused},
      {"count too high", [](CModule& m) { m.form.fieldCount = 41; }, nullptr, kRefused},
      {"nothing to ask", [](CModule& m) { m.form.fields = nullptr, m.form.fieldCount = 0; }, ""},
      {"no words",
       [](CModule& m) {
         m.form.title = nullptr;
         for (DriverField& field : m.fields) field.name = field.help = nullptr;
       },
       "Setting=5|Setting (2)=abc|Setting (3)=fast|"},
      {"names of others, and one without end",
       [](CModule& m) {
         m.fields[0].name = m.fields[0].help = kEndless.c_str();
         m.fields[1].name = "Help", m.fields[2].name = "OK";
       },
       "nnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnn...=5|Help=abc|OK=fast|"},
      {"kinds below and above, choices below 0",
       [](CModule& m) { m.fields[0].kind = -1, m.fields[1].kind = 3, m.fields[2].choiceCount = -1; }, ""},
      {"empty range, no buffer, no choices",
       [](CModule& m) { m.fields[0].low = 101, m.fields[1].text = nullptr, m.fields[2].choices = nullptr; },
       ""},
      {"buffer of 0, huge choices",
       [](CModule& m) { m.fields[1].textSize = 0, m.fields[2].choiceCount = 2147483647; }, "Period=5|"},
      {"text without end, null choice",
       [](CModule& m) { std::memcpy(m.text, "12345678", 8), m.choices[1] = nullptr; },
       "Period=5|Name=1234567|Mode=|", "", "5|1234567|1"},
      {"cut character", [](CModule& m) { std::memcpy(m.text, "12345\u20AC", 8); },
       "Period=5|Name=12345|Mode=fast|", "", "5|12345|1"},
      {"no UTF-8", [](CModule& m) { std::memcpy(m.text, "\x80\xFF\r\n", 5); },
       "Period=5|Name=\u0080\u00FF\r\n|Mode=fast|", "", "5|\x80\xFF\r\n|1"},
      {"number outside", [](CModule& m) { m.fields[0].number = 2147483647; },
       "Period=2147483647|Name=abc|Mode=fast|", kPeriod, "2147483647|abc|1"},
      {"choice below 0", [](CModule& m) { m.fields[2].number = -1; }, "Period=5|Name=abc|Mode=|", kMode,
       "5|abc|-1"},
      {"choice outside", [](CModule& m) { m.fields[2].number = 2; }, "Period=5|Name=abc|Mode=|", kMode,
       "5|abc|2"},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.what);
    CModule module;
    c.change(module);
    const CUser user = [&](QWidget* window) {
      EXPECT_EQ(c.shown, Shown(window));
      Click(window, "OK");
    };
    EXPECT_EQ(*c.box == 0, c.shown ? Show(module, user) : Host().ShowForm(&module.form));
    EXPECT_EQ(*c.box ? std::vector<std::string>{c.box} : std::vector<std::string>(), m_prompter.Take());
    EXPECT_EQ(c.state, module.State());
  }
}

TEST_F(DriverFormDlg, FitsAllItsFieldsOnASmallScreen) {
  std::vector<DriverField> fields(40, m_module.fields[0]);
  m_module.form.fields = fields.data();
  m_module.form.fieldCount = 40;
  EXPECT_EQ(1, Show([](QWidget* window) {
              EXPECT_LE(window->height(), 730) << "without its frame";
              EXPECT_LE(window->width(), 1280);
              QRect last;
              for (const QLineEdit* line : window->findChildren<QLineEdit*>()) {
                EXPECT_TRUE(window->rect().contains(line->geometry()));
                EXPECT_FALSE(last.intersects(line->geometry()));
                last = line->geometry();
              }
              Click(window, "OK");
            }));
}

TEST_F(DriverFormDlg, RefusesNoFormAndIsTakenBack) {
  EXPECT_EQ(0, Host().ShowForm(nullptr));
  const DriverHost own = {DRIVER_HOST_VERSION, nullptr};
  const DriverHost* forms = InstallDriverHost(&own);
  { const CDriverForms inner; }
  EXPECT_EQ(&own, InstallDriverHost(forms));
}

}  // namespace
}  // namespace vastra
