// CEventStream: the events of /api/v1/stream for one browser, as text. It stores none of them: it only
// remembers how far the browser is, so that a slow one costs nothing. CLoggerWatch makes it.
#pragma once

#include "host/web/watch_board.h"

namespace vastra {

// Names that are not there now can be there later.
struct CStreamRequest {
  std::vector<std::string> samples = {}, messages = {};
  std::vector<std::string> logs = {};  // those of the other names are sent as well
};

class CEventStream {
 public:
  static constexpr std::size_t kMostNames = 600;     // of a request; further ones are ignored
  static constexpr std::size_t kMostMessages = 100;  // of one Take

  CEventStream(std::shared_ptr<CWatchBoard> board, const CStreamRequest& request,
               std::function<void()> onReady);
  CEventStream(const CEventStream&) = delete;
  CEventStream& operator=(const CEventStream&) = delete;

  // Gets the next events; false if there are none at the moment. To be called until it returns false; after
  // that onReady is called when there are some again. One thread at a time.
  bool Take(std::string& text);
  // onReady is not called any more once this has returned. Not from onReady, and not with a lock that it
  // takes.
  void Close();

  // By the watch: calls onReady if there is something to take and it was not called since the last Take.
  void Tell();

 private:
  struct CPending {
    const char* event;
    CTextPtr text;
  };
  // How far the browser is with one logger.
  struct CCursor {
    std::string name;
    bool wantsSamples = false, wantsMessages = false;
    std::shared_ptr<const CLoggerRecord> now;     // on the board; null: there is none
    std::shared_ptr<const CLoggerRecord> record;  // whose events were collected last
    CTextPtr variables, sample;
    std::uint64_t message = 0, log = 0;
  };

  CCursor& CursorOf(const std::string& name);
  bool HasNews() const;
  std::vector<CPending> Collect();
  void CollectSample(CCursor& cursor, std::vector<CPending>& pending);
  void CollectMessages(CCursor& cursor, std::size_t& room, std::vector<CPending>& pending);
  void CollectLogs(CCursor& cursor, std::vector<CPending>& pending);

  const std::shared_ptr<CWatchBoard> m_board;
  std::vector<CCursor> m_cursors;
  std::uint64_t m_changes = 0;  // of the board, that the cursors have: names are looked up after one only
  CTextPtr m_list;
  std::uint64_t m_beats = UINT64_MAX;  // the time is told at once
  bool m_isTold = false;               // under the lock of the board, as all before
  std::mutex m_telling;
  std::function<void()> m_onReady;
};

}  // namespace vastra
