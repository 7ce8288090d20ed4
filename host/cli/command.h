// The commands of this host. The command line, its help and the dispatch use one table with a row for each.
// To add a command, write its file, add it to CMakeLists.txt, declare its function here and add a row to
// commands.cpp.
#pragma once

#include <functional>
#include <span>

#include "host/cli/arguments.h"
#include "host/cli/exit.h"

namespace vastra {

using CAction = std::function<EExit()>;

struct CCommand {
  const char* name;
  const char* help;                 // what it does
  const char* example;              // a line to type
  CAction (*declare)(CArguments&);  // declares its arguments; returns what to do after parsing
  bool isHidden = false;            // is neither in the help nor completed
};

std::span<const CCommand> Commands();

CAction DeclareDemo(CArguments& arguments);
CAction DeclareRun(CArguments& arguments);
CAction DeclareInit(CArguments& arguments);
CAction DeclareCheck(CArguments& arguments);
CAction DeclareImport(CArguments& arguments);
CAction DeclareExport(CArguments& arguments);
CAction DeclareReport(CArguments& arguments);
CAction DeclareInspect(CArguments& arguments);
CAction DeclareConvert(CArguments& arguments);
CAction DeclareEval(CArguments& arguments);
CAction DeclareDrivers(CArguments& arguments);
CAction DeclareProbe(CArguments& arguments);
CAction DeclareWatch(CArguments& arguments);
CAction DeclareCompletion(CArguments& arguments);
CAction DeclareMan(CArguments& arguments);
CAction DeclareStatus(CArguments& arguments);
CAction DeclareMessages(CArguments& arguments);

}  // namespace vastra
