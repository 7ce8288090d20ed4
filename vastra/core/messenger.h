// CMessenger: all links report through it. Each operation of a link sends Begin, and at its end either End or
// one line with the failure; Notices in between do not end the operation. The messenger writes an indented
// trace of the calls through a chain to console window 0.
//
// Threads: Send has no lock. Chains that run at the same time share depth and filters, so they can disturb
// each other's indent, but nothing else.
#pragma once

#include "vastra/platform/object.h"
#include "vastra/platform/thread.h"

namespace vastra {

// Which operation of a link a line is about.
constexpr char functionOpen = 0, functionClose = 1, functionRead = 2, functionWrite = 3,
               functionGetVarNames = 4, functionCommunicate = 5, functionConstructor = 6,
               functionDestructor = 7, functionFlush = 8, functionPartialFlush = 9;

// Kinds of line. Fatal: misuse or a bad configuration, shown in a modal box too. Error: a failure at run
// time; a retry may succeed. Warning: a request without effect. Notice: an event that is not a failure.
constexpr char severityFatal = 0, severityError = 1, severityWarning = 2, severityNotice = 3,
               severityBegin = 4, severityEnd = 5;

// The colours of Fatal and Error lines, and of Warning lines.
constexpr COLORREF kErrorColour = 0x0000B4, kWarningColour = 0x0082FF;

// A failure or an event: its severity and its text.
struct CFault {
  char severity;
  const char* text;
};

// A host can derive from it and override Send, which then receives every line of every link, before the
// filters.
class VASTRA_API CMessenger {
 public:
  virtual void Send(const char* linkType, const char* linkName, char function, char severity,
                    const char* text);
  virtual ~CMessenger() = default;

  CMessenger() = default;
  CMessenger(const CMessenger&) = default;
  CMessenger& operator=(const CMessenger&) = default;

  // Spares a link the call of Send for a Begin or an End (isEnd) that the filter drops: then adjusts the
  // depth as Send does and returns true. Returns false, without effect, if the line passes the filter.
  bool Drops(bool isEnd) {
    if (m_debugFilter) return false;
    if (isEnd && m_depth > 0) m_depth = m_depth - 1;
    return true;
  }

  // Non-zero: this kind is shown. debug is for Begin and End.
  void SetFilters(int fatal, int error, int warning, int notice, int debug);
  void GetFilters(int& fatal, int& error, int& warning, int& notice, int& debug) const;

 protected:
  struct CKind;
  static const CKind kKinds[6];
  static const CKind kOtherKind;
  void Show(const CKind& kind, const char* linkType, const char* linkName, char function, char severity,
            const char* text);

  CRelaxed<int> m_fatalFilter = 1;
  CRelaxed<int> m_errorFilter = 1;
  CRelaxed<int> m_warningFilter = 1;
  CRelaxed<int> m_noticeFilter = 1;
  CRelaxed<int> m_debugFilter = 0;
  CRelaxed<int> m_depth = 0;  // levels of indent; never below 0
};

// Two error counters for a host; no link uses them.
class VASTRA_API CErrorManager : public CObject {
 public:
  void AddError1() { ++m_error1Count, m_error1Flag = 1; }
  void ResetError1() { m_error1Count = m_error1Flag = 0; }
  void AddError2() { ++m_error2Count, m_error2Flag = 1; }
  void ResetError2() { m_error2Count = m_error2Flag = 0; }

  int m_error1Count = 0;
  int m_error1Flag = 0;
  int m_error2Count = 0;
  int m_error2Flag = 0;
};

}  // namespace vastra
