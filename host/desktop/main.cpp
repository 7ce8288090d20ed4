// vastra-desktop, the host with windows.
#include <signal.h>

#include <QApplication>
#include <QCommandLineParser>
#include <QTimer>

#include <cstdio>
#include <cstdlib>

#include "host/common/driver_search.h"
#include "host/common/module_trial.h"
#include "host/common/shown_text.h"
#include "host/desktop/main_window.h"
#include "host/desktop/quit_signals.h"
#include "host/desktop/window_keys.h"
#include "vastra/plc/node_workers.h"
#include "vastra/ui/text.h"

namespace vastra {
namespace {

// The command line.
struct CRequest {
  CString file;               // a configuration
  std::vector<CString> logs;  // logs, journals and folders, for a chart
  bool start = false;
};

void Describe(QCommandLineParser& line) {
  line.setApplicationDescription("Logs samples from controllers and earlier logs, with live windows.");
  line.addHelpOption();
  line.addVersionOption();
  line.addPositionalArgument("FILE", "The configuration, as JSON or as a configuration file", "[FILE]");
  line.addPositionalArgument("PATH", "Logs, and folders of logs, to open a chart of", "[PATH...]");
  line.addOption({"start", "Start the logger at once"});
}

// Returns an exit status, or -1 to continue. Needs no display.
int ReadCommandLine(int argc, char** argv, CRequest& request) {
  const QCoreApplication application(argc, argv);
  QCoreApplication::setApplicationName("vastra-desktop");
  QCoreApplication::setApplicationVersion(VASTRA_VERSION);
  QCommandLineParser line;
  Describe(line);
  QString fault = line.parse(QCoreApplication::arguments()) ? QString() : line.errorText();
  QStringList files;
  std::vector<CString> logs;
  for (const QString& path : line.positionalArguments())
    IsChartPath(FromScreen(path)) ? logs.push_back(FromScreen(path)) : files.push_back(path);
  if (fault.isEmpty() && files.size() > 1) fault = "more than one FILE";
  if (!fault.isEmpty()) {
    std::fprintf(stderr, "vastra-desktop: command line: %s (see vastra-desktop --help)\n",
                 Printable(fault.toStdString()).c_str());
    return 2;
  }
  if (line.isSet("help")) return std::fputs(qPrintable(line.helpText()), stdout), 0;
  if (line.isSet("version")) return std::puts("vastra-desktop " VASTRA_VERSION), 0;
  request = {files.isEmpty() ? CString() : FromScreen(files.constFirst()), std::move(logs),
             line.isSet("start")};
  return -1;
}

void Follow(const CRequest& request, CMainWindow& window) {
  window.OpenLogs(request.logs);
  if (request.file.IsEmpty() && !request.logs.empty()) return;
  if (request.file.IsEmpty()) return window.OfferDemo();
  if (!window.Open(request.file)) return;
  if (request.start || window.WantsToStart()) window.Start();
}

int Main(int argc, char** argv) {
  ::signal(SIGPIPE, SIG_IGN);
  CRequest request;
  if (const int status = ReadCommandLine(argc, argv, request); status >= 0) return status;
  SearchDrivers({}, true);
  const QApplication application(argc, argv);
  QApplication::setApplicationName("Vastra");  // the title of message boxes
  QApplication::setQuitOnLastWindowClosed(false);
  CColours::UseChosen(CSettings());
  const CWindowKeys keys;
  CMainWindow window;
  const CQuitSignals stops([&window] { window.StopAndQuit(); });
  if (!request.file.IsEmpty() || request.logs.empty())
    window.show();  // else a chart is all that the user wants
  QTimer::singleShot(0, &window, [&] { Follow(request, window); });
  return QApplication::exec();
}

}  // namespace
}  // namespace vastra

int main(int argc, char** argv) {
  if (vastra::IsModuleTrial(argc, argv)) return vastra::RunModuleTrial(argv);
  const int status = vastra::Main(argc, argv);
  std::fflush(nullptr);
  if (vastra::CNodeWorkers::OverdueTasks() > 0) std::_Exit(status);  // a driver still runs in its module
  return status;
}
