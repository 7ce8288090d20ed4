// CLineRecord: the lines of links that run on a thread of their own. It keeps them until the thread that
// waits for this one sends them to the messenger, at the place where they would come without threads.
#pragma once

#include <vector>

#include "vastra/core/messenger.h"
#include "vastra/platform/string.h"

namespace vastra {

class VASTRA_API CLineRecord {
 public:
  // While it exists, all links that run on the calling thread add their lines to record.
  class VASTRA_API CScope {
   public:
    explicit CScope(CLineRecord& record);
    CScope(const CScope&) = delete;
    CScope& operator=(const CScope&) = delete;
    ~CScope();

   private:
    CLineRecord* const m_pBefore;
  };

  // The record of the calling thread; null: its lines go to the messenger.
  static CLineRecord* OfThisThread();

  // linkType and linkName must exist until the record is cleared.
  void Add(const CString& linkType, const CString& linkName, char function, const CFault& fault);
  void SendTo(CMessenger& messenger) const;
  void Clear() { m_count = 0; }
  // The text of the first failure, which is the innermost one; null if there is none.
  const CString* FirstFailure() const;

 private:
  struct CLine {
    const CString* linkType;
    const CString* linkName;
    char function;
    char severity;
    bool hasText;
    CString text;
  };
  // A read in which nothing fails sends a few lines. The rest is dropped, so that a record stays small.
  static constexpr std::size_t kMostLines = 1000;

  std::vector<CLine> m_lines;  // the first m_count are in use
  std::size_t m_count = 0;
};

}  // namespace vastra
