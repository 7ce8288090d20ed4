// The main window of the desktop host: a configuration, its run, and the menus that open the other windows.
#pragma once

#include <QMainWindow>
#include <QPointer>

#include <vector>

#include "host/desktop/attached_window.h"
#include "host/desktop/chart_source.h"
#include "host/desktop/chart_windows.h"
#include "host/desktop/check_rules.h"
#include "host/desktop/colours.h"
#include "host/desktop/document.h"
#include "host/desktop/driver_captions.h"
#include "host/desktop/live_views.h"
#include "host/desktop/messages.h"
#include "host/desktop/runner.h"
#include "host/desktop/settings.h"
#include "host/desktop/values_window.h"
#include "host/desktop/workspace.h"
#include "vastra/screens/driver_form_dlg.h"
#include "vastra/ui/application.h"

class QLabel;
class QProgressBar;

namespace vastra {

class CCheckWindow;
class CConfigurationSheet;
class CEquationEditor;
class CHelp;
class CPlantView;
enum class EPart;

class CMainWindow : public QMainWindow {
 public:
  CMainWindow();
  ~CMainWindow() override;

  // Opens a configuration; false: it cannot be read, and the user has seen the reason.
  bool Open(const CString& path);
  // Asks a new user, once, whether to start with the demo.
  void OfferDemo();
  // Opens a chart of logs, journals and folders.
  void OpenLogs(const std::vector<CString>& paths) { m_charts.OpenPaths(paths); }
  bool WantsToStart() { return m_document.Configuration().m_input.m_autoStart != 0; }
  void Start() { StartRun(false); }
  // The stage that the views use. Only while a configuration is open.
  CLogTrendings& Trendings() { return m_runner.Run().Trend(); }
  // Stops the run and ends the program, without a question.
  void StopAndQuit();

 protected:
  void changeEvent(QEvent* event) override;
  void closeEvent(QCloseEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private:
  static constexpr const char* kPlainLogs = "PlainLogs";  // setting: not empty if logs are not kept

  void MakeActions();
  void MakeStatusBar();
  void MakeFileMenu();
  void MakeRunMenu();
  void MakeWindowMenu();
  QAction* AddAction(QMenu* menu, const char* text, const QKeySequence& key, std::function<void()> action);

  void New();
  void NewLogger();
  void AskToOpen();
  void ShowRecent();
  bool Save();
  bool AskToSave();
  bool SaveTo(const CString& path);
  void AskForVersion(const CString& path);
  void ShowLost();
  bool MayLoseChanges();
  void EditConfiguration(const CString& place = {});
  void Apply(const CConfigurationSheet& sheet, const CTrendConfig& trend);
  void ApplyWhileRunning(CConfiguration former);
  void TakeEdited(CConfiguration edited);
  void ShowReport();
  void ShowAbout();

  // The check and the start, in main_checks.cpp.
  CPlaceWords Words();
  CCheckWindow& CheckWindow();
  std::vector<CCheckEntry> CheckDocument();
  void ShowCheck(const std::vector<CCheckEntry>& entries, bool asksToStart);
  void Check();
  void CheckAgain();
  void OpenPlace(const CString& place);
  void StartRun(bool asks);
  void RefuseStart(const std::vector<CCheckEntry>& entries);
  void ShowOpenFault();
  void SetStartFault(const CString& reason);
  void OfferRestart();
  void Restart();
  void StartAgain();

  static bool HasOpenDialog();
  void UseConfiguration();
  void SetKeepLogs(bool keep);
  CLoopOptions RunOptions();  // of the next run
  bool ShowsRun() const;
  void ShowParts();
  void ShowPlant();
  void ShowChart();
  void ShowHistory(EPart part, int index);
  void QuitIfHidden();
  CTrendConfig& Trend() { return m_document.Configuration().m_trend; }
  void ShowTrend();
  void ShowGrid();
  void TakeTrend();
  void TakeState();
  void ShowState();
  void ShowCounts();
  void Attach();
  void ShowMessageLog();
  // The equation editor, in main_equations.cpp.
  CEquationEditor& EquationEditor();
  void ShowEquations(const CString& key);
  bool HasEquations(const CString& key);
  bool ApplyEquations(const CString& key, const CString& text);
  void ShowEquationsAgain();
  // The workspace, in main_workspace.cpp.
  void JoinWorkspace();
  void SaveWorkspace();
  void OpenWorkspace();
  void WarnOfView(const char* view, const CString& text);
  void Quit();
  CViewStages Stages() { return {m_runner.Run().Input(), m_runner.Run().Trend()}; }

  CWindows m_windows;
  CDriverForms m_driverForms;
  CSettings m_settings;
  CColours m_colours{m_settings};
  CMessages m_messages;
  CDocument m_document;
  CStageNames m_names;            // of the document; the run can have older ones
  CValueStatistics m_statistics;  // of the run
  CChartSamples m_chartSamples;   // the same
  CRunner m_runner;
  CLiveViews m_views;
  CValuesWindow m_values;
  CChartWindows m_charts;
  CWorkspace m_workspace{m_settings};
  std::vector<QPointer<CAttachedWindow>> m_attached;  // null: closed, which has deleted it
  bool m_quitWanted = false;
  bool m_isAhead = false;  // the document has changes that the run does not have

  std::unique_ptr<CEquationEditor> m_equations;  // null: not opened yet
  CHelp* m_help;
  CDriverCaptions m_driverCaptions;
  CCheckWindow* m_check = nullptr;  // null: not needed yet
  bool m_restarts = false;          // the run ends and starts again with the changes

  CPlantView* m_plant;
  CString m_startFault;  // why the last start has failed
  QMenu* m_recent = nullptr;
  QAction *m_new = nullptr, *m_newLogger = nullptr, *m_open = nullptr, *m_edit = nullptr, *m_start = nullptr,
          *m_stop = nullptr, *m_keepLogs = nullptr, *m_replayWrites = nullptr;
  QList<QAction*> m_needDocument;
  QLabel *m_stateText = nullptr, *m_countsText = nullptr;
  QProgressBar* m_progress = nullptr;
};

}  // namespace vastra
