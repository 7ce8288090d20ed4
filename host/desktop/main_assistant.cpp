// The assistant for a new logger, opened from the main window.
#include <QDir>

#include "host/desktop/main_window.h"
#include "host/desktop/new_logger_window.h"
#include "vastra/ui/text.h"

namespace vastra {

// The configuration that was written is opened, and its logger is started if the user wants that.
void CMainWindow::NewLogger() {
  if (HasOpenDialog() || !MayLoseChanges()) return;
  CNewLoggerWindow assistant(m_driverCaptions, FromScreen(QDir::homePath()), this);
  if (assistant.exec() != QDialog::Accepted) return;
  if (Open(assistant.Path()) && assistant.WantsToStart()) StartRun(true);
}

}  // namespace vastra
