#include <algorithm>
#include <set>

#include "host/web/history_answers.h"
#include "host/web/json_append.h"
#include "host/web/log_ids.h"
#include "vastra/history/buckets.h"

namespace vastra {
namespace {

constexpr std::int64_t kMostRows = 100'000, kMostParts = 10'000;
// An answer takes about ten bytes for a value.
constexpr std::size_t kMostRowValues = 1'000'000;
constexpr std::size_t kMostBuckets = 200'000;
constexpr std::size_t kMostStretches = 1'000'000, kMostGaps = 100'000;
constexpr std::int64_t kMostLonger = std::int64_t{1000} * 3600 * 24 * 36'525;  // a century
constexpr std::uint64_t kRowsBetweenLooksAtStop = 256;

void NeedTime(const CHistoryRequest& request) {
  if (request.isStopped && request.isStopped()) throw CWebRefusal{503, "the answer has taken too long"};
}

CMomentRange RangeOfRequest(const CHistoryRequest& request) {
  return ReadRange(request.query, RangeOf(*request.logs));
}

// Those that were asked for, or all that the logs of the range have.
std::vector<CString> VariablesOf(const CHistoryRequest& request, const CMomentRange& range) {
  std::vector<CString> names = AskedVariables(request);
  if (!names.empty()) return names;
  names = NamesOf(*request.logs, range);
  if (names.size() <= kMostWebVariables) return names;
  throw CWebRefusal{400, "vars: must name some of the " + std::to_string(names.size()) +
                             " variables, at most " + std::to_string(kMostWebVariables)};
}

// The logs that could not be read any more, whose rows are missing.
void AppendFaults(std::string& text, const std::vector<CHistoryFault>& faults) {
  text += ",\"faults\":[";
  for (const CHistoryFault& fault : faults) {
    AppendComma(text);
    AppendText(text, std::string(FilePart(fault.path)) + ": " + fault.fault.Std());
  }
  text += ']';
}

void AppendRow(std::string& text, const CHistoryRow& row, std::size_t columns) {
  text += '[';
  AppendWhole(text, row.moment);
  for (std::size_t i = 0; i < columns; ++i) {
    text += ',';
    float value;
    if (row.Get(i, value))
      AppendValue(text, value);
    else
      text += "null";
  }
  text += ']';
}

// The lists of one variable, each without its brackets.
struct CBucketLists {
  std::string least, greatest, mean, first, last;

  void Add(const CBucket& bucket) {
    Add(bucket, least, bucket.least);
    Add(bucket, greatest, bucket.greatest);
    Add(bucket, mean, static_cast<float>(bucket.Mean()));  // as many digits as the values have
    Add(bucket, first, bucket.first);
    Add(bucket, last, bucket.last);
  }

 private:
  static void Add(const CBucket& bucket, std::string& list, float number) {
    AppendComma(list);
    if (bucket.values)
      AppendValue(list, number);
    else
      list += "null";
  }
};

void AppendLists(std::string& text, const CString& name, CBucketLists& lists) {
  text += "{\"name\":";
  AppendText(text, name.View());
  const std::pair<const char*, std::string*> fields[] = {{"least", &lists.least},
                                                         {"greatest", &lists.greatest},
                                                         {"mean", &lists.mean},
                                                         {"first", &lists.first},
                                                         {"last", &lists.last}};
  for (const auto& [key, list] : fields) {
    text.append(",\"").append(key).append("\":[").append(*list) += ']';
    *list = {};  // frees the memory
  }
  text += '}';
}

std::uint64_t PartsOf(const CHistoryRequest& request, std::size_t variables) {
  const auto parts = static_cast<std::uint64_t>(ReadNumber(request.query, {"parts", 1, kMostParts, 1000}));
  if (parts * variables <= kMostBuckets) return parts;
  throw CWebRefusal{400, "parts: must be at most " + std::to_string(kMostBuckets / variables) + " for " +
                             std::to_string(variables) + " variables"};
}

}  // namespace

std::vector<CString> AskedVariables(const CHistoryRequest& request) {
  std::vector<CString> names = ReadVariables(request.query);
  std::vector<CString> known;
  for (CString& name : names) {
    if (name.View().find("\xEF\xBF\xBD") == std::string_view::npos) continue;
    if (known.empty()) known = NamesOf(*request.logs);
    const auto found = std::ranges::find_if(
        known, [&name](const CString& one) { return ValidUtf8(one.View()) == name.View(); });
    if (found != known.end()) name = *found;
  }
  return names;
}

CWebAnswer RangeAnswer(const CHistoryRequest& request) {
  const CMomentRange range = RangeOf(*request.logs);
  return JsonAnswer({{"from", range.from}, {"to", range.to}});
}

CWebAnswer VariablesAnswer(const CHistoryRequest& request) {
  std::string text = "{\"logger\":";
  AppendText(text, request.source.name);
  text += ",\"variables\":[";
  std::set<std::string> shown;  // what looks the same is there once
  for (const CString& name : NamesOf(*request.logs))
    if (shown.insert(ValidUtf8(name.View())).second) AppendVariable(text, name.View());
  return {.text = text + "]}\n"};
}

CWebAnswer RowsAnswer(const CHistoryRequest& request) {
  const CMomentRange range = RangeOfRequest(request);
  const std::int64_t limit = ReadNumber(request.query, {"limit", 1, kMostRows, 1000});
  CRowReader reader(*request.logs, {.range = range, .variables = VariablesOf(request, range)});
  const std::size_t columns = reader.Variables().size();
  const std::uint64_t most = std::min(static_cast<std::uint64_t>(limit),
                                      std::uint64_t{kMostRowValues / std::max<std::size_t>(columns, 1)});
  std::string text = "{\"variables\":[";
  for (const CString& name : reader.Variables()) {
    AppendComma(text);
    AppendText(text, name.View());
  }
  text += "],\"rows\":[";
  CHistoryRow row;
  bool isRow = reader.Next(row);
  for (std::uint64_t rows = 0; isRow && rows < most; isRow = reader.Next(row)) {
    if (rows++ % kRowsBetweenLooksAtStop == 0) NeedTime(request);
    AppendComma(text);
    AppendRow(text, row, columns);
  }
  text += isRow ? "],\"more\":true" : "],\"more\":false";
  AppendFaults(text, reader.Faults());
  return {.text = text + "}\n"};
}

CWebAnswer BucketsAnswer(const CHistoryRequest& request) {
  const CMomentRange range = RangeOfRequest(request);
  const std::vector<CString> names = VariablesOf(request, range);
  CBucketReader reader(*request.logs, {.range = range,
                                       .parts = PartsOf(request, std::max<std::size_t>(names.size(), 1)),
                                       .variables = names,
                                       .isStopped = request.isStopped});
  std::string text =
      "{\"from\":" + std::to_string(range.from) + ",\"to\":" + std::to_string(range.to) + ",\"times\":[";
  std::vector<CBucketLists> lists(names.size());
  for (CBucketPart part; reader.Next(part);) {
    AppendComma(text);
    AppendWhole(text, part.from);
    for (std::size_t i = 0; i < lists.size(); ++i) lists[i].Add(part.buckets[i]);
  }
  NeedTime(request);
  text += "],\"variables\":[";
  for (std::size_t i = 0; i < lists.size(); ++i) {
    AppendComma(text);
    AppendLists(text, names[i], lists[i]);
  }
  text += ']';
  AppendFaults(text, reader.Faults());
  return {.text = text + "}\n"};
}

CWebAnswer GapsAnswer(const CHistoryRequest& request) {
  const CMomentRange range = RangeOfRequest(request);
  const std::int64_t longer = ReadNumber(request.query, {"longer", 0, kMostLonger, 60'000});
  bool isTooMany = false;
  const std::vector<CGap> gaps = FindGaps(*request.logs, range, longer, [&](std::size_t stretches) {
    NeedTime(request);
    isTooMany = stretches > kMostStretches;
    return !isTooMany;
  });
  if (isTooMany || gaps.size() > kMostGaps)
    throw CWebRefusal{400, "longer: there are too many gaps; ask for longer ones, or for a shorter range"};
  std::string text = "{\"gaps\":[";
  for (const CGap& gap : gaps) {
    AppendComma(text);
    text += '[';
    AppendWhole(text, gap.from);
    text += ',';
    AppendWhole(text, gap.to);
    text += ']';
  }
  return {.text = text + "]}\n"};
}

}  // namespace vastra
