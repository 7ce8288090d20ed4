#include <iterator>

#include "host/cli/command.h"

namespace vastra {
namespace {

constexpr CCommand kCommands[] = {
    {"demo", "Log from the built-in simulator, as a first example", "vastra demo --out my-logs", DeclareDemo},
    {"run", "Run a configuration: read, compute, log", "vastra run kiln.json --scans 100 --period 0",
     DeclareRun},
    {"watch", "Run a configuration and show its variables live", "vastra watch kiln.json --vars Temp,Items",
     DeclareWatch},
    {"status", "Show how the loggers of this machine are; exit status 0 if all are well",
     "vastra status kiln", DeclareStatus},
    {"messages", "Print the messages of a running logger", "vastra messages kiln --follow", DeclareMessages},
    {"check", "Check a configuration without contacting a PLC, and list the variables of each stage",
     "vastra check kiln.json", DeclareCheck},
    {"init", "Write a configuration to start a service from", "vastra init kiln --modbus 192.168.0.10",
     DeclareInit},
    {"import", "Write a configuration file from JSON", "vastra import kiln.json kiln.vst", DeclareImport},
    {"export", "Print a configuration as JSON", "vastra export kiln.vst > kiln.json", DeclareExport},
    {"report", "Print a configuration as a text report", "vastra report kiln.json", DeclareReport},
    {"inspect", "Show the variables, sample count and times of logs, and list the logs of folders",
     "vastra inspect demo-logs/all", DeclareInspect},
    {"convert",
     "Print a log as CSV, or the rows of logs and folders by time as CSV, lines of JSON or a database",
     "vastra convert demo-logs/all --from -7d --step 1m --vars Temp --out week.csv", DeclareConvert},
    {"eval", "Compile equations and run them on one sample", "vastra eval 'y = 2 * a;' --var a=1.5",
     DeclareEval},
    {"drivers", "List the driver modules, and why a file is not one", "vastra drivers", DeclareDrivers},
    {"probe", "Open a driver, read and write, without a configuration",
     "vastra probe 9001 --set text1=sine,counter --count 2 --reads 3", DeclareProbe},
    {"completion", "Print a script that completes commands, options and arguments in a shell",
     "vastra completion bash > ~/.local/share/bash-completion/completions/vastra", DeclareCompletion},
    {"man", "Write the manual pages of all commands to a folder", "vastra man pages", DeclareMan, true},
};

}  // namespace

std::span<const CCommand> Commands() { return kCommands; }

}  // namespace vastra
