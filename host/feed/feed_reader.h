// CFeedReader: the connection of one reader of the feed. Lines are put into its output only when the output
// is empty, so that a slow reader holds one batch of lines at most: it misses samples, and is told how many
// messages and logs it has missed.
#pragma once

#include "host/feed/feed_content.h"
#include "host/feed/feed_request.h"
#include "host/feed/feed_socket.h"

namespace vastra {

class CFeedReader {
 public:
  using Time = CFeedContent::Time;

  CFeedReader(CDescriptor socket, CFeedContent& content, Time now);

  int Get() const { return m_socket.Get(); }
  // What the reader waits for, as poll has it.
  short Events(Time now) const;
  // Receives, takes a request, and sends what is due. ready: as poll has it. False: the connection is over.
  bool Work(short ready, Time now);

 private:
  void Receive();
  void TakeLine(Time now);
  void TakeRequest(const std::string& line);
  void Refuse(const CString& text);
  void Fill(Time now);
  void AddHello();
  void AddMessages();
  void AddState();
  void AddCounts();
  void AddSample();
  void AddLines(CFeedRecords& records, std::uint64_t& cursor, const char* key);
  void Add(CFeedLine line);
  bool Send(Time now);
  // Whether what is due at due is due, which is then due again after pause.
  bool TakeDue(Time& due, std::chrono::milliseconds pause) const;

  CDescriptor m_socket;
  CFeedContent& m_content;
  CFeedRequest m_request;
  std::vector<int> m_indexes;  // of the variables of the request
  std::string m_input;         // up to a line and a piece of the next one
  bool m_isInputOver = false;  // the reader sends nothing more
  Time m_readDue{};            // when the next line may be taken
  Time m_beginDue;             // of the lines after hello, unless a request comes before
  bool m_isOver = false;       // an error was put in; the connection ends when it is sent
  bool m_hasMore = false;      // lines did not fit into the last batch

  std::vector<CFeedLine> m_output;
  std::size_t m_next = 0, m_sent = 0;  // the first line that is not sent, and how much of it is
  std::size_t m_batch = 0;             // bytes in m_output
  Time m_progress{};                   // when the reader took something, or the output was filled

  std::optional<std::uint64_t> m_hello, m_state;  // the changes that were sent
  std::uint64_t m_message = 1, m_log;             // the next ones
  bool m_hasKept = false;                         // the mark after the kept messages was put in
  std::uint64_t m_sampleNames = 0;                // the change of the names of the sample that was sent last
  std::uint64_t m_sample = 0;                     // its number
  Time m_stateDue{}, m_countsDue{}, m_sampleDue{};
};

}  // namespace vastra
