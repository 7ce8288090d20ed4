// A window that shows a running logger of this machine by its feed: its state, its messages, and trend and
// grid of its samples. Nothing of the logger can be changed here. When the logger goes away, the window waits
// for it.
#pragma once

#include <QSocketNotifier>
#include <QTimer>
#include <QWidget>

#include <memory>

#include "host/attach/feed_client.h"
#include "host/desktop/live_views.h"
#include "host/desktop/values_window.h"

class QLabel;
class QPlainTextEdit;
class QPushButton;

namespace vastra {

// The path of the feed of a logger that the user chooses; empty if none.
CString AskForLogger(QWidget* parent);

class CAttachedWindow : public QWidget {
 public:
  CAttachedWindow(CSettings& settings, const CString& socket);
  CLogTrendings& Trendings() { return m_trend; }

 private:
  void Connect();
  void Poll();
  void Watch();
  void Take(const CHelloLine& hello);
  void Take(const CStateLine& state);
  void Take(const CSampleLine& sample);
  void Take(const CMessageLine& message);
  void Take(const CDroppedLine& dropped);
  template <class T>
  void Take(const T&) {}
  void TakeNames(const CHelloLine& hello, const CStringArray& names);
  QString LastSample() const;
  void ShowState(const QString& text);
  CViewStages Stages() { return {m_input, m_trend}; }

  const CString m_socket;
  CLogInput m_input;      // stays closed
  CLogTrendings m_trend;  // gets the samples of the feed
  CLogSample m_sample;
  CLiveViews m_views;
  std::shared_ptr<CLiveState> m_live = std::make_shared<CLiveState>();  // of the same samples, for the values
  CValueStatistics m_statistics;
  CValuesWindow m_values;
  std::uint64_t m_lastMessage = 0;  // its number; a new connection brings the kept ones again
  _timeb m_started;                 // of the process that has numbered it
  QTimer m_timer;
  std::unique_ptr<CFeedClient> m_client;
  std::unique_ptr<QSocketNotifier> m_readable, m_writable;
  QString m_stateText;
  QLabel *m_state, *m_nodes;
  QPlainTextEdit* m_messages;
};

}  // namespace vastra
