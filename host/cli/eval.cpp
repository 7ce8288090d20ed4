// vastra eval: compiles equations and runs them on one sample, as an equator link does.
#include <charconv>
#include <limits>

#include "host/cli/command.h"
#include "host/cli/json_output.h"
#include "host/cli/number_text.h"
#include "host/cli/output.h"
#include "host/cli/terminal/terminal.h"
#include "host/common/shown_text.h"
#include "vastra/equations/equator.h"
#include "vastra/equations/separator.h"

namespace vastra {
namespace {

// The input of the command and its results.
struct CEvaluation {
  CStringArray names;  // of the sample
  CArray<float, float> sample;
  CStringArray statements;
  CArray<int, int> positions;
  CEquator equator;
  CArray<double, double> results;  // of the last pass, by statement
};

// Adds NAME=VALUE to the sample; false for anything else.
bool AddInput(const CString& text, CEvaluation& evaluation) {
  const int sign = text.Find('=');
  if (sign < 1) return false;
  const CString number = text.Mid(sign + 1);
  const char* const end = number.View().data() + number.GetLength();
  double value = 0;
  const auto [rest, fault] = std::from_chars(number.View().data(), end, value);
  if (fault != std::errc() || rest != end) return false;
  evaluation.names.Add(text.Left(sign));
  evaluation.sample.Add(static_cast<float>(value));
  return true;
}

bool IsUndefined(const CEvaluation& evaluation, int statement) {
  const std::vector<int>& undefined = evaluation.equator.GetUndefined();
  return std::find(undefined.begin(), undefined.end(), statement) != undefined.end();
}

CJson CodeOf(const CExecutionStruct& statement) {
  CJson code = CJson::array();
  for (const CFlatLine& line : FlatLines(*statement.GetHead()))
    code.push_back(
        {line.code, ToJson(line.op1), ToJson(line.op2), line.jump < 0 ? CJson() : CJson(line.jump)});
  return code;
}

CJson StatementsOf(const CEvaluation& evaluation) {
  CJson statements = CJson::array();
  for (int i = 0; i < evaluation.equator.GetCount(); ++i)
    statements.push_back(
        {{"text", ToJson(evaluation.statements[i])},
         {"variable", ToJson(evaluation.equator.GetTarget(i))},
         {"code", CodeOf(evaluation.equator.GetCode(i))},
         {"result", IsUndefined(evaluation, i) ? CJson("undefined") : ToJson(evaluation.results[i])}});
  return statements;
}

// A name that is both an input and assigned is the input.
CJson ValuesOf(const CEvaluation& evaluation) {
  CJson values = CJson::object();
  CStringArray names = evaluation.names;
  names.Append(evaluation.equator.GetNewVariables());
  for (int i = 0; i < names.GetSize(); ++i)
    values.emplace(names[i].Std(),
                   ToJson(double{evaluation.equator.GetValue(evaluation.sample, static_cast<UINT>(i))}));
  return values;
}

EExit PrintEvaluation(const CEvaluation& evaluation) {
  return PrintJson({{"statements", StatementsOf(evaluation)},
                    {"positions", std::vector<int>(evaluation.positions.begin(), evaluation.positions.end())},
                    {"values", ValuesOf(evaluation)}});
}

// One line for each assigned variable.
std::vector<std::string> LinesOf(const CEvaluation& evaluation) {
  const CEquator& equator = evaluation.equator;
  std::vector<std::string> lines;
  for (int i = 0; i < equator.GetNewVariables().GetSize(); ++i) {
    const CString& name = equator.GetNewVariables()[i];
    const auto index = static_cast<UINT>(evaluation.names.GetSize() + i);
    int last = equator.GetCount() - 1;  // the statement that computed the value
    while (!(equator.GetTarget(last) == name)) --last;
    lines.push_back(name.Std() + " = " + ToText(equator.GetValue(evaluation.sample, index)) +
                    (IsUndefined(evaluation, last) ? " (undefined)" : ""));
  }
  return lines;
}

// Shows the message, the line with the fault, and a caret under its place.
EExit ReportFault(const CEquationFault& fault, const CString& statement) {
  CString place;
  place.Format("statement %d, offset %d: ", fault.statement, fault.offset);
  Fail(kFailed, "eval", place + fault.text);
  PrintPlace(statement, fault.offset);
  return kFailed;
}

EExit PrintFault(const CEquationFault& fault) {
  const EExit printed = PrintJson({{"error", {{"statement", fault.statement}, {"offset", fault.offset}}}});
  return printed == kDone ? kFailed : printed;
}

EExit Evaluate(const CString& text, const std::vector<CString>& inputs, std::int64_t passes, bool asJson) {
  CEvaluation evaluation;
  for (const CString& input : inputs)
    if (!AddInput(input, evaluation)) return Fail(kWrongUse, "eval", "--var " + input + " is not NAME=VALUE");
  CStringArray assigned;
  CEquationSeparator().Separate(text, evaluation.statements, assigned, evaluation.positions);
  const CEquationFault fault = evaluation.equator.Compile(evaluation.names, evaluation.statements);
  if (fault.statement)
    return asJson ? PrintFault(fault) : ReportFault(fault, evaluation.statements[fault.statement - 1]);
  while (passes-- > 0) evaluation.equator.RunByLines(evaluation.sample, evaluation.results);
  return asJson ? PrintEvaluation(evaluation) : PrintLines(LinesOf(evaluation));
}

}  // namespace

CAction DeclareEval(CArguments& arguments) {
  const auto text = arguments.Text("TEXT", "Equations, such as \"y = 2 * a; z = y + 1;\"");
  const auto inputs =
      arguments.Texts("--var", "NAME=VALUE", "Adds a variable to the sample; can be repeated");
  const auto passes = arguments.Number("--passes", "N", "Run N times; variables keep their values", 1,
                                       std::numeric_limits<std::int64_t>::max());
  const auto asJson = arguments.Flag("--json", "Print code, results and values as one object");
  return [=] { return Evaluate(*text, *inputs, passes->value_or(1), *asJson); };
}

}  // namespace vastra
