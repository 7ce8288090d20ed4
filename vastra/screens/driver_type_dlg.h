// CDriverTypeDlg edits one PLC node: its driver and the driver's own settings, its name, its variables and
// their scaling. The caller fills the fields, runs it, and takes them back after OK.
#pragma once

#include "vastra/core/scaler_config.h"
#include "vastra/plc/driver_config.h"
#include "vastra/ui/dialog.h"

namespace vastra {

class CInputPage;
class CSmartPage;

class VASTRA_API CDriverTypeDlg : public CDialog {
 public:
  explicit CDriverTypeDlg(CWnd* parent = nullptr);

  enum EMode { readNode, writeNode };
  static constexpr UINT kNoDriver = 0xFFFFFFFF;

  // Of a node that is written: the pages that tell which variables it can have; null: none.
  CSmartPage* m_pSmartPage = nullptr;
  CInputPage* m_pInputPage = nullptr;
  int m_mode = readNode;
  CScalerConfig* m_pScaler = nullptr;  // the node's, written by OK
  CScalerConfig m_scaler;              // what the user works on
  CString m_oldName;                   // as it was when the dialog opened; of a new node empty
  CListBox* m_pNameList = nullptr;     // the names of the page's nodes, none of which may be taken
  DriverConfig m_driver;
  // The node's plcType. kNoDriver: no driver's dialog has been accepted for it so far. One that is accepted
  // leaves its index here, as a mark: the driver itself puts its ID in m_driver.
  UINT m_driverId = kNoDriver;
  CStringArray m_varNames;
  CString m_name;
  int m_driverIndex = -1;  // the driver that is selected

  // 1: takes the rows out of m_scaler that have lost their variable. 0: rebuilds the node's scaler, a row for
  // each variable, from m_scaler and from the defaults.
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
