// CLoggerWatch: hears the feeds of all loggers of the machine, in one thread, and answers what is asked about
// their present, from any thread and without waiting. docs/web.md describes the answers.
//
// A logger is listed as long as FindLoggers finds it, and for a minute after that. A folder of --folder is
// listed, too; one with the name of a logger is more history of that logger and not listed by itself.
#pragma once

#include <atomic>
#include <list>
#include <thread>

#include "host/web/event_stream.h"
#include "host/web/logger_connection.h"
#include "host/web/web_answer.h"

namespace vastra {

class CLoggerWatch {
 public:
  using Time = CFeedClient::Time;
  using CFolders = std::map<std::string, std::string, std::less<>>;  // by name

  static constexpr std::size_t kMostLoggers = 200;
  static constexpr std::size_t kMostStreams = 500;

  // Looks for the loggers once, and begins to hear them.
  CLoggerWatch(const CLoggerFolders& places, CFolders folders);
  CLoggerWatch(const CLoggerWatch&) = delete;
  CLoggerWatch& operator=(const CLoggerWatch&) = delete;
  ~CLoggerWatch();  // streams may stay; they get nothing more

  // Whether name is a logger or a folder.
  bool Has(std::string_view name) const;
  bool IsFolder(std::string_view name) const;
  // The logger or folder whose name a browser got as shown, with U+FFFD for bytes that are not UTF-8.
  std::string NameOf(const std::string& shown) const;
  // Where the logs of name are. For a logger that has never answered those of its configuration, which may
  // wait for the disk; empty for an unknown name, or if there is none.
  std::vector<std::string> FoldersOf(std::string_view name) const;
  // False: why FoldersOf is empty is not known.
  bool HasAnswered(std::string_view name) const;

  // A name that is not there: status 404.
  CWebAnswer Loggers() const;
  CWebAnswer Logger(std::string_view name) const;
  // Not of a folder. logged: further ones, which come after those of the samples.
  CWebAnswer Variables(std::string_view name, const std::vector<CString>& logged = {}) const;
  CWebAnswer Sample(std::string_view name) const;
  CWebAnswer Messages(std::string_view name, const CWebQuery& query) const;
  CWebAnswer Metrics() const;

  // onReady is called by the thread of the watch, soon for the first time. It must not wait. Null if there
  // are too many streams.
  std::shared_ptr<CEventStream> Subscribe(const CStreamRequest& request, std::function<void()> onReady);

 private:
  struct CHeard {
    CLoggerConnection connection;
    Time found;  // for the last time
  };

  void Main();
  void Look(Time now);
  void Admit(const std::vector<CLoggerPlace>& found, Time now);
  void Forget(Time now);
  void Turn(Time now);
  void MakeList(Time now);
  std::vector<std::shared_ptr<CEventStream>> Streams();
  void Wait(Time turn);
  void Wake();

  std::shared_ptr<CLoggerRecord> Find(std::string_view name) const;
  CWebAnswer None(std::string_view name, const char* what) const;
  std::vector<CLoggerStatus> Statuses() const;
  CJson ListJson() const;

  const CLoggerFolders m_places;
  const CFolders m_folders;
  const std::shared_ptr<CWatchBoard> m_board = std::make_shared<CWatchBoard>();
  std::mutex m_streamLock;
  std::list<std::weak_ptr<CEventStream>> m_streams;

  // Of the thread.
  std::map<std::string, CHeard> m_heard;
  Time m_lookDue{}, m_listDue{}, m_beatDue{};

  const int m_wake;  // an eventfd
  std::atomic<bool> m_isEnding{false};
  std::thread m_thread;
};

}  // namespace vastra
