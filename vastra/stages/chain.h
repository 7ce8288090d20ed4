// CChain: a chain of links while a stage builds it, from its leaf outwards, with the configurations for its
// Open. The destructor deletes what was not passed on.
#pragma once

#include <memory>

#include "vastra/core/concat_link.h"
#include "vastra/core/link.h"
#include "vastra/core/name_config.h"
#include "vastra/equations/equator_link.h"
#include "vastra/logfiles/file_link.h"

namespace vastra {

class CChain {
 public:
  // Makes link, which was given the former head by Pass, the new head. Its configuration precedes those of
  // the links inside it. Returns link.
  template <class Link>
  Link* Add(Link* link, const CString& name, std::unique_ptr<CLinkConfig> config) {
    m_pHead.reset(link);
    link->m_name = name;
    m_configs.AddHead(config.get());
    static_cast<void>(config.release());  // the list owns it now
    return link;
  }

  bool IsEmpty() const { return !m_pHead; }
  // Passes the head to the link that is to contain it, which deletes it also if its own constructor fails.
  CLink* Pass() { return m_pHead.release(); }
  // Passes the head to the caller, so that a second branch can be built; its configurations stay.
  std::unique_ptr<CLink> TakeHead() { return std::move(m_pHead); }

  // Opens the chain, which stays here whatever the result. Its configurations are consumed.
  int OpenHere(UINT mode);
  // Opens the chain and passes it to the caller. On failure deletes it and returns null. Its configurations
  // are consumed in both cases.
  CLink* Open(UINT mode);

 private:
  std::unique_ptr<CLink> m_pHead;
  CLinkConfigList m_configs;
};

// Configurations of links that more than one stage needs.
std::unique_ptr<CFileConfig> BufferConfig(const CStringArray& names);
// The configuration of a link that writes logs, from the settings that a COutputConfig and a CSummaryConfig
// (options) have in common.
template <class Options>
std::unique_ptr<CFileConfig> LogConfig(const Options& options, const char* extension) {
  auto config = std::make_unique<CFileConfig>();
  config->m_extension = extension;
  config->m_directory = options.m_directory;
  config->m_varNames = options.m_varNames;
  config->m_saveRp = options.m_saveRp;
  config->m_saveCsv = options.m_saveCsv;
  config->m_maxSamples = options.m_maxSamples;
  config->m_logName = options.m_name;
  config->m_retention = options.m_retention;
  return config;
}
std::unique_ptr<CNameConfig> NameConfig(const CStringArray& names);
// firstCount: number of links of the first component.
std::unique_ptr<CConcatConfig> ConcatConfig(int firstCount);
std::unique_ptr<CEquatorConfig> EquatorConfig(const CStringArray& inputs, const CStringArray& equations,
                                              const CStringArray& outputs);

// Adds a buffer for outputs and around it the equator that computes them from samples of inputs: the pair for
// enable flags, summaries and smart logic. Returns the buffer.
CFileLink* AddEquations(CChain& chain, const char* equator, const char* buffer, const CStringArray& inputs,
                        const CStringArray& equations, const CStringArray& outputs);

}  // namespace vastra
