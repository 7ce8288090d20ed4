// CPlcLink: the leaf link of all live data. It stands for one PLC node, reached through one driver module:
// open to read it gives samples and stamps them with the clock, open to write it sends samples to the PLC. It
// knows no names; a CNamerLink directly above gives them and guards the length.
//
// A link that is never opened carries the driver's configuration dialog for the screens.
//
// There is no retry and no reconnection here. A call that fails leaves the link open with the same handle,
// and the next one simply asks the driver again.
#pragma once

#include <cstdlib>

#include "vastra/core/link.h"
#include "vastra/platform/module.h"
#include "vastra/plc/driver_config.h"

namespace vastra {

class VASTRA_API CPlcLinkConfig : public CLinkConfig {
  DECLARE_DYNAMIC(CPlcLinkConfig)
 public:
  DriverConfig m_config;
  // 0: the link opens without touching the driver. It is then only good for being part of a chain that is
  // asked for its names, and its Read and Write fail as on a closed link.
  int m_useDriver = 1;
};

class VASTRA_API CPlcLink : public CLink {
 public:
  ~CPlcLink() override;

  // Sends the first values of sample to the node, as many as the node has; a shorter sample is refused.
  int Write(CLogSample& sample) override;
  // Gives sample the values of the node and the time behind the driver's answer. On 0 sample is as it was.
  int Read(CLogSample& sample) override;
  int GetVarNames(CStringArray&) override { return 0; }
  int Comm(CLogSample&) override { return 0; }
  void Close() override;
  // A node has at most 16777216 values.
  int Open(CTypedPtrList<CObList, CLinkConfig*>& configs, UINT mode) override;

  // The driver's dialog, modal, for a new node (1) or the one of SetConfig (0). IDOK, or IDCANCEL, also
  // without a dialog.
  int ShowConfig(int isNew);
  // What the dialog ended with. From a driver that cannot tell: openState 100, the rest 0 and empty.
  DriverConfig GetConfig();
  // Hands the settings of an existing node over for the next ShowConfig: 0, or -1 if the driver takes none.
  int SetConfig(DriverConfig config);

 protected:
  friend class CDriverFactory;
  // Takes over module, which the destructor unloads, and gives it the installed host. A module that is no
  // driver gives a link that offers nothing.
  explicit CPlcLink(HMODULE module);

  struct CFree {
    void operator()(float* buffer) const { std::free(buffer); }
  };

  UINT m_count = 0;                          // number of values of the node
  std::unique_ptr<float[], CFree> m_buffer;  // m_count values on their way; null unless open with the driver
  int m_handle = -1;                         // the driver's; -1 unless open with the driver
  HMODULE m_module;
  DriverHeader m_header = {};
  const DriverFunctions* m_functions;  // the table of m_header, or one that offers nothing: never null
  int m_version;                       // of the driver interface that the module was written for
  DriverConfig m_given;                // the last settings the driver got: keeps their texts for it

 private:
  int OpenDriver(const DriverConfig& config, UINT mode);
  void CloseDriver();
  // Gives back what an open link holds, without a line; harmless when it holds nothing.
  void Release();
  // Begin, and the test for a link that is open with the driver: 1, or 0 after the report.
  int BeginTransfer(char function) const;
  // Reports a status other than statusOk; gives 0.
  int FailStatus(char function, int status) const;
};

}  // namespace vastra
