// CMessenger: the one channel by which links report. Each operation of a link sends Begin, and at its end
// either End or one line that says what failed; a Notice in between ends nothing. From their nesting the
// messenger makes an indented trace of a call going down a chain, in console window 0.
//
// Threads: Send takes no lock. Chains that run at the same moment share depth and filters and can disturb
// each other's indent, and nothing else.
#pragma once

#include "vastra/platform/object.h"
#include "vastra/platform/thread.h"

namespace vastra {

// Which operation of a link a line is about.
constexpr char functionOpen = 0, functionClose = 1, functionRead = 2, functionWrite = 3,
               functionGetVarNames = 4, functionCommunicate = 5, functionConstructor = 6,
               functionDestructor = 7, functionFlush = 8, functionPartialFlush = 9;

// Kinds of line. Fatal: misuse or a bad configuration, with a modal box; Error: a failure at run time that
// can be tried again; Warning: a request without effect; Notice: an event that is no failure.
constexpr char severityFatal = 0, severityError = 1, severityWarning = 2, severityNotice = 3,
               severityBegin = 4, severityEnd = 5;

// What went wrong, or what is worth a line: the severity and the words.
struct CFault {
  char severity;
  const char* text;
};

// A host may derive from it and replace Send, which sees every line of every link, filtered ones too.
class VASTRA_API CMessenger {
 public:
  virtual void Send(const char* linkType, const char* linkName, char function, char severity,
                    const char* text);
  virtual ~CMessenger() = default;

  CMessenger() = default;
  CMessenger(const CMessenger&) = default;
  CMessenger& operator=(const CMessenger&) = default;

  // What Send does with a Begin or an End (isEnd) that the filter drops: true, and the depth moved. False if
  // the filter lets the line through: nothing was done. Spares a link the call of Send.
  bool Drops(bool isEnd) {
    if (m_debugFilter) return false;
    if (isEnd && m_depth > 0) m_depth = m_depth - 1;
    return true;
  }

  // Non-zero shows the kind; debug is Begin and End.
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
  CRelaxed<int> m_depth = 0;  // of the indent; never below 0
};

// Two tallies of errors that a host may keep; no link touches them.
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
