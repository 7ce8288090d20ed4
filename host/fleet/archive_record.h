// CArchiveRecord: what an archive has, in a database: of each name the version that is stored, and the files
// of which chunks are missing. So the same bytes are stored once, however often they come, and an older
// version that comes late does not replace a newer one.
#pragma once

#include <map>
#include <optional>
#include <vector>

#include "host/fleet/chunk.h"
#include "host/fleet/fleet_names.h"
#include "host/fleet/sqlite_store.h"

namespace vastra {

// The order in which versions were sent, without any clock: the number of the stream, and that of the message
// in it.
struct COrder {
  std::uint64_t stream = 0;  // counts the streams that this archive has seen: servers can be wiped
  std::uint64_t sequence = 0;

  bool operator<(const COrder& other) const {
    return stream != other.stream ? stream < other.stream : sequence < other.sequence;
  }
};

struct CStoredFile {
  CFleetFile file;  // of the node
  CVersion version = {};
  COrder order;
  std::uint64_t size = 0;
  CLogId log = {};
  // Below the archive: that of file, or of a name with ~2, ~3, ... if another log has it.
  std::string path = {};
  CVersion pack = {};  // that has brought it; zeros: it came alone. The record does not have it
};

// A file of which some chunks are there.
struct CPartialFile {
  CStoredFile stored;
  std::uint64_t id = 0;  // of the file in the tree
  std::vector<bool> chunks;
  std::int64_t touched = 0;  // seconds since 1970

  std::vector<std::uint64_t> Missing(std::size_t most) const;
};

// All operations throw CStoreFault.
class CArchiveRecord {
 public:
  explicit CArchiveRecord(const std::string& path);

  // Names this record among all others. A node that has receipts of another one sends everything again.
  const std::string& Id() const { return m_id; }
  // The number for COrder of a stream that was made at this time, as the server says it, and whose last
  // message has this number: another one than before if it is another stream, or an earlier state of the
  // same.
  std::uint64_t NumberOfStream(const std::string& made, std::uint64_t last);

  // What is stored of the log; if nothing is, a file of this name with the same version. The version before
  // is not part of it.
  std::optional<CStoredFile> Find(const CStoredFile& wanted);
  // Whether a file is stored there.
  bool Has(const std::string& path);
  // The receipt of the file is to be published, again if it was.
  void Put(const CStoredFile& stored);
  void PutPartial(const CPartialFile& partial);
  void DropPartial(std::uint64_t id);
  std::vector<CPartialFile> Partials();

  // Files whose receipts are not with the servers yet, at most so many.
  std::vector<CStoredFile> Untold(std::size_t most);
  // The receipt with this order is with the servers.
  void Tell(const CStoredFile& stored);

  std::uint64_t NextId() { return ++m_lastId; }
  CSqliteStore& Store() { return m_store; }

 private:
  CSqliteStore m_store;
  CStatement m_find, m_has, m_put, m_reach, m_putPartial, m_dropPartial, m_untold, m_tell;
  std::string m_id;
  std::uint64_t m_lastId = 0;
};

}  // namespace vastra
