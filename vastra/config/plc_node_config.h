// CPlcNodeConfig: the settings of one PLC node. CInputConfig lists the nodes that are read, CPlcMultiConfig
// those that are written.
#pragma once

#include "vastra/core/scaler_config.h"
#include "vastra/plc/driver_config.h"

namespace vastra {

class VASTRA_API CPlcNodeConfig : public CObject {
  DECLARE_DYNAMIC(CPlcNodeConfig)
 public:
  using CObject::Serialize;
  void Serialize(CArchive& ar, UINT version);
  void Fields(CFieldWalk& walk);
  void WrittenFields(CFieldWalk& walk);  // the fields that a node that is written has, too
  void TextSerialize(CArchive& ar);      // the report, to an archive that stores

  CScalerConfig m_scaler;
  DriverConfig m_driver;
  CString m_nodeName;       // part of the names of the node's links
  CStringArray m_varNames;  // the names of the node's values, in value order
  // Of a node that is read; only a named form has them.
  EAbsent m_absent = EAbsent::fail;
  CString m_aliveVar;  // one more variable after m_varNames: 1 if the node has answered, else 0; empty: none

 private:
  void Fields(CFieldWalk& walk, bool hasAbsence);
};

}  // namespace vastra
