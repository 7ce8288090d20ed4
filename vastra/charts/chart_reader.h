// CChartReader: the threads of CChartData. One scans the sources and reads pictures; figures and exports have
// their own, because they can take long.
#pragma once

#include <chrono>

#include "vastra/charts/chart_figures.h"
#include "vastra/charts/latest_job.h"
#include "vastra/charts/picture_maker.h"

namespace vastra {

class CChartReader : public CChartData {
 public:
  using Time = std::chrono::steady_clock::time_point;

  explicit CChartReader(std::function<void()> onChange);
  ~CChartReader() override;

  void SetSources(CChartSources sources) override;
  void Rescan() override;
  void Watch(bool isWatched) override;
  std::vector<CString> Variables() const override { return Rows()->Variables(); }
  CMomentRange Range() const override;  // at the last look at the ring, and at the logs
  std::vector<CHistoryFault> Faults() const override;
  bool IsScanned() const override;
  void Ask(CChartQuery query) override;
  CChartPicture Picture() const override;
  void AskStatistics(const CMomentRange& range, std::vector<CString> variables) override;
  std::vector<CCurveStatistics> Statistics() const override;
  void AskValues(std::vector<CMoment> moments, std::vector<CString> variables) override;
  std::vector<std::vector<float>> Values() const override;
  std::vector<CHistoryFault> FigureFaults() const override;
  void Export(CExport order) override;
  CExportState ExportState() const override;
  void CancelExport() override { m_exportJob.Stop(); }

 private:
  // Figures that were asked for, and the newest ones that were read.
  template <class TFigure>
  struct CFigures {
    std::vector<CString> variables = {};  // empty: none
    CMomentRange range = {0, 0};          // whose rows the figures are of
    std::vector<CMoment> moments = {};    // of values
    std::vector<TFigure> found = {};
    std::vector<CHistoryFault> faults = {};
    bool isDue = false;  // a log was not read, or the ring had dropped samples before: they are read again
  };

  // Of the last scan, and never null.
  std::shared_ptr<const CChartRows> Rows() const;
  void Run();
  void Wait();
  void Scan();
  void TakeLogs(const CLiveHead& head);
  bool IsScanDue() const;
  void Draw();
  bool IsSuperseded(const CChartQuery& query) const;
  void Publish(double progress, const CSketch& sketch);
  bool HasNewSamples();
  void Change();
  template <class TFigure>
  void StartFigures(CFigures<TFigure>& figures, CLatestJob& job, bool endsFormer);

  const std::function<void()> m_onChange;
  std::mutex m_changeMutex;  // one call at a time

  mutable std::mutex m_mutex;  // of what follows
  std::condition_variable m_wake;
  bool m_isEnding = false, m_isRescanWanted = false, m_isWatched = false;
  std::uint64_t m_sourceNumber = 0;  // counts the calls of SetSources
  CChartSources m_sources;
  std::uint64_t m_askNumber = 0;  // counts those of Ask
  CChartQuery m_query;
  std::shared_ptr<const CChartRows> m_rows = std::make_shared<const CChartRows>();
  CMomentRange m_range = {0, 0};
  bool m_isScanned = false;
  std::vector<CHistoryFault> m_faults;
  CChartPicture m_picture;
  CFigures<CCurveStatistics> m_statistics;
  CFigures<std::vector<float>> m_values;
  CExportState m_exportState;

  // Of the thread that reads pictures.
  std::unique_ptr<CCatalogue> m_catalogue;
  std::shared_ptr<const CLiveSamples> m_live;
  bool m_isThinned = false;
  CChartTiles m_tiles;
  std::uint64_t m_readSources = 0, m_answered = 0;  // numbers
  CLiveHead m_seen;                                 // the head of the ring
  bool m_hasNew = false;                            // samples that were not shown yet
  CLiveHead m_scannedHead;                          // that of the last scan
  bool m_hasUnread = false;                         // m_tiles lack rows of a log that could not be read
  Time m_scanned, m_looked, m_published;

  CLatestJob m_statisticsJob, m_valuesJob, m_exportJob;
  std::thread m_thread;
};

}  // namespace vastra
