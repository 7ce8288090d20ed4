// Tests of the desktop: a folder and settings of the test's own, and what the user sees of the main window.
#pragma once

#include <gtest/gtest.h>

#include <QLabel>
#include <QMenu>
#include <QMenuBar>

#include <algorithm>
#include <filesystem>

#include "host/desktop/main_window.h"
#include "tests/support/files.h"
#include "tests/support/windows.h"

namespace vastra {

inline std::string Configuration(const std::string& driver, const std::string& more = "") {
  return R"({"input": {"scanPeriod": 10, "plcNodes": [{"nodeName": "N", "driver": )" + driver +
         R"(, "varNames": ["a", "b"]}])" + more + R"(},
"outputs": [{"name": "All", "enableText": "WriteToLog = 1;", "varNames": ["a", "b"], "saveRp": 1, "saveCsv": 1,
"directory": "."}], "trend": {"calculateExtra": 1, "extraVars": ["c"], "equationText": "c = a + b;"}})";
}
constexpr const char* kSimulator = R"({"plcType": 9001, "text1": "counter"})";

using Texts = std::vector<std::string>;

// The main window with boxes and choosers that answer by themselves. A test takes the boxes that it expects.
struct CTestWindow : CMainWindow {
  ~CTestWindow() override { EXPECT_EQ(boxes.Take(), Texts()); }

  CTestPrompter boxes;
  CTestChooser chooser;
};

class Desktop : public testing::Test {
 protected:
  Desktop() {
    ::setenv("XDG_CONFIG_HOME", m_dir.Path(), 1);
    WriteBytes(m_demo, Configuration(kSimulator));
  }

  // Processes events until condition is true.
  static bool Wait(const std::function<bool()>& condition) { return QTest::qWaitFor(condition, 20000); }
  static QAction* ActionOf(QMainWindow& window, const char* text) {
    for (const QAction* menu : window.menuBar()->actions())
      for (QAction* action : menu->menu()->actions())
        if (action->text().remove('&') == text) return action;
    throw std::runtime_error(text);
  }
  static bool HasStatus(QMainWindow& window, const char* text) {
    for (const QLabel* label : window.findChildren<QLabel*>())
      if (label->text().contains(text)) return true;
    return false;
  }
  static int Samples(QMainWindow& window) {
    for (const QLabel* label : window.findChildren<QLabel*>())
      if (const QStringList words = label->text().split(" samples, "); words.size() == 2)
        return words.constFirst().toInt();
    return 0;
  }
  static std::string Title(const CMainWindow& window) { return window.windowTitle().toStdString(); }
  // The rows of the logs.
  std::size_t Rows() const {
    std::size_t rows = 0;
    for (const auto& entry : std::filesystem::directory_iterator(m_dir.Path().Std()))
      if (entry.path().extension() == ".csv") {
        const std::string text = ReadBytes(CString(entry.path().string()));
        rows += static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')) - 1;
      }
    return rows;
  }

  CTempDir m_dir;
  const CString m_demo = m_dir / "demo.json";
};

// The visible window with that title, or null.
inline QWidget* TopLevel(const char* title) {
  for (QWidget* widget : QApplication::topLevelWidgets())
    if (widget->isVisible() && widget->windowTitle() == title) return widget;
  return nullptr;
}

}  // namespace vastra
