#include "vastra/config/plc_node_config.h"

#include "vastra/config/stored_form.h"
#include "vastra/core/text_serializer.h"

namespace vastra {
namespace {

constexpr const char* kAbsentWords[] = {"fail", "nan", "hold"};  // indexed by EAbsent

// The settings of the driver, in the order of the stored form, which differs from DriverConfig.
struct CDriverFields {
  DriverConfig& driver;

  void Fields(CFieldWalk& walk) {
    walk.Field("cardNumber", driver.cardNumber);
    walk.Field("registerAddress", driver.registerAddress);
    walk.Field("registerAddressExt", driver.registerAddressExt);
    walk.Field("plcNodeAddress", driver.plcNodeAddress);
    walk.Field("timeOut", driver.timeOut);
    walk.Field("station", driver.station);
    walk.SizeOf("variableCount", "varNames", driver.variableCount);
    walk.Field("plcType", driver.plcType);
    walk.Field("openState", driver.openState);
    walk.Field("text1", driver.text1);
    walk.Field("text2", driver.text2);
    walk.Field("value1", driver.value1);
    walk.Field("value2", driver.value2);
    walk.Field("value3", driver.value3);
    walk.Field("value4", driver.value4);
    if (!walk.IsStream()) walk.Field("value5", driver.value5);
  }
};

}  // namespace

IMPLEMENT_DYNCREATE(CPlcNodeConfig, CObject)

void CPlcNodeConfig::Fields(CFieldWalk& walk) { Fields(walk, !walk.IsStream()); }

void CPlcNodeConfig::WrittenFields(CFieldWalk& walk) { Fields(walk, false); }

void CPlcNodeConfig::Fields(CFieldWalk& walk, bool hasAbsence) {
  CDriverFields driver = {m_driver};
  walk.Field("nodeName", m_nodeName);
  walk.Object("driver", driver);
  walk.Field("varNames", m_varNames);
  if (walk.IsStream() && walk.IsLoading()) m_absent = EAbsent::fail, m_aliveVar.Empty();
  if (hasAbsence) {
    int absent = static_cast<int>(m_absent);
    walk.Choice("absent", absent, kAbsentWords);
    m_absent = static_cast<EAbsent>(absent);
    walk.Field("aliveVar", m_aliveVar);
  }
  m_scaler.Fields(walk);
}

void CPlcNodeConfig::Serialize(CArchive& ar, UINT version) { SerializeFields(*this, ar, version); }

void CPlcNodeConfig::TextSerialize(CArchive& ar) {
  if (!ar.IsStoring()) return;
  CTextReport report(ar);
  report.Add("*Node Name\r\n", m_nodeName, "\r\n\r\n");
  report.Add("*Configuration\r\n");
  report.Add("Card Number: ", report.Decimal(m_driver.cardNumber), "\r\n");
  report.Add("Register Address: ", report.Decimal(m_driver.registerAddress), "\r\n");
  report.Add("Register Address Ext: ", report.Decimal(m_driver.registerAddressExt), "\r\n");
  report.Add("Plc Node Address: ", report.Decimal(m_driver.plcNodeAddress), "\r\n");
  report.Add("Time Out: ", report.Decimal(m_driver.timeOut), "\r\n");
  report.Add("Station: ", report.Decimal(m_driver.station), "\r\n");
  report.Add("Plc Type: ", report.Decimal(m_driver.plcType), "\r\n");
  report.Add("\r\n");
  report.Add("*Preprocessing New Variables\r\n", m_varNames);
  m_scaler.TextSerialize(ar);
}

}  // namespace vastra
