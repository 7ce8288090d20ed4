// vastra-desktop, the host with windows.
#include <signal.h>

#include <QApplication>
#include <QCommandLineParser>

#include <cstdio>

#include "host/desktop/main_window.h"
#include "host/desktop/stop_signals.h"
#include "vastra/ui/text.h"

namespace vastra {
namespace {

void Describe(QCommandLineParser& line) {
  line.setApplicationDescription("Logs samples from controllers and earlier logs, with live windows.");
  line.addHelpOption();
  line.addVersionOption();
  line.addPositionalArgument("FILE", "The configuration, as JSON or as a configuration file", "[FILE]");
  line.addOption({"start", "Start the logger at once"});
}

int Main(int argc, char** argv) {
  ::signal(SIGPIPE, SIG_IGN);
  const QApplication application(argc, argv);
  QApplication::setApplicationName("vastra-desktop");
  QApplication::setApplicationVersion(VASTRA_VERSION);
  QApplication::setQuitOnLastWindowClosed(false);
  QCommandLineParser line;
  Describe(line);
  line.process(application);
  if (line.positionalArguments().size() > 1) {
    std::fprintf(stderr,
                 "vastra-desktop: command line: more than one FILE (vastra-desktop --help tells more)\n");
    return 2;
  }
  QApplication::setApplicationName("Vastra");  // what boxes are headed with
  CMainWindow window;
  const CStopSignals stops([&window] { window.StopAndQuit(); });
  window.show();
  if (!line.positionalArguments().isEmpty()) {
    const bool isOpen = window.Open(FromScreen(line.positionalArguments().constFirst()));
    if (isOpen && (line.isSet("start") || window.WantsToStart())) window.Start();
  }
  return QApplication::exec();
}

}  // namespace
}  // namespace vastra

int main(int argc, char** argv) { return vastra::Main(argc, argv); }
