// CRunMessenger: the messenger of a host that makes runs. It does what CMessenger does and passes each line
// that is not Begin or End to the run that is attached. Control characters in the name of a link, which comes
// from the configuration or a driver, become "?"; the texts of the links themselves can have line feeds.
#pragma once

#include <atomic>

#include "vastra/core/messenger.h"

namespace vastra {

class CRunMessenger : public CMessenger {
 public:
  class CReader {
   public:
    virtual ~CReader() = default;
    // Called for each Fatal, Error, Warning and Notice line, on the thread of the link. False: the line is
    // not shown.
    virtual bool TakeMessage(const char* linkType, const char* linkName, char function, char severity,
                             const char* text) = 0;
  };

  void Send(const char* linkType, const char* linkName, char function, char severity,
            const char* text) override;
  // Passes the lines from now on to reader, which must exist until it is replaced; null: to no reader. Only
  // while no worker runs.
  void Attach(CReader* reader) { m_pReader = reader; }

  // While the object exists nothing is shown: what fails now fails again, and is shown, when the stages open.
  class CQuiet {
   public:
    explicit CQuiet(CRunMessenger& messenger);
    ~CQuiet();
    CQuiet(const CQuiet&) = delete;
    CQuiet& operator=(const CQuiet&) = delete;

   private:
    CRunMessenger& m_messenger;
    int m_filters[5];
  };

 private:
  std::atomic<CReader*> m_pReader{nullptr};
};

}  // namespace vastra
