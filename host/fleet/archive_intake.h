// CArchiveIntake: takes chunks and packs into an archive. What was taken counts once Finish has returned: it
// is on the disk and in the record then, and only then the servers may forget the messages.
#pragma once

#include <functional>
#include <set>
#include <utility>

#include "host/fleet/archive_record.h"
#include "host/fleet/archive_tree.h"
#include "host/fleet/chunk.h"

namespace vastra {

class CArchiveIntake {
 public:
  using CTell = std::function<void(const std::string&)>;

  // tell gets a line about each file that cannot be stored.
  CArchiveIntake(CArchiveTree& tree, CArchiveRecord& record, CTell tell);

  // A message. Throws CChunkFault for a damaged one, whose bytes are to be asked for again; std::system_error
  // and CStoreFault if the disk does not take it: then everything since the last Finish is to be given back.
  void Take(const CFileSubject& subject, std::string_view message, COrder order);
  std::size_t Count() const { return m_ready.size() + m_again.size(); }  // of files since the last Finish
  // Files whose receipts are due. Throws like Take.
  std::vector<CStoredFile> Finish();
  // Drops what came since the last Finish.
  void GiveBack();

  // Files that miss chunks and got none for some seconds.
  std::vector<const CPartialFile*> Waiting() const;
  // Gives up files that got nothing for 30 days: their nodes are gone, or send another version. Throws
  // CStoreFault.
  void DropStale();

 private:
  using CKey = std::pair<std::string, CVersion>;
  struct CReady {
    CStoredFile stored;
    std::uint64_t id;
  };

  void AddReady(const CStoredFile& stored, std::uint64_t id);
  void TakeWhole(CStoredFile stored, std::string_view bytes);
  void TakeChunk(const CStoredFile& stored, const CChunk& chunk);
  CPartialFile* PartialOf(CStoredFile stored);
  void CloseIfWhole(CPartialFile& partial);
  void MakeRoom(const CFleetNode& node);
  bool IsWanted(CStoredFile& stored);
  std::string PathFor(const CStoredFile& stored);
  bool IsFree(const std::string& path);
  bool IsSameLog(const std::string& path, const CStoredFile& stored);
  void PlaceReady();
  void Record();
  void DropOlderPartials(const CStoredFile& stored);
  void Clear();

  CArchiveTree& m_tree;
  CArchiveRecord& m_record;
  const CTell m_tell;
  std::map<CKey, CPartialFile> m_partials;

  // Since the last Finish.
  std::vector<CReady> m_ready;                 // received whole
  std::set<std::string> m_paths;               // of these, and those of the nodes' names
  std::map<std::string, CStoredFile> m_again;  // stored before, and sent again, by path
  std::set<CKey> m_changed;                    // partial files
  std::vector<std::uint64_t> m_dropped;        // their numbers in the record
  std::vector<CStoredFile> m_done;             // finished already, when a file came twice
};

}  // namespace vastra
