#include "vastra/charts/chart_reader.h"

#include <algorithm>
#include <type_traits>
#include <utility>

namespace vastra {
namespace {

using namespace std::chrono_literals;

constexpr auto kLivePeriod = 100ms;     // of looks at the ring
constexpr auto kRescanPeriod = 5s;      // of looks at the folders, with a ring
constexpr auto kWatchPeriod = 3s;       // the same without a ring, while the folders are watched
constexpr auto kFirstPublish = 10ms;    // after the query, unless the picture is final before
constexpr auto kPublishPeriod = 100ms;  // while it is read

std::vector<CHistoryFault> FaultsOf(const std::vector<CHistoryLog>& logs) {
  std::vector<CHistoryFault> faults;
  for (const CHistoryLog& log : logs)
    if (!log.fault.IsEmpty()) faults.push_back({log.path, log.fault});
  return faults;
}

}  // namespace

std::unique_ptr<CChartData> CChartData::Make(std::function<void()> onChange) {
  return std::make_unique<CChartReader>(std::move(onChange));
}

CChartReader::CChartReader(std::function<void()> onChange) : m_onChange(std::move(onChange)) {
  m_thread = std::thread([this] { Run(); });
}

CChartReader::~CChartReader() {
  {
    const std::lock_guard lock(m_mutex);
    m_isEnding = true;
  }
  m_wake.notify_one();
  m_thread.join();
}

void CChartReader::Change() {
  const std::lock_guard lock(m_changeMutex);
  if (m_onChange) m_onChange();
}

void CChartReader::SetSources(CChartSources sources) {
  const std::lock_guard lock(m_mutex);
  m_sources = std::move(sources);
  ++m_sourceNumber;
  m_isScanned = false;
  m_wake.notify_one();
}

void CChartReader::Rescan() {
  const std::lock_guard lock(m_mutex);
  m_isRescanWanted = true;
  m_wake.notify_one();
}

// At once, too, so that what has come meanwhile is shown.
void CChartReader::Watch(bool isWatched) {
  const std::lock_guard lock(m_mutex);
  m_isRescanWanted |= isWatched && !m_isWatched;
  m_isWatched = isWatched;
  m_wake.notify_one();
}

std::vector<CHistoryFault> CChartReader::Faults() const {
  const std::lock_guard lock(m_mutex);
  return m_faults;
}

bool CChartReader::IsScanned() const {
  const std::lock_guard lock(m_mutex);
  return m_isScanned;
}

CMomentRange CChartReader::Range() const {
  const std::lock_guard lock(m_mutex);
  return m_range;
}

std::shared_ptr<const CChartRows> CChartReader::Rows() const {
  const std::lock_guard lock(m_mutex);
  return m_rows;
}

void CChartReader::Ask(CChartQuery query) {
  const std::lock_guard lock(m_mutex);
  m_query = std::move(query);
  ++m_askNumber;
  m_wake.notify_one();
}

CChartPicture CChartReader::Picture() const {
  const std::lock_guard lock(m_mutex);
  return m_picture;
}

void CChartReader::Run() {
  for (;;) {
    Wait();
    {
      const std::lock_guard lock(m_mutex);
      if (m_isEnding) return;
    }
    if (IsScanDue()) Scan();
    const bool hasNew = HasNewSamples();
    Draw();
    if (hasNew) Change();
  }
}

// Until there is something to do; not longer than to the next look at the ring, or at the folders.
void CChartReader::Wait() {
  std::unique_lock lock(m_mutex);
  const auto hasWork = [this] {
    return m_isEnding || m_isRescanWanted || m_readSources != m_sourceNumber ||
           (m_isScanned && m_answered != m_askNumber);
  };
  if (m_live)
    m_wake.wait_until(lock, m_looked + kLivePeriod, hasWork);
  else if (m_isWatched)
    m_wake.wait_until(lock, m_scanned + kWatchPeriod, hasWork);
  else
    m_wake.wait(lock, hasWork);
}

bool CChartReader::IsScanDue() const {
  const std::lock_guard lock(m_mutex);
  if (m_isRescanWanted || m_readSources != m_sourceNumber) return true;
  const auto since = std::chrono::steady_clock::now() - m_scanned;
  if (!m_live) return m_isWatched && since >= kWatchPeriod;
  return !m_rows->IsComplete() || since > kRescanPeriod;
}

void CChartReader::Scan() {
  CChartSources sources;
  {
    const std::lock_guard lock(m_mutex);
    m_isRescanWanted = false;
    if (m_readSources != m_sourceNumber) {
      sources = m_sources;
      m_catalogue.reset();
    }
    m_readSources = m_sourceNumber;
  }
  if (!m_catalogue) {
    m_catalogue = std::make_unique<CCatalogue>();
    for (const CChartPath& path : sources.paths) m_catalogue->Add(path.path, path.isRecursive);
    m_live = sources.live;
    m_isThinned = sources.isThinned;
    m_tiles.Clear();
  }
  // The head before the logs: a sample that is too old for it is in them.
  const CLiveHead head = m_live ? m_live->Head() : CLiveHead();
  m_catalogue->Scan();
  m_scanned = std::chrono::steady_clock::now();
  TakeLogs(head);
}

void CChartReader::TakeLogs(const CLiveHead& head) {
  const std::shared_ptr<const CChartRows> before = Rows();
  auto now = std::make_shared<const CChartRows>(m_catalogue->Logs(), m_live, head, m_isThinned);
  const std::vector<CMomentRange> changed = ChangedRanges(before->Logs(), now->Logs());
  const bool isSameRing = before->Live() == now->Live() && before->Generation() == now->Generation() &&
                          (before->Since() == kEndMoment) == (now->Since() == kEndMoment);
  const bool isReadAgain = std::exchange(m_hasUnread, false);
  if (!isSameRing || isReadAgain) m_tiles.Clear();
  const CMomentRange added = AddedBetween(std::exchange(m_scannedHead, head), head);
  const auto since = [&](const CString& variable) { return now->TimelineOf(variable).since; };
  for (const CMomentRange& range : changed) m_tiles.Drop(range, since);
  bool isNew;
  {
    const std::lock_guard lock(m_mutex);
    const bool isOther = !m_isScanned || !isSameRing;
    isNew = isOther || isReadAgain || !changed.empty();
    const auto areDue = [&](auto& figures) {
      return std::exchange(figures.isDue, false) || isOther || isReadAgain ||
             now->HaveChanged(figures.variables, figures.range, changed, added);
    };
    const bool areStatisticsDue = areDue(m_statistics), areValuesDue = areDue(m_values);
    m_rows = std::move(now);
    m_range = m_rows->Range();
    m_isScanned = m_readSources == m_sourceNumber;
    m_faults = FaultsOf(m_rows->Logs());
    if (isNew) m_answered = m_askNumber - 1;
    // Figures of many rows take longer than from one scan to the next: rows that have come do not end them.
    if (areStatisticsDue) StartFigures(m_statistics, m_statisticsJob, isOther);
    if (areValuesDue) StartFigures(m_values, m_valuesJob, isOther);
  }
  if (isNew) Change();
}

// Whether it is time to show the samples that the ring has got. Then the picture is not the newest one. It is
// not time at each query: a chart that follows a short range asks again with each new sample that it sees.
bool CChartReader::HasNewSamples() {
  const CLiveHead head = m_rows->Head();
  m_hasNew |= head.generation != m_seen.generation || head.end != m_seen.end;
  // Of a clock that went back, samples belong between those that were read, until it is as late as before.
  if (head.backSteps != m_seen.backSteps)
    m_tiles.Clear();
  else if (m_seen.newestMoment < m_seen.lastMoment && head.end != m_seen.end)
    m_tiles.Drop({m_seen.newestMoment, head.newestMoment + 1}, [](const CString&) { return kEndMoment; });
  m_seen = head;
  const Time now = std::chrono::steady_clock::now();
  if (now - m_looked < kLivePeriod) return false;
  m_looked = now;
  if (!std::exchange(m_hasNew, false)) return false;
  const std::lock_guard lock(m_mutex);
  m_range = m_rows->Range();
  m_answered = m_askNumber - 1;
  return true;
}

// A query near to the one that is being read waits, so that a range that moves all the time is read, too.
bool CChartReader::IsSuperseded(const CChartQuery& query) const {
  const std::lock_guard lock(m_mutex);
  if (m_isEnding || m_readSources != m_sourceNumber) return true;
  if (m_answered == m_askNumber) return false;
  const CMoment overlap =
      std::min(query.range.to, m_query.range.to) - std::max(query.range.from, m_query.range.from);
  return m_query.variables != query.variables || 2 * overlap < query.range.to - query.range.from ||
         LevelOf(m_query.range, m_query.columns) != LevelOf(query.range, query.columns);
}

void CChartReader::Draw() {
  CChartQuery query;
  {
    const std::lock_guard lock(m_mutex);
    if (m_answered == m_askNumber || !m_isScanned) return;
    m_answered = m_askNumber;
    query = m_query;
  }
  CPictureMaker maker(*m_rows, m_tiles, query);
  m_published = std::chrono::steady_clock::now() + kFirstPublish - kPublishPeriod;
  bool hasSketch = false;  // was shown
  const bool isRead = maker.Read([&](double progress) {
    if (IsSuperseded(query)) return false;
    const bool isSketched = !hasSketch && !maker.Sketch().empty();
    hasSketch |= isSketched;
    if (isSketched || std::chrono::steady_clock::now() - m_published >= kPublishPeriod)
      Publish(progress, maker.Sketch());
    return true;
  });
  if (!maker.Faults().empty()) {
    const std::lock_guard lock(m_mutex);
    AddFaults(maker.Faults(), m_faults);
    m_hasUnread = true;
  }
  if (!isRead) {
    const std::lock_guard lock(m_mutex);
    if (!m_rows->IsComplete()) m_answered = m_askNumber - 1;
    return;
  }
  CChartPicture picture = maker.Make();
  picture.isFinal = true;
  picture.progress = 1;
  {
    const std::lock_guard lock(m_mutex);
    m_picture = std::move(picture);
  }
  Change();
}

// What is known of the newest query.
void CChartReader::Publish(double progress, const CSketch& sketch) {
  CChartQuery query;
  {
    const std::lock_guard lock(m_mutex);
    query = m_query;
  }
  CChartPicture picture = CPictureMaker(*m_rows, m_tiles, query).Make(sketch);
  picture.progress = progress;
  {
    const std::lock_guard lock(m_mutex);
    m_picture = std::move(picture);
  }
  m_published = std::chrono::steady_clock::now();
  Change();
}

// With the lock. endsFormer: what is being read is of no use; otherwise it is shown until the next figures
// are there.
template <class TFigure>
void CChartReader::StartFigures(CFigures<TFigure>& figures, CLatestJob& job, bool endsFormer) {
  if (figures.variables.empty() || !m_isScanned) return job.Stop();
  const auto read = [this, &figures, rows = m_rows, order = figures](const auto& isStopped) {
    std::vector<TFigure> found;
    std::vector<CHistoryFault> faults;
    if constexpr (std::is_same_v<TFigure, CCurveStatistics>)
      found = StatisticsOf(*rows, order.range, order.variables, isStopped, faults);
    else
      for (const CMoment moment : order.moments)
        found.push_back(ValuesAt(*rows, moment, order.variables, isStopped, faults));
    {
      const std::lock_guard result(m_mutex);
      if (isStopped()) return;
      const bool isComplete = rows->IsComplete();
      figures.isDue = !isComplete || !faults.empty();
      if (!isComplete) return;  // the next scan starts it again
      figures.found = std::move(found);
      figures.faults = std::move(faults);
    }
    Change();
  };
  job.Start(read, endsFormer);
}

void CChartReader::AskStatistics(const CMomentRange& range, std::vector<CString> variables) {
  const std::lock_guard lock(m_mutex);
  m_statistics = {.variables = std::move(variables), .range = range};
  StartFigures(m_statistics, m_statisticsJob, true);
}

std::vector<CCurveStatistics> CChartReader::Statistics() const {
  const std::lock_guard lock(m_mutex);
  return m_statistics.found;
}

void CChartReader::AskValues(std::vector<CMoment> moments, std::vector<CString> variables) {
  const std::lock_guard lock(m_mutex);
  const CMoment latest = moments.empty() ? kFirstMoment : std::ranges::max(moments);
  m_values = {std::move(variables), {kFirstMoment, latest + 1}, std::move(moments)};
  StartFigures(m_values, m_valuesJob, true);
}

std::vector<std::vector<float>> CChartReader::Values() const {
  const std::lock_guard lock(m_mutex);
  return m_values.found;
}

std::vector<CHistoryFault> CChartReader::FigureFaults() const {
  const std::lock_guard lock(m_mutex);
  std::vector<CHistoryFault> faults = m_statistics.faults;
  AddFaults(m_values.faults, faults);
  return faults;
}

void CChartReader::Export(CExport order) {
  const std::lock_guard lock(m_mutex);
  m_exportState = {true, 0, {}};
  m_exportJob.Start([this, rows = m_rows, order = std::move(order)](const auto& isStopped) {
    const CString fault = ExportRows(*rows, order, [&](double progress) {
      const std::lock_guard state(m_mutex);
      m_exportState.progress = progress;
      return !isStopped();
    });
    {
      const std::lock_guard state(m_mutex);
      m_exportState = {false, fault.IsEmpty() ? 1.0 : 0.0, fault};
    }
    Change();
  });
}

CChartData::CExportState CChartReader::ExportState() const {
  const std::lock_guard lock(m_mutex);
  return m_exportState;
}

}  // namespace vastra
