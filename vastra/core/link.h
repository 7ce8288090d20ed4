// One step of a chain. A link owns the next one, its component; a stage calls the outermost link, and the
// innermost is a leaf that touches a PLC (CPlcLink) or log files (CFileLink).
//
// Threads: a link has no lock. One thread at a time uses a chain; the lock of the stage sees to that.
// Errors: 1 is success, 0 failure. The link that fails has then sent exactly one line to the messenger, so a
// caller adds its own line or passes the 0 on. No exception leaves a link.
#pragma once

#include <memory>

#include "vastra/core/messenger.h"
#include "vastra/core/sample.h"
#include "vastra/platform/list.h"

namespace vastra {

// The settings of one link, by its own derived class. A stage makes it, the link that takes it off the list
// deletes it.
class VASTRA_API CLinkConfig : public CObject {
  DECLARE_DYNAMIC(CLinkConfig)
};

// One object for each link of a chain, outermost first. What a list still holds when it goes is deleted with
// it.
class VASTRA_API CLinkConfigList : public CTypedPtrList<CObList, CLinkConfig*> {
 public:
  ~CLinkConfigList() { DeleteAll(*this); }
};

class VASTRA_API CLink : public CObject {
 public:
  static constexpr UINT modeNotOpened = 0;
  static constexpr UINT modeRead = 1;
  static constexpr UINT modeWrite = 2;

  // Hands one scan to the component, in a chain that is open to write. sample has a value for each name at
  // the outer side of this link, in the unit of the variable, and stays as it is (CScalerLink alone scales it
  // in place). On 0 the link stays open: the next call tries again.
  virtual int Write(CLogSample& sample) = 0;

  // Gives one scan: a value for each name that the link gives out, in that order, and the component's time
  // (UTC, the whole record). What sample held before does not matter. On 0 it holds nothing to rely on, and
  // the link stays open.
  virtual int Read(CLogSample& sample) = 0;

  // Sets names to those of the outer side of this link, in value order. Only on an open link; names stays as
  // it was on 0.
  virtual int GetVarNames(CStringArray& names) = 0;

  // Read or Write, whatever the chain was opened for; 0 in a leaf and on a closed link, without a line.
  virtual int Comm(CLogSample& sample);

  // Closes the component, then this link; harmless on a closed one. The chain stays whole and can be opened
  // again.
  virtual void Close() {}

  // Opens the component, then this link; an open link closes first.
  // configs  one object for each link of the chain, outermost first. The link takes its own off the head and
  // deletes
  //          it, after a failure too. What stays on the list is the caller's.
  // mode     modeRead or modeWrite, handed down unchanged.
  // On 0 the link is in modeNotOpened.
  virtual int Open(CTypedPtrList<CObList, CLinkConfig*>& configs, UINT mode) = 0;

  // Hands over the messenger of all links. It belongs to the host, comes before any other call to a link and
  // outlives all links.
  static void SetMessenger(CMessenger* messenger);

  CString m_name = "Not named";  // what messages call this link

 protected:
  // typeName is the class's own name, a static string.
  explicit CLink(const CString& typeName, CLink* component = nullptr)
      : m_pTypeName(&typeName), m_pComponent(component) {}

  void Send(char function, const CFault& fault) const {
    m_pMessenger->Send(*m_pTypeName, m_name, function, fault.severity, fault.text);
  }
  void Begin(char function) const {
    if (!Drops(false)) Send(function, {severityBegin, nullptr});
  }
  int End(char function) const {
    if (!Drops(true)) Send(function, {severityEnd, nullptr});
    return 1;
  }
  int Fail(char function, const CFault& fault) const { return Send(function, fault), 0; }

  // The first steps of every Open: Begin, and Close of a link that is open.
  void BeginOpen();
  // Takes the head off configs and gives it, if it is a wanted one. Otherwise it is deleted, the failure is
  // reported and null is the result. ifNull is the link's word for a null head.
  std::unique_ptr<CLinkConfig> TakeConfig(CTypedPtrList<CObList, CLinkConfig*>& configs,
                                          const CRuntimeClass& wanted, const CFault& ifNull) const;
  // All of GetVarNames for a link that knows its names.
  template <class Names>
  int GiveVarNames(const Names& own, CStringArray& names) const;

  static CMessenger* m_pMessenger;
  // The same, if it is no derived one, which would see every line. Else null.
  static CMessenger* m_pPlainMessenger;
  static bool Drops(bool isEnd) { return m_pPlainMessenger && m_pPlainMessenger->Drops(isEnd); }

  UINT m_mode = modeNotOpened;
  const CString* m_pTypeName;
  CLink* m_pComponent;  // owned by a link that has components, null in a leaf
};

// Failures that several links report in the same words.
namespace fault {
constexpr CFault notOpened = {severityFatal, "Linker is not opened."};
constexpr CFault noComponent = {severityFatal, "Linker does not have a component."};
constexpr CFault noConfigList = {severityFatal, "Invalid configuration list."};
constexpr CFault badConfig = {severityFatal, "Invalid configuration."};
constexpr CFault noConfig = {severityFatal, "No configuration given."};
constexpr CFault componentOpen = {severityError, "Could not open component."};
constexpr CFault componentRead = {severityError, "Could not read component."};
constexpr CFault componentWrite = {severityError, "Could not write to component."};
constexpr CFault componentNames = {severityError, "Could not get variable name list from component."};
}  // namespace fault

template <class Names>
int CLink::GiveVarNames(const Names& own, CStringArray& names) const {
  Begin(functionGetVarNames);
  if (m_mode == modeNotOpened) return Fail(functionGetVarNames, fault::notOpened);
  names.RemoveAll();
  for (const CString& name : own) names.Add(name);
  return End(functionGetVarNames);
}

// A link with one component, which it owns. It opens the component before itself; a derived link adds how it
// configures itself and what it does to a sample.
class VASTRA_API CComponentLink : public CLink {
 public:
  ~CComponentLink() override;
  void Close() override;
  int Open(CTypedPtrList<CObList, CLinkConfig*>& configs, UINT mode) override;

 protected:
  CComponentLink(const CString& typeName, CLink* component, const CRuntimeClass& configClass)
      : CLink(typeName, component), m_configClass(configClass) {}

  // The link's own step of Open, with the component open and config of the link's class. Null, or what
  // failed; the caller reports it.
  virtual const CFault* Configure(CLinkConfig& config, UINT mode) = 0;

  // The first steps of Read and Write: Begin, and the tests for a component and an open link. 1, or 0 after
  // the report.
  int BeginTransfer(char function, const CFault& ifNoComponent = fault::noComponent) const {
    Begin(function);
    if (m_pComponent && m_mode != modeNotOpened) [[likely]]
      return 1;
    return Fail(function, m_pComponent ? fault::notOpened : ifNoComponent);
  }

 private:
  const CRuntimeClass& m_configClass;
};

}  // namespace vastra
