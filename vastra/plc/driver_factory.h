// CDriverFactory finds the driver modules next to the host's executable, and in the folders that the host
// adds, and creates links that use them. The stages turn the stored ID of a node into an index and request a
// link; the screens list the drivers by name.
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

// A file with the name of a module: a driver, or left out for a reason.
struct CModuleFile {
  CString m_fileName = {};  // without the folder
  CString m_folder = {};    // absolute
  CString m_reason = {};    // why the file is left out; empty for a driver
  int m_id = -1;            // the rest only for a driver
  CString m_name = {};      // what users see
  CString m_loadPath = {};  // by which it is loaded
};

// How the factory finds drivers.
struct CDriverSearch {
  CStringArray m_folders;  // absolute; searched after the folder of the executable
  // Examines the files: sets m_reason, or m_id, m_name and m_loadPath. A host whose drivers are not trusted
  // has its own function. Null: the factory loads each file to ask for its header.
  void (*m_examine)(CArray<CModuleFile>& files) = nullptr;
};

class VASTRA_API CDriverFactory {
 public:
  // For the first call of Instance; without it only the folder of the executable is searched.
  static void SetSearch(const CDriverSearch& search);

  // The only factory. The first call examines each module once, and makes the folder of the executable the
  // current directory of the process permanently: a host must make its paths absolute before. There is no
  // lock: the thread that builds the configuration makes the call.
  static CDriverFactory* Instance();
  // Has the next call of Instance search again, for modules that were installed since. Only while no stage is
  // being opened: indexes can change.
  static void SearchAgain();
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

  // The folder of the executable, empty if the system did not report it; all folders that were searched, that
  // one first; the drivers, by folder in the order of the search and then in byte order of the file names;
  // and the files that were left out. Of files with the same name in two folders the second one is left out.
  const CString& GetPath() const { return m_path; }
  const CStringArray& GetFolders() const { return m_folders; }
  const CArray<CModuleFile>& GetDrivers() const { return m_drivers; }
  const CArray<CModuleFile>& GetLeftOut() const { return m_leftOut; }

 protected:
  explicit CDriverFactory(const CDriverSearch& search);

  CString m_path;
  CStringArray m_folders;
  CArray<CModuleFile> m_drivers;
  CArray<CModuleFile> m_leftOut;

 private:
  void FindFiles(const CString& folder, CArray<CModuleFile>& files);
  bool Has(int index) const { return index >= 0 && index < m_drivers.GetSize(); }
  // The module of the driver, loaded: the caller frees it. Null as in NewDriver.
  HMODULE Load(int index) const;

  static SingletonSmartPtr<CDriverFactory> m_Instance;
};

}  // namespace vastra
