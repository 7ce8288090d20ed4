// CAttachedLogger: a logger of another process as the windows of the desktop look at one: the lines of its
// feed as a live state, the parts of its configuration, and what the main window says of a run. Without Qt.
#pragma once

#include <memory>

#include "host/attach/feed_events.h"
#include "host/desktop/plant_state.h"
#include "host/desktop/value_statistics.h"

namespace vastra {

class CAttachedLogger {
 public:
  // Each takes a line; a hello returns what has changed.
  struct CChange {
    bool isOther = false;   // it is another process: its messages are numbered anew
    bool hasParts = false;  // the configuration is another one
    bool hasNames = false;  // the variables of the samples
  };
  CChange Take(const CHelloLine& hello);
  void Take(const CStateLine& state);
  // False: the sample is not of the variables that the logger has said; it is left out.
  bool Take(const CSampleLine& sample);
  void Take(const CCountsLine& counts);
  void Take(const CLogLine& log);
  // The logger has gone, or cannot be asked.
  void Lost();

  const CHelloLine& Hello() const { return m_hello; }
  const CStringArray& Names() const { return m_names; }  // of the samples; empty before they are known
  // What the feed says of it: parts with their names, folders, variables, forms and limits; units.
  const CConfiguration& Configuration() const { return m_configuration; }
  const CPlantRun& Run() const { return m_run; }
  std::chrono::milliseconds Period() const { return m_run.period; }  // 0: as fast as possible
  CLogSample& Newest() { return m_sample; }                          // its time is 0 before the first
  std::shared_ptr<const CLiveState> Live() const { return m_live; }
  CValueStatistics& Statistics() { return m_statistics; }

 private:
  CHelloLine m_hello;
  CConfiguration m_configuration;
  CStringArray m_names;
  CPlantRun m_run;
  CLogSample m_sample;
  std::shared_ptr<CLiveState> m_live = std::make_shared<CLiveState>();
  CValueStatistics m_statistics;
};

}  // namespace vastra
