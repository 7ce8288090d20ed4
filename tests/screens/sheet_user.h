// A user of dialogs and of the configuration sheet who follows a list of steps, and configurations as JSON.
#pragma once

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>

#include <algorithm>
#include <variant>

#include "host/common/json_walk.h"
#include "tests/support/names.h"
#include "tests/support/windows.h"
#include "vastra/ui/property_sheet.h"

namespace vastra {

using nlohmann::json;
using CTexts = std::vector<std::string>;

// A function that gets the window, or texts separated by " / ", each of them one of these:
//   Add           clicks the button; a dialog that it opens gets the next steps until it closes
//   Name:=x       replaces the text of the edit, or selects x in the combo box
//   Outputs#1     marks the row of the list; ##1 double-clicks it
//   Outputs?a,b,  expects what the control shows, "-" before it if the control is disabled
//   !text         expects one box with that text, or with "title|text|type"; without text: no box
using CStep = std::variant<std::string, std::function<void(QWidget*)>>;
using CSteps = std::vector<CStep>;

inline CSteps operator+(CSteps steps, const CSteps& more) {
  steps.insert(steps.end(), more.begin(), more.end());
  return steps;
}

template <class T>
T* Seek(QWidget* window, const char* name) try {
  return Find<T>(window, name);
} catch (const std::runtime_error&) {
  return nullptr;
}

inline std::string StateOf(QWidget* window, const char* name) {
  const auto state = [](const QWidget* control, const QString& text) {
    return (control->isEnabled() ? "" : "-") + text.toStdString();
  };
  if (const auto* edit = Seek<QLineEdit>(window, name)) return state(edit, edit->text());
  if (const auto* edit = Seek<QPlainTextEdit>(window, name)) return state(edit, edit->toPlainText());
  if (const auto* combo = Seek<QComboBox>(window, name)) return state(combo, combo->currentText());
  if (const auto* button = Seek<QAbstractButton>(window, name))
    return state(button, button->isChecked() ? "x" : "");
  const auto* list = Seek<QListWidget>(window, name);
  if (!list) return Find<QLabel>(window, name)->text().toStdString();
  QString texts;
  for (const std::string& text : Shown(list)) texts += QString::fromStdString(text) + ",";
  return state(list, texts);
}

inline void Enter(QWidget* window, const char* name, const QString& text) {
  if (auto* edit = Seek<QPlainTextEdit>(window, name)) return edit->setPlainText(text);
  if (auto* combo = Seek<QComboBox>(window, name)) {
    const int wanted = combo->findText(text, Qt::MatchExactly | Qt::MatchCaseSensitive);
    if (wanted < 0) return combo->setEditText(text);
    while (combo->currentIndex() != wanted)
      QTest::keyClick(combo, combo->currentIndex() < wanted ? Qt::Key_Down : Qt::Key_Up);
    return;
  }
  auto* edit = Find<QLineEdit>(window, name);
  edit->selectAll();
  edit->insert(text);  // as if pasted; its validator checks it
}

class CSheetUser {
 public:
  ~CSheetUser() { EXPECT_EQ(boxes.Take(), CTexts()); }

  // Follows steps in the dialog that run opens, closes it if it is still open, and returns the result of run.
  int Run(const std::function<int()>& run, const CSteps& steps) {
    m_steps.clear();
    for (const CStep& step : steps) Add(step);
    m_next = 0;
    int result = -1;
    Act([&] { result = run(); });
    if (m_next + 1 == m_steps.size()) Next(nullptr);  // a box may come after OK
    EXPECT_EQ(m_next, m_steps.size()) << "steps followed";
    return result;
  }
  int Run(CDialog& dialog, const CSteps& steps) {
    return Run([&] { return dialog.DoModal(); }, steps);
  }
  int Run(CPropertyPage& page, const CSteps& steps) {
    CPropertySheet sheet("Configuration");
    sheet.AddPage(page);
    return Run(sheet, steps);
  }

  CTestPrompter boxes;
  CTestChooser chooser;

 private:
  void Add(const CStep& step) {
    const auto* text = std::get_if<std::string>(&step);
    if (!text) return m_steps.push_back(std::get<1>(step));
    for (const QString& each : QString::fromStdString(*text).split(" / "))
      m_steps.emplace_back([this, each](QWidget* window) { Do(window, each.toStdString()); });
  }

  // Does what may open a dialog, which then gets the next steps.
  void Act(const std::function<void()>& action) {
    QTimer watch;
    QObject::connect(&watch, &QTimer::timeout, [&] {
      QWidget* window = QApplication::activeModalWidget();
      if (!window || std::ranges::find(m_open, window) != m_open.end()) return;
      watch.stop();
      Follow(window);
      if (QApplication::activeModalWidget() == window) window->close();
    });
    watch.start(0);
    action();
  }

  void Follow(QWidget* window) {
    m_open.push_back(window);
    EXPECT_TRUE(QTest::qWaitForWindowActive(window));
    while (m_next < m_steps.size() && window->isVisible()) Next(window);
    m_open.pop_back();
  }

  void Next(QWidget* window) try { m_steps[m_next++](window); } catch (const std::runtime_error& e) {
    ADD_FAILURE() << "step " << m_next << ": " << e.what();
  }

  void Do(QWidget* window, const std::string& step) {
    SCOPED_TRACE("step " + std::to_string(m_next) + ": " + step);
    if (step[0] == '!') return ExpectBox(step.substr(1));
    if (!window) throw std::runtime_error("the dialog is closed");
    const std::size_t end = std::min(step.find_first_of("=?#"), step.size());
    const std::string name = step.substr(0, end), rest = step.substr(std::min(end + 1, step.size()));
    if (end == step.size()) return Act([&] { Click(window, name.c_str()); });
    if (step[end] == '=') return Enter(window, name.c_str(), QString::fromStdString(rest));
    if (step[end] == '?') return Expect(StateOf(window, name.c_str()), rest);
    auto* list = Find<QListWidget>(window, name.c_str());
    const bool isDouble = rest[0] == '#';
    QListWidgetItem* item = list->item(std::stoi(rest.substr(isDouble)));
    list->setCurrentItem(item);
    item->setSelected(true);  // also in a list without a current item
    if (!isDouble) return;
    const QPoint place = list->visualItemRect(item).center();
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, place);
    Act([&] { QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, place); });
  }

  static void Expect(const std::string& state, const std::string& expected) { EXPECT_EQ(state, expected); }

  void ExpectBox(const std::string& text) {
    const bool isWhole = text.find('|') != std::string::npos;
    EXPECT_EQ(boxes.Take(), text.empty() ? CTexts() : CTexts{isWhole ? text : "|" + text + "|30"});
  }

  std::vector<std::function<void(QWidget*)>> m_steps;
  std::size_t m_next = 0;
  std::vector<QWidget*> m_open;  // the dialogs that get steps, innermost last
};

// The fields of a configuration as JSON, and a configuration with such fields.
template <class T>
json FieldsOf(T config) {
  CJsonWriter writer;
  writer.Write(config);
  return writer.Take();
}
template <class T>
T Configured(const json& fields) {
  T config;
  CJsonReader(fields, "/").Read(config);
  return config;
}
// The fields that a page holds. filled: what the page replaces.
template <class TConfig, class TPage>
json Held(const TPage& page, TConfig filled = TConfig()) {
  page.GetConfiguration(filled);
  return FieldsOf(filled);
}

}  // namespace vastra
