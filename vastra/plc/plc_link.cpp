#include "vastra/plc/plc_link.h"

#include <algorithm>
#include <cmath>

#include "vastra/platform/prompt.h"
#include "vastra/plc/driver_call.h"
#include "vastra/plc/driver_failure.h"
#include "vastra/plc/driver_host.h"

namespace vastra {

IMPLEMENT_DYNAMIC(CPlcLinkConfig, CLinkConfig)

namespace {

const CString kPlcTypeName = "CPlcLink";
constexpr DriverFunctions kOffersNothing = {};
constexpr int kConfigUnknown = 100;  // openState of a record that does not come from a driver

// More values than any node has. A system that overcommits memory would grant much more, and a wrong count in
// a configuration is usually far larger.
constexpr UINT kMostValues = 1u << 24;

constexpr CFault kNoVariables = {severityFatal, "Plc has no variables."};
constexpr CFault kNoOpen = {severityFatal, "Couldn't open driver."};
constexpr CFault kNoBuffer = {severityFatal, "Couldn't allocate memory."};
constexpr CFault kNoRead = {severityFatal, "Read function not found in driver."};
constexpr CFault kPlcNoWrite = {severityFatal, "Write function not found in driver."};
constexpr CFault kShortSample = {severityError, "Sample is not valid."};
constexpr CFault kUnknownInOpen = {severityFatal, "Unknown error."};
constexpr CFault kUnknown = {severityError, "Unknown error."};

int DriverMode(UINT mode) {
  if (mode == CLink::modeRead) return driverModeRead;
  return mode == CLink::modeWrite ? driverModeWrite : driverModeOther;
}

}  // namespace

CPlcLink::CPlcLink(HMODULE module) : CLink(kPlcTypeName), m_module(module), m_version(AskVersion(module)) {
  AskHeader(module, m_header);
  GiveHost(module, InstalledDriverHost());
  m_functions = m_header.functions ? m_header.functions : &kOffersNothing;
}

CPlcLink::~CPlcLink() {
  CPlcLink::Close();
  FreeModule(m_module);
}

int CPlcLink::Open(CTypedPtrList<CObList, CLinkConfig*>& configs, UINT mode) {
  BeginOpen();
  Release();  // in some modes the driver is open although the link does not count as open
  const std::unique_ptr<CLinkConfig> taken =
      TakeConfig(configs, RUNTIME_CLASS(CPlcLinkConfig), fault::noConfig);
  if (!taken) return 0;
  const auto& config = static_cast<const CPlcLinkConfig&>(*taken);
  if (config.m_config.variableCount == 0) return Fail(functionOpen, kNoVariables);
  m_count = config.m_config.variableCount;
  m_pNotFinite = config.m_pNotFinite;
  m_isKnown.assign(m_pNotFinite && m_count <= kMostValues ? m_count : 0, false);
  if (config.m_useDriver && !OpenDriver(config.m_config, mode)) return 0;
  m_mode = mode;
  return End(functionOpen);
}

int CPlcLink::OpenDriver(const DriverConfig& config, UINT mode) {
  if (!m_functions->Open) return Fail(functionOpen, kNoOpen);
  m_given = config;
  m_given.openState = 0;
  const int status =
      AskDriver(kThrew, [&] { return m_functions->Open(ToRecord(m_given), DriverMode(mode), &m_handle); });
  if (status != statusOk) {
    FailStatus(functionOpen, status);
    m_handle = -1;
    return 0;
  }
  if (m_count <= kMostValues) m_buffer.reset(static_cast<float*>(std::calloc(m_count, sizeof(float))));
  if (m_buffer) return 1;
  CloseDriver();
  return Fail(functionOpen, kNoBuffer);
}

void CPlcLink::CloseDriver() {
  if (m_version >= kVersionWithClose && m_functions->Close)
    AskDriver(0, [&] { return m_functions->Close(m_handle), 0; });
  m_handle = -1;
}

void CPlcLink::Release() {
  if (m_buffer) CloseDriver();
  m_buffer.reset();
}

void CPlcLink::Close() {
  Begin(functionClose);
  Release();
  m_mode = modeNotOpened;
  End(functionClose);
}

int CPlcLink::BeginTransfer(char function) const {
  Begin(function);
  return m_mode != modeNotOpened && m_buffer ? 1 : Fail(function, fault::notOpened);
}

int CPlcLink::Read(CLogSample& sample) {
  if (!BeginTransfer(functionRead)) return 0;
  if (!m_functions->Read) return Fail(functionRead, kNoRead);
  const int count = static_cast<int>(m_count);
  const int status = AskDriver(kThrew, [&] { return m_functions->Read(m_buffer.get(), count, m_handle); });
  if (status != statusOk) return FailStatus(functionRead, status);
  sample.m_values.SetSize(count);
  std::copy_n(m_buffer.get(), count, sample.m_values.GetData());
  _ftime(sample.m_time);
  return End(functionRead);
}

int CPlcLink::Write(CLogSample& sample) {
  if (!BeginTransfer(functionWrite)) return 0;
  const int count = static_cast<int>(m_count);
  if (sample.m_values.GetSize() < count) return Fail(functionWrite, kShortSample);
  int notFinite = -1;
  const bool canSend = TakeValues(sample.m_values.GetData(), notFinite);
  if (!m_functions->Write) return Fail(functionWrite, kPlcNoWrite);
  if (!canSend) return WarnNotFinite(notFinite, "nothing is written"), 1;
  const int status = AskDriver(kThrew, [&] { return m_functions->Write(m_buffer.get(), count, m_handle); });
  if (status != statusOk) return FailStatus(functionWrite, status);
  if (notFinite < 0) return End(functionWrite);
  return WarnNotFinite(notFinite, "the last one is written again"), 1;
}

bool CPlcLink::TakeValues(const float* values, int& notFinite) {
  if (!m_pNotFinite) return std::copy_n(values, m_count, m_buffer.get()), true;
  bool canSend = true;
  *m_pNotFinite = 0;
  for (UINT i = 0; i < m_count; ++i) {
    if (std::isfinite(values[i])) {
      m_buffer[i] = values[i];
      m_isKnown[i] = true;
    } else {
      if ((*m_pNotFinite)++ == 0) notFinite = static_cast<int>(i);
      canSend = canSend && m_isKnown[i];
    }
  }
  return canSend;
}

void CPlcLink::WarnNotFinite(int index, const char* effect) const {
  CString line;
  line.Format("value %d is not finite: %s", index + 1, effect);
  Send(functionWrite, {severityWarning, line});
}

int CPlcLink::FailStatus(char function, int status) const {
  const bool isOpen = function == functionOpen;
  CFault failure = isOpen ? kUnknownInOpen : kUnknown;
  const CDriverFailure* row = FindFailure(status);
  if (!row) return Fail(function, failure);
  if (const char* text = isOpen ? row->open : row->transfer; *text)
    failure = {isOpen || row->isFatal ? severityFatal : severityError, text};
  if (row->text && m_functions->*row->text) {
    const char* text = AskDriver<const char*>(nullptr, [&] { return (m_functions->*row->text)(m_handle); });
    if (text) failure.text = text;
  }
  return Fail(function, failure);
}

int CPlcLink::ShowConfig(int isNew) {
  if (!m_functions->ShowConfig) return IDCANCEL;
  return AskDriver(0, [&] { return m_functions->ShowConfig(isNew); }) == 1 ? IDOK : IDCANCEL;
}

DriverConfig CPlcLink::GetConfig() {
  DriverConfig none;
  none.openState = kConfigUnknown;
  if (!m_functions->GetConfig) return none;
  return AskDriver(none, [&] { return FromRecord(m_functions->GetConfig()); });
}

int CPlcLink::SetConfig(DriverConfig config) {
  if (!m_functions->SetConfig) return -1;
  m_given = std::move(config);
  AskDriver(0, [&] { return m_functions->SetConfig(ToRecord(m_given)), 0; });
  return 0;
}

}  // namespace vastra
