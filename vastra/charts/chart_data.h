// CChartData: the values behind a chart, from the logs and journals of folders and from the newest samples of
// a running logger. It reads on a thread of its own: no call waits for the disk. Without Qt.
//
//     const auto data = CChartData::Make([] { ... });  // called on the reading thread when data has changed
//     data->SetSources({.paths = {{"/var/lib/vastra/kiln", true}}});
//     data->Ask({.range = {from, to}, .columns = 1200, .variables = {"Temp"}});
//     const CChartPicture picture = data->Picture();  // returns at once what is known so far
#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "vastra/history/row_reader.h"
#include "vastra/platform/api.h"

namespace vastra {

// A piece of a curve: one row, or the rows of a short stretch of time. Pieces are in the order of time.
struct CCurveStep {
  CMoment from = 0, to = 0;   // of the first and of the last row; as well the stretch itself: first <= last
  float first = 0, last = 0;  // values, NaN and infinities left out
  float least = 0, greatest = 0;
  std::uint32_t values = 0;  // how many of them; 0: all were NaN or infinite
  bool isJoined = false;     // a line leads here from the step before: no gap lies between them
  bool hasInvalid = false;   // some values were NaN or infinite: the node was away
};

struct CChartQuery {
  CMomentRange range = {0, 0};
  std::uint32_t columns = 0;  // pixels: a step is at most as wide as one
  std::vector<CString> variables = {};

  bool operator==(const CChartQuery&) const = default;
};

using CCurveSteps = std::vector<CCurveStep>;

// Curves that copies share.
class CCurveList {
 public:
  CCurveList() : CCurveList(std::vector<CCurveSteps>()) {}
  CCurveList(std::vector<CCurveSteps> curves)
      : m_pCurves(std::make_shared<const std::vector<CCurveSteps>>(std::move(curves))) {}

  std::size_t size() const { return m_pCurves->size(); }
  bool empty() const { return m_pCurves->empty(); }
  const CCurveSteps& operator[](std::size_t i) const { return (*m_pCurves)[i]; }
  const CCurveSteps& at(std::size_t i) const { return m_pCurves->at(i); }
  auto begin() const { return m_pCurves->begin(); }
  auto end() const { return m_pCurves->end(); }

 private:
  std::shared_ptr<const std::vector<CCurveSteps>> m_pCurves;
};

// The answer to a query, as good as it is known.
struct CChartPicture {
  CChartQuery query = {};
  CCurveList curves = {};  // for each variable; the step before and after the range, too
  bool isFinal = false;    // false: steps are still coarse or missing, onChange follows
  double progress = 0;     // of the reading, from 0 to 1
};

// What lies between two cursors, exactly: of each variable of the query. A value that several
// logs have at the same moment counts once.
struct CCurveStatistics {
  std::uint64_t values = 0;  // that are finite
  float least = 0, greatest = 0;
  double mean = 0;
};

// A folder with its logs, or a log or journal.
struct CChartPath {
  CString path;
  bool isRecursive = false;
};

class CLiveSamples;

struct CChartSources {
  std::vector<CChartPath> paths = {};
  // The newest samples of a logger; they hold from the moment of their first one on, the logs before it.
  std::shared_ptr<const CLiveSamples> live = {};
  // The ring has only some of the samples, as a feed sends them: logs and journals hold as far as they reach.
  bool isThinned = false;
};

class VASTRA_API CChartData {
 public:
  // onChange is called on the reading thread: the picture, the range, the variables or a result has changed.
  static std::unique_ptr<CChartData> Make(std::function<void()> onChange);
  CChartData() = default;
  CChartData(const CChartData&) = delete;
  CChartData& operator=(const CChartData&) = delete;
  virtual ~CChartData() = default;  // ends the reading

  virtual void SetSources(CChartSources sources) = 0;
  // Looks at the folders again.
  virtual void Rescan() = 0;
  // Whether it does so by itself every few seconds. With a live logger it always does.
  virtual void Watch(bool isWatched) = 0;

  virtual std::vector<CString> Variables() const = 0;  // of all sources
  virtual CMomentRange Range() const = 0;  // from the first row to after the last one; {0, 0} without rows
  virtual std::vector<CHistoryFault> Faults() const = 0;  // logs and folders that cannot be read
  virtual bool IsScanned() const = 0;                     // false: the sources were not looked at yet

  // Asks for curves. A new query takes the place of the former one, whose reading ends.
  virtual void Ask(CChartQuery query) = 0;
  virtual CChartPicture Picture() const = 0;

  // Asks for exact figures of a range, for variables. Statistics() is empty until they are there, and follows
  // the rows: figures are replaced when others have been read.
  virtual void AskStatistics(const CMomentRange& range, std::vector<CString> variables) = 0;
  virtual std::vector<CCurveStatistics> Statistics() const = 0;

  // Asks for the values of variables at moments: those of the last row at or before each that is not behind a
  // gap. Values() has a list for each moment, and is empty until they are there; NaN: no value.
  virtual void AskValues(std::vector<CMoment> moments, std::vector<CString> variables) = 0;
  virtual std::vector<std::vector<float>> Values() const = 0;

  // The logs whose rows are missing in Statistics() and Values(): they could not be read.
  virtual std::vector<CHistoryFault> FigureFaults() const = 0;

  // Writes rows as CSV to a file, which appears whole or not at all. ExportState() reports the progress.
  struct CExport {
    CString path;
    CMomentRange range;
    std::vector<CString> variables;
    bool isUtc = false;  // the times; else local
  };
  virtual void Export(CExport order) = 0;
  struct CExportState {
    bool isRunning = false;
    double progress = 0;
    CString fault;  // of the last one that has ended; empty: it was written
  };
  virtual CExportState ExportState() const = 0;
  virtual void CancelExport() = 0;
};

}  // namespace vastra
