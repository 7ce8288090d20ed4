// CChartWindow: a chart with the list of its variables, the figures of its cursors, its menus and its files.
// It asks CChartData for what the user wants to see, and never waits for the answer.
#pragma once

#include <QElapsedTimer>
#include <QMainWindow>
#include <QTimer>

#include <atomic>

#include "vastra/charts/chart_commands.h"
#include "vastra/charts/chart_data.h"
#include "vastra/charts/chart_view.h"
#include "vastra/charts/cursor_table.h"
#include "vastra/charts/variable_list.h"

class QLabel;
class QPushButton;
class QSplitter;

namespace vastra {

class VASTRA_API CChartWindow : public QMainWindow {
 public:
  CChartWindow();
  ~CChartWindow() override;

  // The logs and the live samples of the chart. Logs that the user has added stay.
  void SetSources(CChartSources sources);
  // Logs, journals and folders, as the user adds them.
  void AddPaths(const std::vector<CString>& paths);
  // Nodes and their variables, for the list.
  void SetGroups(std::vector<CListedNode> groups);
  // Units and comments of variables.
  void SetUnits(const std::map<CString, CString>& units);
  void SetComments(const std::map<CString, CString>& comments);
  // Shows the newest rows and follows, unless the user has chosen a range.
  void FollowNewest();
  void AddCurves(const std::vector<CString>& variables);
  // Shows variables as soon as they are known, unless there are curves by then: the first ones of the list,
  // at most so many; or all of them, and none if there are more.
  void AddFirstCurves(std::size_t most, bool allOrNone) {
    m_firstCurves = most;
    m_isAllOrNone = allOrNone;
  }
  // Whether the logger runs. A chart of one that has ended ends to follow it when it has the last rows, and
  // follows again when the logger does, unless the user has moved meanwhile.
  void SetRunning(bool isRunning);
  // When the nodes of the logger were away. A chart without a logger does not change.
  void SetAway(CAwayRanges away);

  // The layout and the place of the window; what is not one changes nothing.
  QJsonObject State() const;
  void SetState(const QJsonObject& state);

  CChartView& View() { return *m_view; }
  void BringUp();

 protected:
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;
  void showEvent(QShowEvent* event) override;

 private:
  // Menus, in chart_window_menus.cpp.
  void MakeMenus();
  void MakeFileMenu();
  void MakeCommandMenu(const char* title, EChartMenu menu);
  void MakeToolBar();
  void FillAxisMenu();
  void FillColourMenu();
  void ShowMenu(const QPoint& place);
  QAction* AddAction(QMenu* menu, const char* text, const QKeySequence& key, std::function<void()> action);

  void MakeLayout();
  void UseSources();
  void Changed();
  void Ask();
  void AskFigures();
  void NoteChange();
  void TakeData();
  void TakeRows();
  void TakeFirstCurves();
  void EndFollowing();
  void TakeFigures();
  void TakeExport();
  void ShowHint();
  QString EmptyHint() const;
  void SetListWidth(int list);
  void FitList();
  void ShowStatus();
  void ShowFaults();
  void Note(const QString& note);
  void MarkVariables();

  void EditAxis(int axis);
  void AskForLogs();
  void AskForFolder();
  void CopyPicture();
  void SavePicture();
  void SaveLayout();
  void LoadLayout();
  void ExportRows();

  CChartView* m_view;
  CVariableList* m_variables;
  CCursorTable* m_figures;
  QSplitter *m_columns, *m_rows;
  QLabel* m_status;
  QPushButton *m_faults, *m_cancel;
  QList<CChartCommand> m_commands;
  QMenu *m_axisMenu = nullptr, *m_colourMenu = nullptr, *m_curveMenu = nullptr;
  QTimer m_take, m_noteEnd, m_followEnd;
  QElapsedTimer m_taken;  // since the last look at the data
  std::atomic<bool> m_isNoted = false;

  CChartSources m_sources;  // without the added ones
  std::vector<CChartPath> m_added;
  std::vector<CListedNode> m_groups;
  CChartQuery m_asked;
  std::vector<CString> m_figureVariables;  // of the figures that were asked for
  CMoment m_figureCursors[kCursors] = {};
  CCursorFigures m_cursorFigures;
  bool m_isListFitted = false;
  std::size_t m_firstCurves = 0;  // that are awaited
  bool m_isAllOrNone = false;
  std::optional<CMomentRange> m_followed;  // where the chart has ended to follow
  CMoment m_awayUntil = 0;                 // a node was away until then
  CString m_exportPath;                    // while it is written
  QString m_note;                          // the result of the last operation
  std::unique_ptr<CChartData> m_data;      // the last member: its thread ends first
};

}  // namespace vastra
