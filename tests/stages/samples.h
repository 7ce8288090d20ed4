// Names and samples for the tests of stages, and the content of the logs as text.
#pragma once

#include <gtest/gtest.h>

#include <sstream>

#include "tests/support/files.h"
#include "tests/support/names.h"
#include "tests/support/recorder.h"
#include "vastra/core/sample.h"
#include "vastra/platform/file_system.h"

namespace vastra {

// The equations of a text, which separates them with semicolons.
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

// For each CSV log in dir its sequence number and its rows, as integers: "00: 1/5 2/7|01: 3/8|".
inline std::string Logs(const CString& dir) {
  std::string all;
  for (const CFileEntry& file : ListFiles(dir, ".csv")) {
    all += file.m_name.Right(7).Left(2).Std() + ":";
    std::istringstream lines(ReadBytes(JoinPath(dir, file.m_name)));
    std::string line, field;
    std::getline(lines, line);
    while (std::getline(lines, line)) {
      std::istringstream fields(line);
      std::getline(fields, field, ',');
      for (char divider = ' '; std::getline(fields, field, ','); divider = '/')
        all += divider + field.substr(0, field.find('.'));
    }
    all += "|";
  }
  return all;
}

// A messenger, a directory, and UTC as the local time.
class CStageFixture : public testing::Test {
 protected:
  CStageFixture() {
    ::setenv("TZ", "UTC0", 1);
    ::tzset();
  }
  CRecorder m_recorder;
  CTempDir m_dir;
};

}  // namespace vastra
