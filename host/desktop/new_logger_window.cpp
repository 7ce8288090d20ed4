#include "host/desktop/new_logger_window.h"

#include <QCheckBox>
#include <QGuiApplication>
#include <QScreen>

#include "host/desktop/new_logger_pages.h"

namespace vastra {

CNewLoggerWindow::CNewLoggerWindow(CDriverCaptions& captions, const CString& home, QWidget* parent)
    : QWizard(parent), m_logger{captions, {}} {
  setWindowTitle("New Logger");
  setWizardStyle(QWizard::ClassicStyle);
  setOptions(QWizard::NoBackButtonOnStartPage | QWizard::NoBackButtonOnLastPage |
             QWizard::NoCancelButtonOnLastPage);
  setButtonText(QWizard::CommitButton, "&Write");
  addPage(new CDevicePage(m_logger));
  addPage(new CVariablesPage(m_logger));
  addPage(new CLogsPage(m_logger));
  addPage(new CNewSummaryPage(m_logger));
  addPage(new CWritePage(m_logger, home));
  auto* written = new CWrittenPage(m_logger);
  m_start = written->StartBox();
  m_equations = written->EquationsBox();
  addPage(written);
  const QSize screen = QGuiApplication::primaryScreen()->availableSize();
  resize(QSize(fontMetrics().averageCharWidth() * 110, fontMetrics().height() * 30).boundedTo(screen * 0.9));
}

bool CNewLoggerWindow::WantsToStart() const { return m_start->isChecked(); }

bool CNewLoggerWindow::WantsEquations() const { return m_equations->isChecked(); }

}  // namespace vastra
