// CChunkSender: sends the files that wait, in chunks and packs, with a bounded number of bytes on the way.
// Files that were found while the shipper ran go first, those with the fewest chunks before the others; one
// message in eight is of the backlog. All bytes are within the limit.
#pragma once

#include <deque>
#include <map>

#include "host/common/descriptor.h"
#include "host/fleet/chunk.h"
#include "host/fleet/fleet_names.h"
#include "host/fleet/log_finder.h"
#include "host/fleet/nats_link.h"
#include "host/fleet/ship_state.h"
#include "host/fleet/told_once.h"

namespace vastra {

class CChunkSender {
 public:
  using Time = CNatsLink::Time;

  // limit: bytes per second; 0: none.
  CChunkSender(CNatsLink& link, CShipState& state, const CLogFinder& finder, const CFleetNode& node,
               std::uint64_t limit, CToldOnce& log);

  // Sends as much as may be on the way. Throws CStoreFault.
  void Work(Time now);
  // An answer whose subject is AnswerSubject(kKind) and a number. Throws CStoreFault.
  void Hear(const CNatsMessage& answer, Time now);
  // Sends one chunk of a file again, if the file is still what it was.
  void SendAgain(const CShipFile& file, std::uint64_t chunk);

  // The servers have refused what was sent last.
  bool IsRefused() const { return m_block.count() > 0; }
  bool IsIdle() const { return m_sends.empty(); }
  // When Work has something to do without an answer.
  Time Due(Time now) const;
  std::uint64_t Bytes() const { return m_bytes; }  // that were sent

  static constexpr const char* kKind = "chunk";

 private:
  // A file, or a pack, on its way.
  struct CSend {
    std::vector<CShipFile> files;
    CFileSubject subject;
    CDescriptor file;                  // open, unless all of it is in message
    std::string message;               // the only one
    std::uint64_t size = 0;            // of the file
    std::uint64_t next = 0, end = 0;   // chunks to send
    std::vector<std::uint64_t> again;  // chunks to send once more
    unsigned underWay = 0;
    std::uint64_t sequence = 0;  // the highest that was heard
    bool isCancelled = false;    // a newer version is there
    bool isExtra = false;        // a chunk that was asked for: the file has been sent before

    bool HasMore() const { return next < end || !again.empty(); }
    bool IsLive() const { return isExtra || files.front().isLive; }
  };
  struct CUnderWay {
    std::uint64_t send, chunk, bytes;
    Time sent;
  };

  bool MayPublish(Time now);
  bool PublishNext(Time now);
  CSend* NextSend();
  std::size_t Count(bool isLive) const;
  void Start(bool isLive);
  bool StartPack(std::vector<CShipFile> files);
  bool StartFile(CShipFile file);
  bool Publish(std::uint64_t number, CSend& send, Time now);
  std::string MessageOf(CSend& send, std::uint64_t chunk);
  std::uint64_t Add(CSend send);
  void Finish(std::uint64_t number);
  void NoteSent(const CSend& send, CShipFile file);
  void PutOff(const CShipFile& file);
  bool CancelOlder(const std::string& key);
  static void Cancel(CSend& send);
  void TakeBack(Time now);
  void Adapt(const CUnderWay& answered, Time now);
  void Narrow(Time now);

  CNatsLink& m_link;
  CShipState& m_state;
  const CLogFinder& m_finder;
  const CFleetNode m_node;
  const std::uint64_t m_limit;
  CToldOnce& m_log;

  std::map<std::uint64_t, CSend> m_sends;         // by number
  std::map<std::uint64_t, CUnderWay> m_underWay;  // messages without an answer, by number
  std::uint64_t m_lastSend = 0, m_lastMessage = 0;
  std::uint64_t m_bytesUnderWay = 0, m_bytes = 0;
  std::uint64_t m_window;  // bytes that may be on the way: fewer on a slow line
  Time m_narrowed{};       // when the window was made smaller, for the last time
  unsigned m_connection = 0;
  double m_allowance = 0;  // bytes that the limit leaves
  Time m_filled{};         // when it was computed
  Time m_blocked{};        // the servers take nothing until then
  Time m_startDue{};       // when to look for files that wait
  std::chrono::milliseconds m_block{};
  std::deque<CShipFile> m_queues[2];  // read from the state, backlog and live
};

}  // namespace vastra
