// CRunMessenger: the messenger of a host that makes runs. It does what CMessenger does and passes each line
// that is not Begin or End to the run that is attached. Names and texts, which come from configurations and
// drivers, are cut to 2,000 bytes; control characters in the name of a link become "?".
#pragma once

#include <atomic>

#include "host/run/run_observer.h"
#include "vastra/core/messenger.h"

namespace vastra {

constexpr COLORREF kNoticeColour = 0x960000;

class CRunMessenger : public CMessenger {
 public:
  class CReader {
   public:
    virtual ~CReader() = default;
    // Called for each Fatal, Error, Warning and Notice line, on the thread of the link. False: the line is
    // not shown.
    virtual bool TakeMessage(const char* linkType, const char* linkName, char function, char severity,
                             const char* text) = 0;
    // The output or summary that works at the moment, as its users call it; empty: none. On the same thread.
    virtual CString Place() const { return {}; }
  };

  void Send(const char* linkType, const char* linkName, char function, char severity,
            const char* text) override;
  // Shows a line of the host, if it passes the filter. The reader does not get it.
  void Say(const CRunMessage& message);

  // Passes the lines from now on to reader, which must exist until it is replaced; null: to no reader. Only
  // while no worker runs.
  void Attach(CReader* reader) { m_pReader = reader; }

  // From now on each line is written for people, see MessageText, and lines that add nothing are left out.
  // By default the lines are those of CMessenger, byte for byte.
  void SpeakToPeople(bool isOn) { m_forPeople = isOn; }
  bool SpeaksToPeople() const { return m_forPeople; }
  // While it speaks to people: no box for a Fatal line, since the host shows one for all that happens now.
  void HoldBoxes(bool isOn) { m_holdsBoxes = isOn; }

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
  void EndOperation(char severity);

  std::atomic<CReader*> m_pReader{nullptr};
  std::atomic<bool> m_forPeople{false}, m_holdsBoxes{false};
};

}  // namespace vastra
