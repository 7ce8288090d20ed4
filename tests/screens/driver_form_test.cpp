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

class DriverFormDlg : public testing::Test {
 public:
  static const DriverHost& Host() { return *InstalledDriverHost(); }
  int Show(const CUser& user) {
    int result = -1;
    WhileModal([&] { result = Host().ShowForm(&m_form); }, user);
    return result;
  }
  // What the module has: the guard behind the buffer of the text too.
  std::string State() const {
    return std::to_string(m_fields[0].number) + "|" + std::string(m_text, strnlen(m_text, 8)) + "|" +
           std::to_string(m_fields[2].number) + (m_text[8] == '#' ? "" : " the guard is gone");
  }

  char m_text[9] = {'a', 'b', 'c', 0, 0, 0, 0, 0, '#'};
  const char* m_choices[2] = {"slow", "fast"};
  DriverField m_fields[3] = {
      {"Period", "How long.", driverFieldNumber, -5, 100, nullptr, 0, 5, nullptr, 0},
      {"Name", "What for.", driverFieldText, 0, 0, nullptr, 0, 0, m_text, 8},
      {"Mode", nullptr, driverFieldChoice, 0, 0, m_choices, 2, 1, nullptr, 0},
  };
  DriverForm m_form = {"Pump", m_fields, 3, nullptr, nullptr};
  CDriverForms m_forms;
  CTestPrompter m_prompter;
};

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
    EXPECT_EQ(accepts ? "-5|\u20AC\u20AC1|0" : "5|abc|1", State());
  }
  EXPECT_TRUE(m_prompter.Take().empty());
}

TEST_F(DriverFormDlg, RefusesAValueOutOfItsBoundsAndStaysOpenOnItsField) {
  const struct {
    const char *field, *value, *words;
  } kCases[] = {
      {"Period", "-6", "Period: a whole number from -5 to 100."},
      {"Period", "101", "Period: a whole number from -5 to 100."},
      {"Period", "99999999999999999999", "Period: a whole number from -5 to 100."},
      {"Period", "", "Period: a whole number from -5 to 100."},
      {"Period", "5x", "Period: a whole number from -5 to 100."},
      {"Name", "12345678", "Name: a text of up to 7 bytes; this one has 8."},
      {"Name", "12345\u20AC", "Name: a text of up to 7 bytes; this one has 8."},
  };
  for (const auto& c : kCases) {
    EXPECT_EQ(0, Show([&](QWidget* window) {
                Enter(window, c.field, c.value);
                Click(window, "OK");
                EXPECT_EQ(std::vector<std::string>{std::string("Pump|") + c.words + "|30"},
                          m_prompter.Take());
                EXPECT_EQ(Find<QLineEdit>(window, c.field), window->focusWidget());
                EXPECT_EQ(c.value, Find<QLineEdit>(window, c.field)->text().toStdString());
              }));
    EXPECT_EQ("5|abc|1", State()) << c.value;
  }
}

TEST_F(DriverFormDlg, LetsTheModuleCheckACopyOfWhatTheUserEntered) {
  m_form.user = this;
  m_form.check = [](const DriverField* fields, int count, void* user) -> const char* {
    EXPECT_EQ(3, count);
    EXPECT_EQ("5|abc|1", static_cast<DriverFormDlg*>(user)->State());
    if (fields[2].number == 1) throw 1;
    return fields[0].number == 6 && std::strcmp(fields[1].text, "new") == 0 ? "" : "Period has to be 6.";
  };
  EXPECT_EQ(1, Show([&](QWidget* window) {
              Enter(window, "Name", "new");
              Click(window, "OK");
              Find<QComboBox>(window, "Mode")->setCurrentIndex(0);
              Click(window, "OK");
              EXPECT_EQ("5|abc|1", State());
              Enter(window, "Period", "6");
              Click(window, "OK");
            }));
  EXPECT_EQ((std::vector<std::string>{"Pump|The driver could not check the settings.|30",
                                      "Pump|Period has to be 6.|30"}),
            m_prompter.Take());
  EXPECT_EQ("6|new|0", State());
}

TEST_F(DriverFormDlg, HelpsWithTheFieldThatHasTheFocus) {
  Show([](QWidget* window) {
    EXPECT_TRUE(QTest::qWaitForWindowActive(window));
    const auto* help = Find<QLabel>(window, "Help");
    EXPECT_EQ("How long.", help->text().toStdString());
    Find<QLineEdit>(window, "Name")->setFocus();
    EXPECT_EQ("What for.", help->text().toStdString());
    Find<QComboBox>(window, "Mode")->setFocus();
    EXPECT_EQ("", help->text().toStdString());
  });
}

struct CHostileCase {
  const char* what;
  void (*change)(DriverForm& form);
  const char* shown;              // null: the form is refused
  const char* words;              // on OK; empty: accepted
  const char* state = "5|abc|1";  // of the module behind it
};
const char* const kNullChoices[] = {"a", nullptr};
const CHostileCase kHostileCases[] = {
    {"no fields", [](DriverForm& form) { form.fields = nullptr; }, nullptr, ""},
    {"count below 0", [](DriverForm& form) { form.fieldCount = -2147483647 - 1; }, nullptr, ""},
    {"count too high", [](DriverForm& form) { form.fieldCount = 41; }, nullptr, ""},
    {"huge count", [](DriverForm& form) { form.fieldCount = 2147483647; }, nullptr, ""},
    {"nothing to ask", [](DriverForm& form) { form.fields = nullptr, form.fieldCount = 0; }, "", ""},
    {"no words",
     [](DriverForm& form) {
       form.title = nullptr;
       for (int i = 0; i < 3; ++i) form.fields[i].name = form.fields[i].help = nullptr;
     },
     "Setting=5|Setting (2)=abc|Setting (3)=fast|", ""},
    {"names of others",
     [](DriverForm& form) {
       form.fields[0].name = "OK", form.fields[1].name = "Help", form.fields[2].name = "OK";
     },
     "OK=5|Help=abc|OK (2)=fast|", ""},
    {"name without end",
     [](DriverForm& form) {
       static const std::string name(100000, 'n');
       form.fields[0].name = form.fields[0].help = name.c_str();
       form.fieldCount = 1;
     },
     "nnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnn...=5|", ""},
    {"unknown kinds", [](DriverForm& form) { form.fields[0].kind = -1, form.fields[1].kind = 3; },
     "Mode=fast|", ""},
    {"empty range", [](DriverForm& form) { form.fields[0].low = 101; }, "Name=abc|Mode=fast|", ""},
    {"number outside", [](DriverForm& form) { form.fields[0].number = 2147483647; },
     "Period=2147483647|Name=abc|Mode=fast|", "Period: a whole number from -5 to 100.", "2147483647|abc|1"},
    {"no buffer", [](DriverForm& form) { form.fields[1].text = nullptr; }, "Period=5|Mode=fast|", ""},
    {"buffer of nothing", [](DriverForm& form) { form.fields[1].textSize = 0; }, "Period=5|Mode=fast|", ""},
    {"text without end", [](DriverForm& form) { std::memcpy(form.fields[1].text, "12345678", 8); },
     "Period=5|Name=1234567|Mode=fast|", "", "5|1234567|1"},
    {"character without end", [](DriverForm& form) { std::memcpy(form.fields[1].text, "12345\u20AC", 8); },
     "Period=5|Name=12345|Mode=fast|", "", "5|12345|1"},
    {"no UTF-8", [](DriverForm& form) { std::memcpy(form.fields[1].text, "\x80\xFF\r\n", 5); },
     "Period=5|Name=\u0080\u00FF\r\n|Mode=fast|", "", "5|\x80\xFF\r\n|1"},
    {"no choices", [](DriverForm& form) { form.fields[2].choices = nullptr; }, "Period=5|Name=abc|", ""},
    {"choices below 0", [](DriverForm& form) { form.fields[2].choiceCount = -1; }, "Period=5|Name=abc|", ""},
    {"huge choices", [](DriverForm& form) { form.fields[2].choiceCount = 2147483647; }, "Period=5|Name=abc|",
     ""},
    {"null choice", [](DriverForm& form) { form.fields[2].choices = kNullChoices; },
     "Period=5|Name=abc|Mode=|", ""},
    {"choice below 0", [](DriverForm& form) { form.fields[2].number = -1; }, "Period=5|Name=abc|Mode=|",
     "Mode: one of the list is to be chosen.", "5|abc|-1"},
    {"choice outside", [](DriverForm& form) { form.fields[2].number = 2; }, "Period=5|Name=abc|Mode=|",
     "Mode: one of the list is to be chosen.", "5|abc|2"},
};

// A form of its own for each case, so that one does not spoil the next.
class HostileForm : public DriverFormDlg, public testing::WithParamInterface<CHostileCase> {};

TEST_P(HostileForm, ShowsWhatCanBeEditedAndKeepsTheRest) {
  const CHostileCase& c = GetParam();
  c.change(m_form);
  if (!c.shown) {
    EXPECT_EQ(0, Host().ShowForm(&m_form));
    EXPECT_EQ(std::vector<std::string>{"Driver|The driver's settings cannot be shown.|30"},
              m_prompter.Take());
    return;
  }
  EXPECT_EQ(*c.words == 0, Show([&](QWidget* window) {
    EXPECT_EQ(c.shown, Shown(window));
    Click(window, "OK");
  }));
  std::vector<std::string> refusals;
  if (*c.words) refusals.push_back(std::string("Pump|") + c.words + "|30");
  EXPECT_EQ(refusals, m_prompter.Take());
  EXPECT_EQ(c.state, State());
}

INSTANTIATE_TEST_SUITE_P(Each, HostileForm, testing::ValuesIn(kHostileCases), [](const auto& hostile) {
  std::string name = hostile.param.what;
  std::erase(name, '-');
  std::replace(name.begin(), name.end(), ' ', '_');
  return name;
});

TEST_F(DriverFormDlg, FitsAllItsFieldsOnASmallScreen) {
  std::vector<DriverField> fields(40, m_fields[0]);
  m_form.fields = fields.data();
  m_form.fieldCount = 40;
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
