// CDistantContent: what the feed of a logger of another machine says: the lines that came in messages about
// it.
#pragma once

#include "host/feed/feed_content.h"
#include "host/fleet/fleet_view.h"

namespace vastra {

class CDistantContent : public CFeedContent {
 public:
  explicit CDistantContent(const CFleetLogger& logger)
      : m_place(logger.node.site + "/" + logger.node.name + ":") {}

  void Note(const CLiveMessage& message, Time now);
  // When the last message came.
  Time Heard() const { return m_contact.heard; }

  CString Fault() const override { return CString(m_contact.Fault(RefreshedAt())); }
  std::uint64_t HelloChange() const override { return m_helloChange; }
  std::uint64_t StateChange() const override { return m_stateChange; }
  std::uint64_t NamesChange() const override { return m_namesChange; }
  CFeedLine Hello() override { return m_hello; }
  CFeedLine State() override { return m_state; }
  CFeedLine Counts() override { return m_counts; }
  std::uint64_t SampleNumber() const override {
    return m_sample.values.size() == m_names.size() ? m_sample.number : 0;
  }
  CFeedLine Sample() override { return m_sampleLine; }
  CFeedLine Sample(const std::vector<int>& indexes) override;
  std::vector<int> IndexesOf(const std::vector<CString>& variables) override;

 private:
  void Look() override {}
  void NoteHello(const CLiveMessage::CLine& line, const CHelloLine& hello);

  const std::string m_place;  // before the paths of its folders
  CLiveContact m_contact;
  std::string m_helloText;  // as it came
  std::vector<std::string> m_names;
  CSampleLine m_sample;
  CFeedLine m_hello, m_state, m_counts, m_sampleLine;
  std::uint64_t m_helloChange = 0, m_stateChange = 0, m_namesChange = 0;
};

}  // namespace vastra
