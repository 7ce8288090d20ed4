// CDriverFactory finds the driver modules next to the host's executable and creates links that use
// them. The stages turn the stored ID of a node into an index and request a link; the screens list the
// drivers by name.
//
// The factory keeps no module loaded: its list, built once, contains copies. An index is from 0 to below the
// count.
#pragma once

#include "vastra/platform/array.h"
#include "vastra/platform/module.h"
#include "vastra/platform/singleton.h"
#include "vastra/plc/driver_config.h"

namespace vastra {

class CPlcLink;

class VASTRA_API CDriverFactory {
 public:
  struct CDriverInfo {
    int m_id;
    CString m_fileName;  // without the folder
    CString m_name;      // what users see
  };
  // A file with the name of a module that is not a driver, and the reason.
  struct CLeftOut {
    CString m_fileName;
    CString m_reason;
  };

  // The only factory. The first call loads each module once to query it, and makes the folder of the
  // executable the current directory of the process permanently: a host must make its paths absolute before.
  // There is no lock: the thread that builds the configuration makes the call.
  static CDriverFactory* Instance();
  virtual ~CDriverFactory() = default;

  int GetDriverCount() const { return m_drivers.GetSize(); }
  // Empty beyond the list.
  CString GetDriverName(int index) const;
  // -1 beyond the list.
  int GetDriverID(int index) const;
  // The first driver with this ID; -1 if there is none.
  int GetDriverIndex(int id) const;
  // A new link, owned by the caller; it keeps the driver's module loaded until it is deleted. Null beyond the
  // list and for a module that can no longer be loaded.
  CPlcLink* NewDriver(int index) const;
  // What the driver says about config before anything is opened: one sentence about a wrong setting, cut at
  // 2,000 bytes. Empty if config is right, and if the driver does not check.
  CString CheckConfig(int index, const DriverConfig& config) const;
  // The line that the node of config shares with other nodes of the driver; empty: a line of its own.
  CString LineOf(int index, const DriverConfig& config) const;

  // The folder that was searched, empty if the system did not report it; the drivers in it, in byte order of
  // the file names; and the files that were skipped.
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
  // The module of the driver, loaded: the caller frees it. Null as in NewDriver.
  HMODULE Load(int index) const;

  static SingletonSmartPtr<CDriverFactory> m_Instance;
};

}  // namespace vastra
