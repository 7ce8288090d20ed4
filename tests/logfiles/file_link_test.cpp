// What the three uses of the file link have in common: opening, the buffer, and memory.
#include "vastra/logfiles/file_link.h"

#include <atomic>
#include <climits>
#include <cstdlib>
#include <new>

#include "tests/logfiles/link_fixture.h"
#include "vastra/core/name_config.h"
#include "vastra/logfiles/log_reader.h"

namespace {
std::atomic<long> g_allocations{0};
std::atomic<long> g_limit{LONG_MAX};  // the allocation with this number and all behind it fail
}  // namespace

void* operator new(std::size_t size) {
  if (g_allocations.fetch_add(1) >= g_limit) throw std::bad_alloc();
  if (void* memory = std::malloc(size ? size : 1)) return memory;
  throw std::bad_alloc();
}
// What asks so is given memory by malloc, too, that the deletes below can free it.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return g_allocations.fetch_add(1) >= g_limit ? nullptr : std::malloc(size ? size : 1);
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

namespace vastra {
namespace {

class FileLink : public CLinkFixture {
 protected:
  std::unique_ptr<CFileConfig> Buffer() const {
    auto config = std::make_unique<CFileConfig>();
    config->m_bufferOnly = 1;
    config->m_varNames = Names({"a", "b"});
    return config;
  }
};

TEST_F(FileLink, IsALeaf) {
  EXPECT_EQ(nullptr, CFileLink::Create(m_link.get()));
  CLogSample sample;
  m_recorder.Take();
  Open(Buffer());
  m_recorder.Take();
  EXPECT_EQ(0, m_link->Comm(sample));
  EXPECT_EQ("", m_recorder.Take());
}

TEST_F(FileLink, OpenSaysWhatIsWrongWithItsSettings) {
  const auto fault = [this](CLinkConfig* config, UINT mode = CLink::modeWrite) {
    CLinkConfigList configs;
    configs.AddHead(config);
    m_recorder.Take();
    EXPECT_FALSE(m_link->Open(configs, mode));
    EXPECT_TRUE(configs.IsEmpty());
    return m_recorder.TakeFaults();
  };
  const auto with = [this](CString CFileSettings::*field, const char* value, int bufferOnly = 0) {
    auto config = Writer();
    (*config).*field = value;
    config->m_bufferOnly = bufferOnly;
    return config.release();
  };
  const std::string noVariable =
      "Open Fatal F The variable used for naming the logs is not included in the logged variables\n\n";
  EXPECT_EQ("Open Fatal F No configuration given.\n", fault(nullptr));
  EXPECT_EQ("Open Fatal F Invalid configuration.\n", fault(new CNameConfig));
  EXPECT_EQ(noVariable, fault(with(&CFileSettings::m_nameVariable, "temp")));
  EXPECT_EQ(noVariable, fault(with(&CFileSettings::m_nameVariable, "temp", 1)));
  EXPECT_EQ(noVariable, fault(with(&CFileSettings::m_nameVariable, "temp", 1), CLink::modeRead));
  EXPECT_EQ("Open Fatal F There is a problem with the destination directory\n",
            fault(with(&CFileSettings::m_directory, "/no/such/directory")));
  CLinkConfigList none;
  EXPECT_FALSE(m_link->Open(none, CLink::modeWrite));
  EXPECT_EQ("Open Begin F\nOpen Fatal F Invalid configuration list.\n", m_recorder.Take());
  EXPECT_FALSE(m_link->Flush());
  EXPECT_TRUE(Open(std::unique_ptr<CFileConfig>(with(&CFileSettings::m_directory, "/no/such/directory", 1))));
}

TEST_F(FileLink, EveryOperationOfAClosedLinkSaysSo) {
  Open(Buffer());
  Write(1);
  m_link->Close();
  CLogSample sample;
  CStringArray names = Names({"kept"});
  float value = 7;
  m_recorder.Take();
  EXPECT_FALSE(m_link->Read(sample) || m_link->Write(sample) || m_link->Flush() ||
               m_link->GetVarNames(names));
  EXPECT_EQ(
      "Read Begin F\nRead Fatal F Linker is not opened.\nWrite Begin F\nWrite Fatal F Linker is not opened.\n"
      "Flush Begin F\nFlush Fatal F Linker is not opened.\n"
      "Get Variable Names Begin F\nGet Variable Names Fatal F Linker is not opened.\n",
      m_recorder.Take());
  EXPECT_EQ(Names({"kept"}), names);
  EXPECT_FALSE(m_link->ReadVariable(0, value) || m_link->WriteVariable(0, value));
  EXPECT_TRUE(m_link->PartialFlush());
}

TEST_F(FileLink, ReopeningClosesFirstAndDestructionCloses) {
  Open(Buffer());
  m_recorder.Take();
  Open(Buffer(), CLink::modeRead);
  EXPECT_EQ("Open Begin F\nClose Begin F\nClose End F\nOpen End F\n", m_recorder.Take());
  m_link.reset();
  EXPECT_EQ("Close Begin F\nClose End F\n", m_recorder.Take());
}

TEST_F(FileLink, ABufferHoldsOneSampleInEitherMode) {
  for (const UINT mode : {CLink::modeRead, CLink::modeWrite}) {
    NewLink();
    ASSERT_TRUE(Open(Buffer(), mode));
    CLogSample sample = Sample(5, {9});
    float value = 7;
    EXPECT_TRUE(m_link->Read(sample));
    EXPECT_TRUE(sample.m_values.IsEmpty());
    Write(1, {1, 2});
    Write(2, {3, 4});
    EXPECT_FALSE(m_link->ReadVariable(2, value) || m_link->WriteVariable(2, value));
    EXPECT_EQ(7, value);
    EXPECT_TRUE(m_link->ReadVariable(1, value) && m_link->WriteVariable(0, 5));
    EXPECT_EQ(4, value);
    EXPECT_TRUE(m_link->Read(sample));
    EXPECT_EQ(Sample(2, {5, 4}).m_values, sample.m_values);
    EXPECT_EQ(2, sample.m_time.time);
    m_recorder.Take();
    EXPECT_FALSE(m_link->Flush());
    EXPECT_TRUE(m_link->PartialFlush());
    EXPECT_EQ(
        "Flush Warning F Tried to flush an empty log.\nPartialFlush Notice F No samples to write (Probably "
        "new file).\n",
        m_recorder.TakeFaults());
    EXPECT_EQ(0u, m_link->GetTotalFiles());
  }
}

TEST_F(FileLink, AWriterGivesBackItsLastSample) {
  Open(Writer());
  Write(kStart, {1, 2});
  m_link->Flush();
  CLogSample sample;
  EXPECT_TRUE(m_link->Read(sample));
  EXPECT_EQ(kStart, sample.m_time.time);
  float value = 0;
  EXPECT_FALSE(m_link->ReadVariable(0, value));
}

// A messenger that needs no memory: it keeps the last line that was neither Begin nor End.
class CLastLine : public CMessenger {
 public:
  void Send(const char*, const char*, char, char severity, const char* text) override {
    if (severity < severityBegin) m_text = text;
  }
  const char* m_text = "";
};

TEST_F(FileLink, WithoutMemoryASampleIsRefusedAndTheLogGoesOn) {
  CLastLine last;
  CLink::SetMessenger(&last);
  CLogSample sample;
  sample.m_values.SetSize(20'000);  // three to a block
  int refusals = 0;
  for (int failing = 0; failing < 8; ++failing) {
    NewLink();
    Open(Writer());
    std::string kept;
    for (int i = 0; i < 8; ++i) {
      sample.m_time.time = kStart + i;
      last.m_text = "";
      g_limit = i == failing ? g_allocations.load() : LONG_MAX;
      const int written = m_link->Write(sample);
      g_limit = LONG_MAX;
      EXPECT_STREQ(written ? "" : "Not enough memory.", last.m_text);
      if (written) kept += " " + std::to_string(i);
      refusals += !written;
    }
    EXPECT_TRUE(m_link->Flush());
    CSampleStore samples;
    CLogReader log(samples);
    ASSERT_TRUE(log.Open(m_dir / "0301021400.rph") && log.ReadSamples());
    std::string found;
    for (CLogSample read; !samples.IsEmpty();) {
      samples.RemoveHead(read);
      found += " " + std::to_string(read.m_time.time - kStart);
    }
    EXPECT_EQ(kept, found);
  }
  EXPECT_EQ(3, refusals);  // the first sample, and each that needs a new block
  CLink::SetMessenger(&m_recorder);
}

TEST_F(FileLink, BetweenTwoFlushesNothingIsAllocatedOnceTheFirstLogIsDone) {
  CLastLine last;
  CLink::SetMessenger(&last);
  auto config = Writer();
  config->m_saveCsv = 1;
  Open(std::move(config));
  CLogSample sample;
  sample.m_values.SetSize(300);
  const auto write = [&](int count) {
    const long before = g_allocations;
    for (int i = 0; i < count; ++i) m_link->Write(sample);
    return g_allocations - before;
  };
  EXPECT_LT(0, write(1000));
  EXPECT_EQ(0, write(999));
  CLink::SetMessenger(&m_recorder);
}

}  // namespace
}  // namespace vastra
