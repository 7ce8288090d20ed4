// vastra eval: compiles equations and runs them on one sample, the way an equator link does.
#include <charconv>
#include <limits>

#include "host/cli/command.h"
#include "host/cli/json_output.h"
#include "host/cli/number_text.h"
#include "host/cli/output.h"
#include "host/cli/terminal.h"
#include "host/common/shown_text.h"
#include "vastra/equations/equator.h"
#include "vastra/equations/separator.h"

namespace vastra {
namespace {

// What was asked for, and what came of it.
struct CEvaluation {
  CStringArray names;  // of the sample
  CArray<float, float> sample;
  CStringArray statements;
  CArray<int, int> positions;
  CEquator equator;
  CArray<double, double> results;  // of the last pass, by statement
};

// Takes NAME=VALUE into the sample; false for anything else.
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

// A name that is both input and assigned stands for the input.
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
std::string TextOf(const CEvaluation& evaluation) {
  const CEquator& equator = evaluation.equator;
  std::string text;
  for (int i = 0; i < equator.GetNewVariables().GetSize(); ++i) {
    const CString& name = equator.GetNewVariables()[i];
    const auto index = static_cast<UINT>(evaluation.names.GetSize() + i);
    int last = equator.GetCount() - 1;  // the statement that gave the value
    while (!(equator.GetTarget(last) == name)) --last;
    text += name.Std() + " = " + ToText(equator.GetValue(evaluation.sample, index)) +
            (IsUndefined(evaluation, last) ? " (undefined)\n" : "\n");
  }
  return text;
}

// The part of the line round the offset that a screen line can show, from begin to end.
struct CExcerpt {
  std::size_t begin = 0;
  std::size_t end = 0;
};

CExcerpt ExcerptOf(std::string_view text, std::size_t offset) {
  constexpr std::size_t kSide = 60;  // bytes at most before the offset, and from it on
  CExcerpt part;
  part.begin = text.substr(0, offset).find_last_of("\r\n") + 1;
  part.end = std::min(text.find_first_of("\r\n", offset), text.size());
  if (offset - part.begin > kSide)
    for (part.begin = offset - kSide; part.begin < offset && IsInsideCharacter(text[part.begin]);)
      ++part.begin;
  if (part.end - offset > kSide)
    for (part.end = offset + kSide; part.end > offset && IsInsideCharacter(text[part.end]);) --part.end;
  return part;
}

// Blanks as wide as text is on the screen.
std::string BlanksFor(std::string_view text) {
  std::string blanks;
  for (const char c : text)
    if (!IsInsideCharacter(c)) blanks += c == '\t' ? '\t' : ' ';
  return blanks;
}

// Tells of the fault, with the line that it stands in and a caret under its place.
EExit TellFault(const CEquationFault& fault, const CString& statement) {
  CString place;
  place.Format("statement %d, offset %d: ", fault.statement, fault.offset);
  Fail(kFailed, "eval", place + fault.text);
  const std::string_view text = statement.View();
  const auto offset = static_cast<std::size_t>(fault.offset);
  const CExcerpt part = ExcerptOf(text, offset);
  CTerminal::Instance().Line(CString(Printable(text.substr(part.begin, part.end - part.begin))));
  CTerminal::Instance().Line(CString(BlanksFor(text.substr(part.begin, offset - part.begin)) + "^"));
  return kFailed;
}

EExit PrintFault(const CEquationFault& fault) {
  const EExit printed = PrintJson({{"error", {{"statement", fault.statement}, {"offset", fault.offset}}}});
  return printed == kDone ? kFailed : printed;
}

EExit Evaluate(const CString& text, const std::vector<CString>& inputs, std::int64_t passes, bool asJson) {
  CEvaluation evaluation;
  for (const CString& input : inputs)
    if (!AddInput(input, evaluation)) return Fail(kWrongUse, "eval", "--var " + input + ": is no NAME=VALUE");
  CStringArray assigned;
  CEquationSeparator().Separate(text, evaluation.statements, assigned, evaluation.positions);
  const CEquationFault fault = evaluation.equator.Compile(evaluation.names, evaluation.statements);
  if (fault.statement)
    return asJson ? PrintFault(fault) : TellFault(fault, evaluation.statements[fault.statement - 1]);
  while (passes-- > 0) evaluation.equator.RunByLines(evaluation.sample, evaluation.results);
  return asJson ? PrintEvaluation(evaluation) : PrintData(TextOf(evaluation));
}

}  // namespace

CAction DeclareEval(CArguments& arguments) {
  const auto text = arguments.Text("TEXT", "Equations, such as \"y = 2 * a; z = y + 1;\"");
  const auto inputs = arguments.Texts("--var", "NAME=VALUE", "A value of the sample; may come again");
  const auto passes = arguments.Number("--passes", "N", "Run so many times; variables keep their values", 1,
                                       std::numeric_limits<std::int64_t>::max());
  const auto asJson = arguments.Flag("--json", "Print code, results and values as one object");
  return [=] { return Evaluate(*text, *inputs, passes->value_or(1), *asJson); };
}

}  // namespace vastra
