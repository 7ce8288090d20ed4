// The commands of this host: one row for each, from which the command line, its help and the dispatch come.
// To add a command, write its file, declare its function here and give it a row in commands.cpp.
#pragma once

#include <functional>
#include <span>

#include "host/cli/arguments.h"
#include "host/cli/exit.h"

namespace vastra {

using CAction = std::function<EExit()>;

struct CCommand {
  const char* name;
  const char* words;                // what it does
  const char* example;              // a line to type
  CAction (*declare)(CArguments&);  // declares its arguments; gives what to do when they have been read
};

std::span<const CCommand> Commands();

CAction DeclareDemo(CArguments& arguments);
CAction DeclareRun(CArguments& arguments);
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

}  // namespace vastra
