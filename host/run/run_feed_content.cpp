#include "host/run/run_feed_content.h"

#include <algorithm>
#include <utility>

namespace vastra {
namespace {

CFeedLine Share(std::string line) { return std::make_shared<const std::string>(std::move(line)); }

}  // namespace

CRunFeedContent::CRunFeedContent(const CFeedSource& source, const CFeedOwner& owner)
    : m_messages(source.m_messages, MessageLine),
      m_logs(source.m_logs, LogLine),
      m_source(source),
      m_owner(owner) {}

void CRunFeedContent::Look() {
  const CFeedSource::CView before = std::exchange(m_view, m_source.View());
  const std::uint64_t number = std::exchange(m_hasSample, false) ? m_newest.number : 0;
  const auto nodes = m_newest.nodes, written = m_newest.written;
  if (!m_view.live) m_newest = {};
  const bool isCopied = m_view.live && m_view.live->CopyNewest(m_newest);
  m_hasSample = isCopied && m_newest.samples != 0 && m_view.names && m_newest.names == m_view.names;
  m_state = m_counts = nullptr;
  if (before.change != m_view.change || number != SampleNumber())
    m_sampleLine = nullptr, m_isSampleFormatted = false;
  if (before.names != m_view.names) m_indexes.clear(), ++m_namesChange;
  if (before.change != m_view.change) m_hello = nullptr;
  if (before.facts != m_view.facts) WatchFolders();
  if (before.status != m_view.status || before.saves != m_view.saves || nodes != m_newest.nodes ||
      written != m_newest.written)
    ++m_stateChange;
}

void CRunFeedContent::WatchFolders() {
  std::vector<CString> paths;
  for (const auto* logs : {&m_view.facts->outputs, &m_view.facts->summaries})
    for (const CFeedFacts::CLog& log : *logs)
      if (std::find(paths.begin(), paths.end(), log.folder) == paths.end()) paths.push_back(log.folder);
  m_folders.Watch(std::move(paths));
}

CFeedLine CRunFeedContent::Hello() {
  if (!m_hello) m_hello = Share(HelloLine(m_owner, m_view));
  return m_hello;
}

CFeedLine CRunFeedContent::State() {
  if (!m_state) m_state = Share(StateLine(m_view, m_newest, m_folders));
  return m_state;
}

CFeedLine CRunFeedContent::Counts() {
  if (!m_counts) m_counts = Share(CountsLine(m_view, m_newest));
  return m_counts;
}

void CRunFeedContent::FormatSample() {
  if (!std::exchange(m_isSampleFormatted, true)) m_sample.Set(m_newest);
}

CFeedLine CRunFeedContent::Sample() {
  FormatSample();
  if (!m_sampleLine) m_sampleLine = Share(m_sample.Line());
  return m_sampleLine;
}

CFeedLine CRunFeedContent::Sample(const std::vector<int>& indexes) {
  FormatSample();
  return Share(m_sample.Line(indexes));
}

std::vector<int> CRunFeedContent::IndexesOf(const std::vector<CString>& variables) {
  if (m_indexes.empty() && m_view.names)
    for (const CString& name : *m_view.names)
      m_indexes.emplace(name.View(), static_cast<int>(m_indexes.size()));
  return PlacesOf(variables, m_indexes);
}

}  // namespace vastra
