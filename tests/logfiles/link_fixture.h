// Shared by the tests that write logs: a directory, and the messages that links send. Local time is UTC.
#pragma once

#include <gtest/gtest.h>

#include "tests/support/files.h"
#include "tests/support/names.h"
#include "tests/support/recorder.h"
#include "vastra/logfiles/file_link.h"
#include "vastra/logfiles/log_reader.h"
#include "vastra/platform/file_system.h"

namespace vastra {

inline CLogSample Sample(std::int32_t time, std::initializer_list<float> values) {
  CLogSample sample;
  sample.m_time.time = time;
  for (const float value : values) sample.m_values.Add(value);
  return sample;
}

inline std::string Written(const CStringArray& names, const CSampleStore& samples) {
  CLogWriter writer;
  writer.SetNames(names);
  CMemFile file;
  writer.Write(file, samples);
  return file.Bytes();
}

class CLogFixture : public testing::Test {
 protected:
  CLogFixture() {
    ::setenv("TZ", "UTC0", 1);
    ::tzset();
  }
  // The file names in a directory, in byte order, each after a blank.
  std::string Files(const char* directory = "") const {
    std::string all;
    for (const CFileEntry& file : ListFiles(m_dir / directory, "")) all += " " + file.m_name.Std();
    return all;
  }

  CRecorder m_recorder;
  CTempDir m_dir;
};

class CLinkFixture : public CLogFixture {
 protected:
  CLinkFixture() { NewLink(); }

  // Starts with an empty directory and a link that has written no log.
  void NewLink() {
    m_link.reset(CFileLink::Create(nullptr));
    m_link->m_name = "F";
    for (const CFileEntry& file : ListFiles(m_dir.Path(), "")) DeleteFile(m_dir / file.m_name);
  }

  // The settings of a writer of binary logs of Temp and Flow, named by time.
  std::unique_ptr<CFileConfig> Writer(UINT maxSamples = 1000, UINT maxLogs = 1000) const {
    auto config = std::make_unique<CFileConfig>();
    config->m_extension = ".rph";
    config->m_maxSamples = maxSamples;
    config->m_maxLogs = maxLogs;
    config->m_saveRp = 1;
    config->m_directory = m_dir.Path();
    config->m_varNames = Names({"Temp", "Flow"});
    config->m_nameVariable = "System Time";
    return config;
  }
  std::unique_ptr<CFileConfig> Buffer() const {
    auto config = Writer();
    config->m_bufferOnly = 1;
    return config;
  }
  int Open(std::unique_ptr<CLinkConfig> config, UINT mode = CLink::modeWrite) {
    CLinkConfigList configs;
    configs.AddHead(config.release());
    return m_link->Open(configs, mode);
  }
  int Write(std::int32_t time, std::initializer_list<float> values) {
    CLogSample sample = Sample(kStart + time, values);
    return m_link->Write(sample);
  }
  int Write(std::int32_t time) { return Write(time, {static_cast<float>(time), -0.5f}); }

  std::string Bytes(const char* name) const { return ReadBytes(m_dir / name); }
  // The times of the samples in a binary log, from kStart on, each after a blank; or the reader's fault.
  std::string Times(const char* name) const {
    CSampleStore samples;
    CLogReader log(samples);
    if (!log.Open(m_dir / name) || !log.ReadSamples()) return log.GetFault().Std();
    std::string times;
    for (CLogSample sample; !samples.IsEmpty(); times += " " + std::to_string(sample.m_time.time - kStart))
      samples.RemoveHead(sample);
    return times;
  }

  std::unique_ptr<CFileLink> m_link;
};

}  // namespace vastra
