// CDriverFactory finds the driver modules beside the host's executable and makes links on them. The stages
// turn the stored ID of a node into an index and ask for a link; the screens list the drivers by name.
//
// The factory keeps no module loaded: its list, built once, holds copies. An index is from 0 to below the
// count.
#pragma once

#include "vastra/platform/array.h"
#include "vastra/platform/singleton.h"

namespace vastra {

class CPlcLink;

class VASTRA_API CDriverFactory {
 public:
  struct CDriverInfo {
    int m_id;
    CString m_fileName;  // bare
    CString m_name;      // what users see
  };
  // A file that looks like a module and is no driver, and why.
  struct CLeftOut {
    CString m_fileName;
    CString m_reason;
  };

  // The one factory. The first call loads each module once to ask it, and makes the folder of the executable
  // the current directory of the process for good: a host makes its paths absolute first. There is no lock:
  // it comes from the thread that builds the configuration.
  static CDriverFactory* Instance();
  virtual ~CDriverFactory() = default;

  int GetDriverCount() const { return m_drivers.GetSize(); }
  // Empty beyond the list.
  CString GetDriverName(int index) const;
  // -1 beyond the list.
  int GetDriverID(int index) const;
  // The first driver with this ID; -1 if there is none.
  int GetDriverIndex(int id) const;
  // A new link, the caller's, which holds the driver's module until it is deleted. Null beyond the list and
  // for a module that no longer loads.
  CPlcLink* NewDriver(int index) const;

  // The folder searched, empty if the system did not tell; what was found there, in byte order of the file
  // names; and what was passed over.
  const CString& GetPath() const { return m_path; }
  const CArray<CDriverInfo, CDriverInfo>& GetDrivers() const { return m_drivers; }
  const CArray<CLeftOut>& GetLeftOut() const { return m_leftOut; }

 protected:
  CDriverFactory();

  CString m_path;
  CArray<CDriverInfo, CDriverInfo> m_drivers;
  CArray<CLeftOut> m_leftOut;

 private:
  void Examine(const CString& fileName);
  bool Has(int index) const { return index >= 0 && index < m_drivers.GetSize(); }

  static SingletonSmartPtr<CDriverFactory> m_Instance;
};

}  // namespace vastra
