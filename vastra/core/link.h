// One step of a chain. A link owns the next one, its component. A stage calls the outermost link; the
// innermost link is a leaf that accesses a PLC (CPlcLink) or log files (CFileLink). The outer side of a link
// is the side of its caller, the inner side that of its component.
//
// Threads: a link has no lock. One thread at a time uses a chain; the lock of the stage ensures that.
// Errors: 1 is success, 0 failure. A link that fails sends exactly one line to the messenger, so a caller
// adds its own line or returns the 0. No exception leaves a link.
#pragma once

#include <memory>

#include "vastra/core/messenger.h"
#include "vastra/core/sample.h"
#include "vastra/platform/list.h"

namespace vastra {

// The settings of one link, in its own derived class. A stage creates it; the link that removes it from the
// list deletes it.
class VASTRA_API CLinkConfig : public CObject {
  DECLARE_DYNAMIC(CLinkConfig)
};

// One object for each link of a chain, outermost first. The destructor deletes the objects still on the list.
class VASTRA_API CLinkConfigList : public CTypedPtrList<CObList, CLinkConfig*> {
 public:
  ~CLinkConfigList() { DeleteAll(*this); }
};

class VASTRA_API CLink : public CObject {
 public:
  static constexpr UINT modeNotOpened = 0;
  static constexpr UINT modeRead = 1;
  static constexpr UINT modeWrite = 2;

  // Writes one scan to the component, in a chain that is open for writing. sample has a value for each name
  // at the outer side of this link, in the unit of the variable. It is not changed, except by CScalerLink,
  // which scales it in place. On 0 the link stays open and the next call tries again.
  virtual int Write(CLogSample& sample) = 0;

  // Reads one scan: a value for each name at the outer side of this link, in that order, and the component's
  // time (UTC, the whole record). Replaces the contents of sample. On 0 they are undefined and the link stays
  // open.
  virtual int Read(CLogSample& sample) = 0;

  // Sets names to those of the outer side of this link, in value order. Only on an open link; on 0 names is
  // not changed.
  virtual int GetVarNames(CStringArray& names) = 0;

  // Read or Write, depending on the mode of the chain. Returns 0 in a leaf and on a closed link, without
  // sending a line.
  virtual int Comm(CLogSample& sample);

  // Closes the component, then this link; allowed on a closed link. The chain can be opened again.
  virtual void Close() {}

  // Opens the component, then this link; an open link closes first.
  // configs  one object for each link of the chain, outermost first. The link removes its own from the
  //          head and deletes it, also after a failure. The caller keeps the rest.
  // mode     modeRead or modeWrite, passed to the component unchanged.
  // On 0 the link is in modeNotOpened.
  virtual int Open(CTypedPtrList<CObList, CLinkConfig*>& configs, UINT mode) = 0;

  // Sets the messenger of all links. The host owns it, sets it before any other call to a link and keeps it
  // until the last link is destroyed.
  static void SetMessenger(CMessenger* messenger);

  CString m_name = "Not named";  // what messages call this link

 protected:
  // typeName is the class's own name, a static string.
  explicit CLink(const CString& typeName, CLink* component = nullptr)
      : m_pTypeName(&typeName), m_pComponent(component) {}

  // To the messenger, or to the record of a thread that has one.
  void Send(char function, const CFault& fault) const;
  void Begin(char function) const {
    if (!Drops(false)) Send(function, {severityBegin, nullptr});
  }
  int End(char function) const {
    if (!Drops(true)) Send(function, {severityEnd, nullptr});
    return 1;
  }
  int Fail(char function, const CFault& fault) const { return Send(function, fault), 0; }

  // The first steps of every Open: sends Begin and closes an open link.
  void BeginOpen();
  // Removes the head of configs and returns it if its class is wanted. Otherwise deletes it, reports the
  // failure (ifNull for a null head) and returns null.
  std::unique_ptr<CLinkConfig> TakeConfig(CTypedPtrList<CObList, CLinkConfig*>& configs,
                                          const CRuntimeClass& wanted, const CFault& ifNull) const;
  // GetVarNames for a link that has its own list of names.
  template <class Names>
  int GiveVarNames(const Names& own, CStringArray& names) const;

  static CMessenger* m_pMessenger;
  // The same if its class is CMessenger itself; null for a derived class, which receives every line.
  static CMessenger* m_pPlainMessenger;
  static bool Drops(bool isEnd) { return m_pPlainMessenger && m_pPlainMessenger->Drops(isEnd); }

  UINT m_mode = modeNotOpened;
  const CString* m_pTypeName;
  CLink* m_pComponent;  // owned by a link that has components, null in a leaf
};

// Failures that several links report with the same text.
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

// A link with one component, which it owns. It opens the component first. A derived link implements its
// configuration and the transfer of a sample.
class VASTRA_API CComponentLink : public CLink {
 public:
  ~CComponentLink() override;
  void Close() override;
  int Open(CTypedPtrList<CObList, CLinkConfig*>& configs, UINT mode) override;

 protected:
  CComponentLink(const CString& typeName, CLink* component, const CRuntimeClass& configClass)
      : CLink(typeName, component), m_configClass(configClass) {}

  // The derived link's part of Open. The component is open and config has the link's class. Returns null, or
  // the failure, which Open reports.
  virtual const CFault* Configure(CLinkConfig& config, UINT mode) = 0;

  // The first steps of Read and Write: sends Begin and checks for a component and an open link. Returns 1, or
  // 0 after it has reported the failure.
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
