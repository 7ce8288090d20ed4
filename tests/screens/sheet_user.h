// A user of dialogs and of the configuration sheet who follows a list of steps, and configurations as text.
#pragma once

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>

#include <algorithm>
#include <sstream>
#include <variant>

#include "tests/support/names.h"
#include "tests/support/windows.h"
#include "vastra/core/field_walk.h"
#include "vastra/screens/input_page.h"
#include "vastra/screens/smart_page.h"

namespace vastra {

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
T* Seek(QWidget* window, const char* name) {
  try {
    return Find<T>(window, name);
  } catch (const std::runtime_error&) {
    return nullptr;
  }
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
  if (const auto* list = Seek<QListWidget>(window, name)) {
    QString texts;
    for (int i = 0; i < list->count(); ++i) texts += list->item(i)->text() + ",";
    return state(list, texts);
  }
  return Find<QLabel>(window, name)->text().toStdString();
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
  QTest::keyClick(edit, Qt::Key_Delete);
  if (std::ranges::all_of(text, [](QChar c) { return c < QChar(0x80); }))
    QTest::keyClicks(edit, text);
  else
    edit->insert(text);  // QTest has no keys for it
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
    // A box may come after OK.
    if (m_next + 1 == m_steps.size())
      if (const auto* last = std::get_if<std::string>(&m_steps.back())) ExpectBox(last->substr(1)), ++m_next;
    EXPECT_EQ(m_next, m_steps.size()) << "steps followed";
    return result;
  }
  int Run(CDialog& dialog, const CSteps& steps) {
    return Run([&] { return dialog.DoModal(); }, steps);
  }
  int Run(const std::vector<CPropertyPage*>& pages, const CSteps& steps) {
    CPropertySheet sheet("Configuration");
    for (CPropertyPage* page : pages) sheet.AddPage(*page);
    return Run(sheet, steps);
  }

  CTestPrompter boxes;
  CTestChooser chooser;

 private:
  void Add(const CStep& step) {
    const auto* text = std::get_if<std::string>(&step);
    if (!text) return m_steps.push_back(step);
    const std::string kBetween = " / ";
    for (std::size_t start = 0, end = 0; end != std::string::npos; start = end + kBetween.size()) {
      end = text->find(kBetween, start);
      m_steps.emplace_back(text->substr(start, end == std::string::npos ? end : end - start));
    }
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
    while (m_next < m_steps.size() && window->isVisible()) {
      const CStep step = m_steps[m_next++];
      try {
        if (const auto* text = std::get_if<std::string>(&step))
          Do(window, *text);
        else
          std::get<1>(step)(window);
      } catch (const std::runtime_error& e) {
        ADD_FAILURE() << "step " << m_next << ": " << e.what();
      }
    }
    m_open.pop_back();
  }

  void Do(QWidget* window, const std::string& step) {
    SCOPED_TRACE("step " + std::to_string(m_next) + ": " + step);
    if (step[0] == '!') return ExpectBox(step.substr(1));
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
    const QPoint place = list->visualItemRect(item).center();
    if (isDouble) QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, place);
    if (isDouble) Act([&] { QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, place); });
  }

  static void Expect(const std::string& state, const std::string& expected) { EXPECT_EQ(state, expected); }

  void ExpectBox(const std::string& text) {
    const bool isWhole = text.find('|') != std::string::npos;
    EXPECT_EQ(boxes.Take(), text.empty() ? CTexts() : CTexts{isWhole ? text : "|" + text + "|30"});
  }

  CSteps m_steps;
  std::size_t m_next = 0;
  std::vector<QWidget*> m_open;  // the dialogs that get steps, innermost last
};

// Writes "name:value|" for each field that is neither 0 nor empty.
class CTextWalk : public CFieldWalk {
 public:
  CTextWalk() : CFieldWalk(Form::named, false, kAllVersions) {}
  void Field(const char* name, int& number) override { Add(name, number); }
  void Field(const char* name, UINT& number) override { Add(name, number); }
  void Field(const char* name, float& number) override { Add(name, number); }
  void Field(const char* name, CString& value) override { Put(name, value.Std()); }
  void Field(const char* name, CStringArray& texts) override { Put(name, Joined(texts)); }
  void Paths(const char* name, CStringList& paths) override { Put(name, Joined(paths)); }
  void Number(UINT&) override {}

  template <class T>
  static std::string Joined(const T& texts) {
    std::string all;
    for (const CString& each : texts) all += each.Std() + ",";
    return all;
  }

  std::string text;

 protected:
  void EnterElement() override { text += "{"; }
  void EnterList(const char* name, UINT&, std::size_t) override { text += std::string(name) + "["; }
  void Leave() override { text += "}"; }

 private:
  template <class T>
  void Add(const char* name, T number) {
    std::ostringstream digits;
    digits << number;
    if (number != T()) Put(name, digits.str());
  }
  void Put(const char* name, const std::string& value) {
    if (!value.empty()) text += std::string(name) + ":" + value + "|";
  }
};

template <class T>
std::string TextOf(const T& config) {
  T copy = config;
  CTextWalk walk;
  copy.Fields(walk);
  return walk.text;
}

// The same of what a page holds. filled: what the page replaces.
template <class TConfig, class TPage>
std::string Held(const TPage& page, TConfig filled = TConfig()) {
  page.GetConfiguration(filled);
  return TextOf(filled);
}

inline std::string Joined(const CStringArray& texts) { return CTextWalk::Joined(texts); }

// The page provides names by preprocessing. Without names a request for them fails: the page has no node.
inline void SetInput(CInputPage& page, std::initializer_list<const char*> names) {
  CInputConfig config;
  config.m_preprocess = names.size() != 0;
  config.m_preNewVars = Names(names);
  page.SetConfiguration(config);
}

inline void SetSmart(CSmartPage& page, std::initializer_list<const char*> outputs) {
  CSmartConfig config;
  config.m_outputVars = Names(outputs);
  page.SetConfiguration(config);
}

}  // namespace vastra
