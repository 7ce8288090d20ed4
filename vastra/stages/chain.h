// CChain: a chain of links while a stage builds it, from its leaf outwards, with the configurations that its
// Open takes. What has not been handed over when it goes is deleted with it.
#pragma once

#include <memory>

#include "vastra/core/link.h"
#include "vastra/core/name_config.h"
#include "vastra/equations/equator_link.h"
#include "vastra/logfiles/file_link.h"

namespace vastra {

class CChain {
 public:
  // Makes link, which stands on what Head gave, the new head. Its configuration goes in front of those of the
  // links inside it. Gives link.
  template <class Link>
  Link* Add(Link* link, const CString& name, std::unique_ptr<CLinkConfig> config) {
    link->m_name = name;
    static_cast<void>(m_pHead.release());  // owned by link from here on
    m_pHead.reset(link);
    m_configs.AddHead(config.release());
    return link;
  }

  CLink* Head() const { return m_pHead.get(); }
  // Gives the head away, so that a second branch can be built; its configurations stay.
  std::unique_ptr<CLink> TakeHead() { return std::move(m_pHead); }

  // Opens the chain and gives it to the caller. On failure deletes it and gives null. Either way nothing is
  // left of the configurations.
  CLink* Open(UINT mode);

 private:
  std::unique_ptr<CLink> m_pHead;
  CLinkConfigList m_configs;
};

// Settings of links as more than one stage needs them.
std::unique_ptr<CFileConfig> BufferConfig(const CStringArray& names);
std::unique_ptr<CNameConfig> NameConfig(const CStringArray& names);
std::unique_ptr<CEquatorConfig> EquatorConfig(const CStringArray& inputs, const CStringArray& equations,
                                              const CStringArray& outputs);

}  // namespace vastra
