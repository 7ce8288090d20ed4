#include "vastra/logfiles/log_naming.h"

#include <algorithm>
#include <filesystem>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "vastra/logfiles/log_name.h"
#include "vastra/logfiles/stable_hash.h"
#include "vastra/platform/file_layer.h"
#include "vastra/platform/file_system.h"

namespace vastra {
namespace {

constexpr std::string_view kNameDigits = "0123456789";
constexpr int kHourNameLength = 10;  // YYMMDDHHnn

// The own names of a naming as an automaton: states, steps between them, and the states in which a name can
// end. The naming must exist as long as its pattern.
class CNamePattern {
 public:
  explicit CNamePattern(const CLogNaming& naming) {
    const int begin = AddText(0, naming.prefix.View());
    naming.ByTime() ? AddHour(begin) : AddValues(begin, naming.dwordName);
    AddRepeat();
  }

  bool Matches(std::string_view name) const {
    std::set<int> states = {0};
    for (const char& c : name) {
      std::set<int> next;
      for (const CStep& step : m_steps)
        if (states.count(step.from) && step.chars.find(c) != step.chars.npos) next.insert(step.to);
      states.swap(next);
    }
    return std::any_of(states.begin(), states.end(), [this](int state) { return IsEnd(state); });
  }

  // Whether a name matches both: makes the steps of both at the same time.
  bool Meets(const CNamePattern& other) const {
    std::set<std::pair<int, int>> found = {{0, 0}};
    std::vector<std::pair<int, int>> todo(found.begin(), found.end());
    while (!todo.empty()) {
      const auto [mine, its] = todo.back();
      todo.pop_back();
      if (IsEnd(mine) && other.IsEnd(its)) return true;
      for (const CStep& step : m_steps)
        for (const CStep& same : other.m_steps)
          if (step.from == mine && same.from == its &&
              step.chars.find_first_of(same.chars) != step.chars.npos &&
              found.insert({step.to, same.to}).second)
            todo.emplace_back(step.to, same.to);
    }
    return false;
  }

 private:
  // From a state to another with one of the characters.
  struct CStep {
    int from;
    std::string_view chars;
    int to;
  };

  int AddState() { return ++m_last; }
  int AddStep(int from, std::string_view chars) {
    m_steps.push_back({from, chars, AddState()});
    return m_last;
  }
  int AddText(int from, std::string_view text) {
    for (std::size_t i = 0; i < text.size(); ++i) from = AddStep(from, text.substr(i, 1));
    return from;
  }
  void AddHour(int from) {
    for (int i = 0; i < kHourNameLength; ++i) from = AddStep(from, kNameDigits);
    m_ends = {from};
  }
  void AddValues(int from, bool areTwo) {
    const int missing = AddText(from, kNoValueName);
    m_ends = AddNumber({from});
    if (areTwo)  // a sample without a second value has one number
      for (const int end : AddNumber(m_ends)) m_ends.push_back(end);
    m_ends.push_back(missing);
  }
  // A whole number as printf makes it, after each of the states from. Returns its ends.
  std::vector<int> AddNumber(const std::vector<int>& from) {
    const int minus = AddState(), zero = AddState(), more = AddState();
    for (const int state : from) {
      m_steps.push_back({state, "-", minus});
      m_steps.push_back({state, "0", zero});
      m_steps.push_back({state, kNameDigits.substr(1), more});
    }
    m_steps.push_back({minus, kNameDigits.substr(1), more});
    m_steps.push_back({more, kNameDigits, more});
    return {zero, more};
  }
  // Perhaps "~" and a number from 2 on.
  void AddRepeat() {
    const int mark = AddState(), one = AddState(), end = AddState();
    for (const int state : m_ends) m_steps.push_back({state, "~", mark});
    m_steps.push_back({mark, "1", one});
    m_steps.push_back({mark, kNameDigits.substr(2), end});
    for (const int state : {one, end}) m_steps.push_back({state, kNameDigits, end});
    m_ends.push_back(end);
  }

  bool IsEnd(int state) const { return std::find(m_ends.begin(), m_ends.end(), state) != m_ends.end(); }

  int m_last = 0;  // the state with the highest number; 0 is before the name
  std::vector<CStep> m_steps;
  std::vector<int> m_ends;
};

// The folder as an absolute path, without links as far as it exists.
CString RealFolder(const CString& folder) {
  std::error_code failed;
  const std::filesystem::path absolute = std::filesystem::absolute(folder.Std(), failed),
                              real = std::filesystem::weakly_canonical(absolute, failed),
                              path = failed ? absolute.lexically_normal() : real;
  return CString((path.has_filename() ? path : path.parent_path()).string());
}

bool IsSameFolder(const CString& a, const CString& b) {
  CFileStatus one, other;
  if (FileLayer().Stat(a, one) && FileLayer().Stat(b, other))
    return one.device == other.device && one.inode == other.inode;
  return RealFolder(a) == RealFolder(b);
}

bool HaveCommonForm(const CLogNaming& a, const CLogNaming& b) {
  return std::any_of(std::begin(kLogForms), std::end(kLogForms), [&](ELogForm form) {
    return a.Saves(form) && b.Saves(form) && a.EndingOf(form) == b.EndingOf(form);
  });
}

}  // namespace

bool CLogNaming::ByTime() const { return nameVariable == kNamedByTime; }

CString CLogNaming::EndingOf(ELogForm form) const {
  return form == ELogForm::binary ? extension : extension.Right(1) + ".csv";
}

CString CLogNaming::PathOf(const CString& name, ELogForm form) const {
  return JoinPath(directory, FileOf(name, form));
}

bool CLogNaming::IsOwnName(const CString& name) const { return CNamePattern(*this).Matches(name.View()); }

std::optional<COwnLog> CLogNaming::IsOwnFile(const CString& file) const {
  for (const ELogForm form : kLogForms) {
    const CString ending = EndingOf(form), name = file.Left(file.GetLength() - ending.GetLength());
    if (file == name + ending && IsOwnName(name)) return COwnLog{name, form};
  }
  return std::nullopt;
}

bool CanMeet(const CLogNaming& a, const CLogNaming& b) {
  return CanNamesMeet(a, b) && IsSameFolder(a.Folder(), b.Folder());
}

bool CanNamesMeet(const CLogNaming& a, const CLogNaming& b) {
  return HaveCommonForm(a, b) && CNamePattern(a).Meets(CNamePattern(b));
}

CString LogKey(const CString& kind, const CString& outputName, const CLogNaming& naming) {
  CStableHash hash;
  for (const CString& field : {kind, outputName, naming.nameVariable, CString(naming.dwordName ? "1" : "0"),
                               naming.prefix, naming.extension, RealFolder(naming.Folder())})
    hash.AddField(field.View());
  return hash.Text();
}

}  // namespace vastra
