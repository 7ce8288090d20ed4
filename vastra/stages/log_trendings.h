// CLogTrendings: keeps the newest sample for the live views. The host writes each sample to it; the views
// read the newest one whenever they update. Equations can add variables that exist only in the views.
#pragma once

#include <functional>

#include "vastra/config/trend_config.h"
#include "vastra/stages/log_facade.h"

namespace vastra {

class CFileLink;
class CLink;

class VASTRA_API CLogTrendings : public CLogFacade {
 public:
  CLogTrendings() = default;
  ~CLogTrendings() override { Close(); }

  // names are those of the samples to come: the names of the input stage. The views name the values by
  // m_baseVars and then m_extraVars of the configuration, so the host must keep m_baseVars equal to names.
  int Open(CStringArray& names);
  void Close();
  int IsOpen() const { return m_open; }

  // Keeps a copy of sample, followed by the extra variables.
  int Write(CLogSample& sample);
  // Copies the newest sample, which stays; a sample without values before the first Write. 0, with sample
  // unchanged, on a closed stage.
  int Read(CLogSample* sample);
  // The newest sample, without a copy and a message; null on a closed stage.
  const CLogSample* Newest() const;

  // The settings: those of the stage itself, or the shared ones.
  CTrendConfig* GetOptions() { return m_pOptions; }
  void ClearConfiguration() { m_pOptions->Clear(); }

  // Stage and views use options from now on, which must exist as long as the stage; null: the settings of the
  // stage. A host that stores a configuration shares its part of it, so that there is only one copy.
  void ShareOptions(CTrendConfig* options) { m_pOptions = options ? options : &m_options; }
  // changed is called after a view or a dialog has changed the settings.
  void SetOptionsListener(std::function<void()> changed) { m_changed = std::move(changed); }
  // Call this after changing the settings through GetOptions.
  void OptionsChanged() const {
    if (m_changed) m_changed();
  }

 private:
  CLink* m_pHeadLink = nullptr;  // outermost link, owned
  CTrendConfig m_options;
  CTrendConfig* m_pOptions = &m_options;
  std::function<void()> m_changed;   // the host's
  CFileLink* m_pFileLink = nullptr;  // the buffer, in the chain
};

}  // namespace vastra
