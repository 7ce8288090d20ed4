// The two live views on real stages: an input of three variables a, b, c, then the trending stage.
#pragma once

#include <QTableView>

#include "tests/support/files.h"
#include "tests/support/names.h"
#include "tests/support/recorder.h"
#include "tests/support/windows.h"
#include "vastra/stages/log_input.h"
#include "vastra/stages/log_trendings.h"
#include "vastra/views/trending_dlg.h"
#include "vastra/views/var_scan_dlg.h"

namespace vastra {

using CBoxes = std::vector<std::string>;

class LiveViews : public testing::Test {
 protected:
  LiveViews() {
    auto* node = new CPlcNodeConfig;
    node->m_driver.plcType = 9001;  // the simulator
    node->m_driver.text1 = "constant";
    node->m_driver.variableCount = 3;
    node->m_varNames = m_names = Names({"a", "b", "c"});
    m_input.GetOptions()->m_plcNodes.AddTail(node);
    EXPECT_EQ(m_input.Open(), 1);
    EXPECT_EQ(m_trendings.Open(m_names), 1);
  }
  ~LiveViews() override {
    if (m_trend) m_trend->DestroyWindow();
    if (m_grid) m_grid->DestroyWindow();
  }

  QWidget* OpenTrend() {
    m_trend = new CTrendingDlg;
    m_trend->SetInputPointers(&m_input, &m_trendings, &m_trend);
    m_trend->SetGridPointer(&m_grid);
    m_trend->SetTimeScan(1000);
    EXPECT_EQ(m_trend->Create(), 1);
    m_trend->ShowWindow(SW_SHOW);
    return m_trend->Widget();
  }
  QWidget* OpenGrid() {
    m_grid = new CVarScanDlg;
    m_grid->SetInputPointers(&m_input, &m_trendings, &m_grid);
    m_grid->SetTrendPointer(&m_trend);
    EXPECT_EQ(m_grid->Create(), 1);
    m_grid->ShowWindow(SW_SHOW);
    return m_grid->Widget();
  }

  void Write(std::initializer_list<float> values) {
    CLogSample sample;
    for (const float value : values) sample.m_values.Add(value);
    EXPECT_EQ(m_trendings.Write(sample), 1);
  }
  // Writes a sample and refreshes the open views.
  void Scan(std::initializer_list<float> values) {
    Write(values);
    if (m_trend) m_trend->Refresh();
    if (m_grid) m_grid->Refresh();
  }
  // The user chooses exactly names, in this order.
  static void Choose(QWidget* window, std::initializer_list<const char*> names) {
    const auto user = [&](QWidget* dialog) {
      Click(dialog, "<<");
      auto* list = Find<QListWidget>(dialog, "Available variables");
      for (const char* name : names) {
        list->findItems(name, Qt::MatchExactly).at(0)->setSelected(true);
        Click(dialog, "--->");
      }
      Click(dialog, "OK");
    };
    WhileModal([&] { Click(window, "Edit"); }, user);
  }
  void Load(QWidget* window, const char* file) {
    m_chooser.path = m_dir / file;
    Click(window, "Load");
  }

  CRecorder m_recorder;
  CTestPrompter m_prompter;
  CTestChooser m_chooser;
  CTempDir m_dir;
  CLogInput m_input;
  CLogTrendings m_trendings;
  CStringArray& m_names = m_trendings.GetOptions()->m_baseVars;
  CTrendingDlg* m_trend = nullptr;  // the host's variables
  CVarScanDlg* m_grid = nullptr;
};

}  // namespace vastra
