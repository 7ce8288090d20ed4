// Tests of the desktop: a folder and settings of the test's own, and what the user sees of the main window.
#pragma once

#include <gtest/gtest.h>

#include <QDropEvent>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QTableView>
#include <QTreeWidget>
#include <QUrl>

#include <algorithm>

#include "host/desktop/main_window.h"
#include "tests/host/logger.h"
#include "tests/support/windows.h"
#include "vastra/ui/text.h"

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
  explicit CTestWindow(const CString& path = "") {
    show();
    EXPECT_TRUE(path.IsEmpty() || Open(path));
  }
  ~CTestWindow() override { EXPECT_EQ(boxes.Take(), Texts()); }

  CTestPrompter boxes;
  CTestChooser chooser;
};

// The program has been started in the folder of the test.
class Desktop : public testing::Test {
 protected:
  Desktop() {
    for (const char* home : {"XDG_CONFIG_HOME", "XDG_STATE_HOME"}) ::setenv(home, m_dir.Path(), 1);
    std::filesystem::current_path(m_dir.Path().Std());
    WriteBytes(m_demo, Configuration(kSimulator));
  }
  ~Desktop() override { std::filesystem::current_path(m_former); }

  // Processes events until condition is true.
  static bool Wait(const std::function<bool()>& condition) { return QTest::qWaitFor(condition, 20000); }
  static QAction* ActionOf(QMainWindow& window, const char* text) {
    for (const QAction* menu : window.menuBar()->actions())
      for (QAction* action : menu->menu()->actions())
        if (action->text().remove('&') == text) return action;
    throw std::runtime_error(text);
  }
  // Whether a label has the text, such as the status line.
  static bool Says(const QWidget& window, const char* text) {
    return std::ranges::any_of(window.findChildren<QLabel*>(),
                               [&](const QLabel* label) { return label->text().contains(text); });
  }
  // Start and stop the logger, and wait until it has so many samples, or has stopped.
  static bool Runs(CMainWindow& window, int samples = 0) {
    window.Start();
    return Wait([&] { return Says(window, "Running") && Samples(window) >= samples; });
  }
  static bool Stops(QMainWindow& window) {
    ActionOf(window, "Stop")->trigger();
    return Wait([&] { return Says(window, "Stopped"); });
  }
  // How many lines of the message log of window have the text, of this part, or of any with null.
  static int Logged(QWidget* window, const char* part, const char* text) {
    const QAbstractItemModel* lines = Find<QTableView>(window, "Messages")->model();
    const auto shown = [&](int row, int column) { return lines->index(row, column).data().toString(); };
    int count = 0;
    for (int row = 0; row < lines->rowCount(); ++row)
      count += (!part || shown(row, CMessageModel::partColumn) == part) &&
               shown(row, CMessageModel::textColumn).contains(text);
    return count;
  }
  // Drops files on window; returns whether it accepts them.
  static bool Drop(QWidget& window, const QList<QUrl>& files) {
    QMimeData data;
    data.setUrls(files);
    QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, &data, Qt::LeftButton, {});
    enter.ignore();
    QApplication::sendEvent(&window, &enter);
    if (!enter.isAccepted()) return false;
    QDropEvent drop(QPointF(5, 5), Qt::CopyAction, &data, Qt::LeftButton, {});
    QApplication::sendEvent(&window, &drop);
    return true;
  }
  static QUrl UrlOf(const CString& path) { return QUrl::fromLocalFile(ToScreen(path)); }
  // The row of a part in the tree.
  static QTreeWidgetItem* Part(QWidget& window, const char* part) {
    const auto found =
        Find<QTreeWidget>(&window, "Plant")->findItems(part, Qt::MatchExactly | Qt::MatchRecursive);
    if (found.isEmpty()) throw std::runtime_error(part);
    return found.front();
  }
  // The samples that the row of the input shows.
  static int Samples(QMainWindow& window) { return Part(window, "Input")->text(3).toInt(); }
  static std::string Title(const CMainWindow& window) { return window.windowTitle().toStdString(); }
  CTempDir m_dir;
  const CString m_demo = m_dir / "demo.json";
  const std::filesystem::path m_former = std::filesystem::current_path();
};

// The visible window with that title, or null.
inline QWidget* TopLevel(const char* title) {
  for (QWidget* widget : QApplication::topLevelWidgets())
    if (widget->isVisible() && widget->windowTitle() == title) return widget;
  return nullptr;
}

}  // namespace vastra
