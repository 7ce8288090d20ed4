// CNewLoggerWindow: the assistant for a first configuration. Its pages ask for the device, the variables, the
// logs and the summary, and the last one says what was written. It writes the configuration that the sheet
// edits.
#pragma once

#include <QWizard>

#include "host/desktop/device_test.h"
#include "host/desktop/driver_captions.h"
#include "host/desktop/new_logger_rules.h"

class QCheckBox;

namespace vastra {

// What the pages share.
struct CNewLogger {
  CDriverCaptions& captions;
  CLoggerPlan plan;
  CDeviceTest test = {};
};

class CNewLoggerWindow : public QWizard {
 public:
  // home: the folder in which the folder of the logger is suggested.
  CNewLoggerWindow(CDriverCaptions& captions, const CString& home, QWidget* parent);

  // After it was accepted: the configuration, and what the user wants to do with it.
  const CString& Path() const { return m_logger.plan.path; }
  bool WantsToStart() const;
  bool WantsEquations() const;

 private:
  CNewLogger m_logger;
  QCheckBox *m_start = nullptr, *m_equations = nullptr;
};

}  // namespace vastra
