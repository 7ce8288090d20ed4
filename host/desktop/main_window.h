// The window of the desktop host: a configuration, the logger that runs it, and the way to the other windows.
#pragma once

#include <QMainWindow>

#include "host/desktop/document.h"
#include "host/desktop/live_views.h"
#include "host/desktop/messages.h"
#include "host/desktop/runner.h"
#include "host/desktop/settings.h"
#include "vastra/screens/driver_form_dlg.h"
#include "vastra/ui/application.h"

class QLabel;
class QProgressBar;

namespace vastra {

class CConfigurationSheet;
class COverview;

class CMainWindow : public QMainWindow {
 public:
  CMainWindow();
  ~CMainWindow() override;

  // Opens a configuration; false: the user has been told why not.
  bool Open(const CString& path);
  // Asks somebody who has never used the program whether to begin with the demo, once.
  void OfferDemo();
  bool WantsToStart() { return m_document.Configuration().m_input.m_autoStart != 0; }
  void Start();
  // The stage that the views work on; a configuration is open.
  CLogTrendings& Trendings() { return m_runner.Run().Trend(); }
  // Stops what runs, without a question, and ends the program.
  void StopAndQuit();

 protected:
  void changeEvent(QEvent* event) override;
  void closeEvent(QCloseEvent* event) override;

 private:
  void MakeActions();
  void MakeStatusBar();
  void MakeFileMenu();
  void MakeRunMenu();
  void MakeWindowMenu();
  QAction* AddAction(QMenu* menu, const char* text, const QKeySequence& key, std::function<void()> action);

  void New();
  void AskToOpen();
  void ShowRecent();
  bool Save();
  bool AskToSave();
  bool SaveTo(const CString& path);
  void AskForVersion(const CString& path);
  void TellLost();
  bool MayLoseChanges();
  void EditConfiguration();
  void Apply(const CConfigurationSheet& sheet, const CTrendConfig& trend);
  void ApplyWhileRunning(CConfiguration former);
  void ShowReport();
  void ShowAbout();

  bool IsFitToStart();
  void UseConfiguration();
  void ShowNames(const CStageNames& names);
  CTrendConfig& Trend() { return m_document.Configuration().m_trend; }
  void TakeTrend();
  void TellWhyNotOpened();
  void TakeState();
  void ShowState();
  void ShowCounts();
  void Quit();

  CWindows m_windows;
  CDriverForms m_driverForms;
  CSettings m_settings;
  CMessages m_messages;
  CDocument m_document;
  CStageNames m_names;  // of the document, which the run may not have yet
  CRunner m_runner;
  CLiveViews m_views;
  bool m_quitWanted = false;
  bool m_isAhead = false;  // the document holds what the stages that run do not

  COverview* m_overview;
  QMenu* m_recent = nullptr;
  QAction *m_new = nullptr, *m_open = nullptr, *m_edit = nullptr, *m_start = nullptr, *m_stop = nullptr;
  QList<QAction*> m_needDocument;
  QLabel *m_stateText = nullptr, *m_countsText = nullptr;
  QProgressBar* m_progress = nullptr;
};

}  // namespace vastra
