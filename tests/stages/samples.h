// Names and samples of the tests of stages, and what came of them in the logs.
#pragma once

#include <sstream>

#include "tests/support/files.h"
#include "tests/support/names.h"
#include "vastra/core/sample.h"
#include "vastra/platform/file_system.h"

namespace vastra {

// The equations of a text, which ends each but the last with a semicolon.
inline CStringArray Equations(const char* text) {
  CStringArray equations;
  std::istringstream parts(text);
  for (std::string part; std::getline(parts, part, ';');) equations.Add(CString(part));
  return equations;
}

inline std::string Join(const CStringArray& names) {
  std::string all;
  for (const CString& name : names) all += (all.empty() ? "" : " ") + name.Std();
  return all;
}

inline CLogSample Sample(std::initializer_list<float> values, std::int32_t time = kStart) {
  CLogSample sample;
  sample.m_time.time = time;
  for (const float value : values) sample.m_values.Add(value);
  return sample;
}

// The values of sample, as integers.
inline std::string Values(const CLogSample& sample) {
  std::string all;
  for (const float value : sample.m_values)
    all += (all.empty() ? "" : " ") + std::to_string(static_cast<int>(value));
  return all;
}

// All values of a CSV line, as integers, joined.
inline std::string Row(const std::string& line) {
  std::string row, field;
  std::istringstream fields(line);
  std::getline(fields, field, ',');
  while (std::getline(fields, field, ',')) row += (row.empty() ? "" : "/") + field.substr(0, field.find('.'));
  return row;
}

// For each CSV log in dir its sequence number and its rows: "00: 1 2|01: 3|".
inline std::string Logs(const CString& dir) {
  std::string all;
  for (const CFileEntry& file : ListFiles(dir, ".csv")) {
    all += file.m_name.Right(7).Left(2).Std() + ":";
    std::istringstream lines(ReadBytes(JoinPath(dir, file.m_name)));
    std::string line;
    std::getline(lines, line);
    while (std::getline(lines, line)) all += " " + Row(line);
    all += "|";
  }
  return all;
}

}  // namespace vastra
