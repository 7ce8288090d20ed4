// The assistant for a new logger, opened from the main window.
#include <QDir>

#include "host/desktop/main_window.h"
#include "host/desktop/new_logger_window.h"
#include "vastra/ui/text.h"

namespace vastra {

// The configuration that was written is opened; its logger is started and its equations are shown if the user
// wants that.
void CMainWindow::NewLogger() {
  if (HasOpenDialog() || !MayLoseChanges()) return;
  CNewLoggerWindow assistant(m_driverCaptions, FromScreen(QDir::homePath()), this);
  if (assistant.exec() != QDialog::Accepted) return;
  if (!Open(assistant.Path())) return;
  if (assistant.WantsToStart()) StartRun(true);
  if (assistant.WantsEquations()) ShowEquations("");
}

}  // namespace vastra
