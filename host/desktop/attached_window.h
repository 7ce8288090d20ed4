// A window that shows a running logger of this machine by its feed: the state of the plant, its messages, and
// values, trend and grid of its samples. Nothing of the logger can be changed here. When the logger goes
// away, the window waits for it.
#pragma once

#include <QSocketNotifier>
#include <QTimer>
#include <QWidget>

#include <memory>

#include "host/attach/feed_client.h"
#include "host/desktop/attached_logger.h"
#include "host/desktop/chart_source.h"
#include "host/desktop/chart_windows.h"
#include "host/desktop/live_views.h"
#include "host/desktop/message_model.h"
#include "host/desktop/values_window.h"

class QLabel;

namespace vastra {

// The path of the feed of a logger that the user chooses; empty if none.
CString AskForLogger(QWidget* parent);

class CMessageWindow;
class CPlantView;

class CAttachedWindow : public QWidget {
 public:
  CAttachedWindow(CSettings& settings, const CString& socket);
  ~CAttachedWindow() override;
  CLogTrendings& Trendings() { return m_trend; }

 private:
  QWidget* MakeBar();
  void MakeViews();
  void Connect();
  void Poll();
  void Watch();
  void Take(const CHelloLine& hello);
  void Take(const CStateLine& state);
  void Take(const CSampleLine& sample);
  void Take(const CCountsLine& counts);
  void Take(const CMessageLine& message);
  void Take(const CLogLine& log) { m_logger.Take(log); }
  void Take(const CDroppedLine& dropped);
  template <class T>
  void Take(const T&) {}
  void ShowNames();
  void ShowRun();
  void ShowState(const QString& text);
  CViewStages Stages() { return {m_input, m_trend}; }

  CSettings& m_settings;
  const CString m_socket;
  CAttachedLogger m_logger;
  CLogInput m_input;      // stays closed
  CLogTrendings m_trend;  // gets the samples of the feed
  CLiveViews m_views;
  CChartSamples m_chartSamples;
  CValuesWindow m_values;
  CChartWindows m_charts;
  CMessageModel m_messages;         // in memory only: the logger has its own
  std::uint64_t m_lastMessage = 0;  // its number; a new connection brings the kept ones again
  QTimer m_timer;
  std::unique_ptr<CFeedClient> m_client;
  std::unique_ptr<QSocketNotifier> m_readable, m_writable;
  QString m_stateText;
  QLabel* m_state;
  CPlantView* m_plant = nullptr;
  CMessageWindow* m_log = nullptr;
};

}  // namespace vastra
