// CPlcLink: the leaf link of all live data. It represents one PLC node, reached through one driver module:
// opened to read it returns samples, stamped with the clock; opened to write it sends samples to the PLC. It
// has no names; the CNamerLink that owns it supplies them and checks the length.
//
// A link that is never opened serves the screens: it shows the driver's configuration dialog.
//
// The link does not retry or reconnect. A call that fails leaves the link open with the same handle, and the
// next call asks the driver again.
#pragma once

#include <cstdlib>
#include <vector>

#include "vastra/core/link.h"
#include "vastra/platform/module.h"
#include "vastra/plc/driver_config.h"

namespace vastra {

class VASTRA_API CPlcLinkConfig : public CLinkConfig {
  DECLARE_DYNAMIC(CPlcLinkConfig)
 public:
  DriverConfig m_config;
  // 0: the link opens without calling the driver. It then only serves a chain that is asked for its names,
  // and its Read and Write fail as on a closed link.
  int m_useDriver = 1;
  // Null: a write sends all values. Else a value that is not finite is not sent, the node gets its last one
  // again, and Write sets the number to that of such values. Before each value was finite once, Write sends
  // nothing. A Warning reports both; the result is 1, since the node has answered.
  UINT* m_pNotFinite = nullptr;
};

class VASTRA_API CPlcLink : public CLink {
 public:
  ~CPlcLink() override;

  // Sends the first values of sample to the node, as many as the node has; refuses a shorter sample.
  int Write(CLogSample& sample) override;
  // Fills sample with the values of the node and the time after the driver's answer. On 0 sample is
  // unchanged.
  int Read(CLogSample& sample) override;
  int GetVarNames(CStringArray&) override { return 0; }
  int Comm(CLogSample&) override { return 0; }
  void Close() override;
  // A node has at most 16777216 values.
  int Open(CTypedPtrList<CObList, CLinkConfig*>& configs, UINT mode) override;

  // Shows the driver's dialog, modal, for a new node (1) or for that of SetConfig (0). IDOK, or IDCANCEL,
  // also if there is no dialog.
  int ShowConfig(int isNew);
  // The settings from the dialog. A driver without GetConfig: openState 100, the rest 0 and empty.
  DriverConfig GetConfig();
  // Passes the settings of an existing node to the driver for the next ShowConfig: 0, or -1 if the driver has
  // no SetConfig.
  int SetConfig(DriverConfig config);

 protected:
  friend class CDriverFactory;
  // Owns module, which the destructor unloads, and passes it the installed host. A module that is not a
  // driver results in a link that offers nothing.
  explicit CPlcLink(HMODULE module);

  struct CFree {
    void operator()(float* buffer) const { std::free(buffer); }
  };

  UINT m_count = 0;  // number of values of the node
  std::unique_ptr<float[], CFree>
      m_buffer;                  // m_count values of the current call; null unless open with the driver
  UINT* m_pNotFinite = nullptr;  // of the configuration
  std::vector<bool> m_isKnown;   // by value: m_buffer has a finite one; only with m_pNotFinite
  int m_handle = -1;             // the driver's; -1 unless open with the driver
  HMODULE m_module;
  DriverHeader m_header = {};
  const DriverFunctions* m_functions;  // the table of m_header, or one that offers nothing: never null
  int m_version;                       // of the driver interface that the module was written for
  DriverConfig m_given;                // the last settings that the driver got: owns their strings

 private:
  int OpenDriver(const DriverConfig& config, UINT mode);
  void CloseDriver();
  // Closes the driver's connection and frees the buffer, without a message; does nothing if the link is
  // closed.
  void Release();
  // Sends Begin and checks that the link is open with the driver: 1, or 0 after the report.
  int BeginTransfer(char function) const;
  // Copies the values to send to m_buffer. False: nothing can be sent. notFinite gets the index of the
  // first value that is not finite, if there is one.
  bool TakeValues(const float* values, int& notFinite);
  void WarnNotFinite(int index, const char* effect) const;
  // Reports a status other than statusOk and returns 0.
  int FailStatus(char function, int status) const;
};

}  // namespace vastra
