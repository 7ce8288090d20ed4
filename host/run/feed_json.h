// The lines of the feed, as docs/feed.md describes them.
#pragma once

#include "host/run/feed_folders.h"
#include "host/run/feed_source.h"

namespace vastra {

struct CFeedOwner {
  CString configuration;  // its file
  _timeb started;         // of the process
};

std::string HelloLine(const CFeedOwner& owner, const CFeedSource::CView& view);
std::string StateLine(const CFeedSource::CView& view, const CLiveNewest& newest, const CFeedFolders& folders);
std::string CountsLine(const CFeedSource::CView& view, const CLiveNewest& newest);
std::string MessageLine(const CFeedSource::Messages::CEntry& entry);
std::string LogLine(const CFeedSource::Logs::CEntry& entry);

// The values of a sample as text, formatted once for all readers. The memory is used again for each sample.
class CFeedSample {
 public:
  void Set(const CLiveNumbers& numbers);
  // The line with all values, and that with those at indexes; below 0: null.
  std::string Line() const;
  std::string Line(const std::vector<int>& indexes) const;

 private:
  std::string m_head;
  std::string m_values;             // separated by commas
  std::vector<std::size_t> m_ends;  // of each value in m_values
};

}  // namespace vastra
