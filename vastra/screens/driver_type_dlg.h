// CDriverTypeDlg edits one PLC node: its driver and the driver's settings, its name, its variables and their
// scaling. The pages with nodes fill the public fields, run it and read them after OK.
#pragma once

#include "vastra/core/scaler_config.h"
#include "vastra/plc/driver_config.h"
#include "vastra/ui/dialog.h"

namespace vastra {

class CInputPage;
class CSmartPage;

class VASTRA_API CDriverTypeDlg : public CDialog {
 public:
  // hasAbsence: the dialog has the settings for a node that is away, too.
  explicit CDriverTypeDlg(CWnd* parent = nullptr, bool hasAbsence = false);

  enum EMode { readNode, writeNode };
  static constexpr UINT kNoDriver = 0xFFFFFFFF;

  // For a node that is written: the pages that provide its variables; null: none.
  CSmartPage* m_pSmartPage = nullptr;
  CInputPage* m_pInputPage = nullptr;
  int m_mode = readNode;
  CScalerConfig* m_pScaler = nullptr;  // the node's; OK writes it
  CScalerConfig m_scaler;              // the working copy
  CString m_oldName;                   // the name when the dialog opened; empty for a new node
  CListBox* m_pNameList = nullptr;     // the names of the page's nodes, which may not be used again
  DriverConfig m_driver;
  // The node's plcType. kNoDriver: the node is not configured yet. After an accepted driver dialog a new node
  // has the driver's index here. It only shows that the node is configured; the ID is in m_driver.plcType.
  UINT m_driverId = kNoDriver;
  CStringArray m_varNames;
  CString m_name;
  int m_driverIndex = -1;            // of the selected driver
  EAbsent m_absent = EAbsent::fail;  // as in CPlcNodeConfig
  CString m_aliveVar;
  const bool m_hasAbsence;

  // 1: removes the rows of m_scaler whose variable was removed. 0: rewrites the node's scaler with a row for
  // each variable, from m_scaler or with defaults.
  void UpdateScalers(int mode);

 protected:
  void OnInitDialog() override;
  void OnOK() override;

 private:
  void OnConfplcButton();
  void OnVariableList();
  void OnScalerButton();
  void OnSelchangeComboDriver() { ReadControls(); }
  void ReadControls();
  bool IsNameTaken() const;
  const char* Fault() const;
};

}  // namespace vastra
