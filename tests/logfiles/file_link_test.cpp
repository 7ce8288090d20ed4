#include "vastra/logfiles/file_link.h"

#include <atomic>
#include <climits>
#include <cstdlib>
#include <new>

#include "tests/logfiles/link_fixture.h"
#include "vastra/core/name_config.h"

namespace {
std::atomic<long> g_allocations{0};
std::atomic<long> g_limit{LONG_MAX};  // the allocation with this number and all later ones fail
}  // namespace

void* operator new(std::size_t size) {
  void* memory = g_allocations.fetch_add(1) < g_limit ? std::malloc(size ? size : 1) : nullptr;
  return memory ? memory : throw std::bad_alloc();
}
// Must come from malloc, too: the operators delete below free it.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return g_allocations.fetch_add(1) >= g_limit ? nullptr : std::malloc(size ? size : 1);
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

namespace vastra {
namespace {

using FileLink = CLinkFixture;

TEST_F(FileLink, OpenReportsWhatIsWrongWithItsSettings) {
  EXPECT_EQ(CFileLink::Create(m_link.get()), nullptr);
  EXPECT_FALSE(Open(nullptr) || Open(std::make_unique<CNameConfig>()));
  EXPECT_EQ(m_recorder.TakeFaults(),
            "Open Fatal F No configuration given.\nOpen Fatal F Invalid configuration.\n");
  const auto open = [this](const char* nameVariable, const char* directory, int bufferOnly, UINT mode) {
    auto config = Writer();
    config->m_nameVariable = nameVariable;
    config->m_directory = directory;
    config->m_bufferOnly = bufferOnly;
    return Open(std::move(config), mode) ? "opened" : m_recorder.TakeFaults();
  };
  const std::string name =
      "Open Fatal F The variable used for naming the logs is not included in the logged variables\n\n";
  const std::string directory = "Open Fatal F There is a problem with the destination directory\n";
  EXPECT_EQ(open("temp", "/none", 0, CLink::modeWrite), name);
  EXPECT_EQ(open("temp", "/none", 1, CLink::modeRead), name);
  EXPECT_EQ(open("Temp", "/none", 0, CLink::modeWrite), directory);
  EXPECT_EQ(open("", "", 0, CLink::modeWrite), directory);
  EXPECT_EQ(open("", "/none", 1, CLink::modeWrite), "opened");
}

TEST_F(FileLink, EveryOperationOfAClosedLinkReportsItAndClosesOnce) {
  Open(Buffer());
  m_recorder.Take();
  Open(Buffer(), CLink::modeRead);
  EXPECT_EQ(m_recorder.Take(), "Open Begin F\nClose Begin F\nClose End F\nOpen End F\n");
  m_link->Close();
  CLogSample sample;
  CStringArray names = Names({"kept"});
  EXPECT_FALSE(m_link->Read(sample) || m_link->Write(sample) || m_link->Flush() ||
               m_link->GetVarNames(names));
  EXPECT_EQ(m_recorder.TakeFaults(),
            "Read Fatal F Linker is not opened.\nWrite Fatal F Linker is not opened.\n"
            "Flush Fatal F Linker is not opened.\nGet Variable Names Fatal F Linker is not opened.\n");
  EXPECT_EQ(names, Names({"kept"}));
  EXPECT_TRUE(m_link->PartialFlush());
}

TEST_F(FileLink, WithoutMemoryASampleIsRefusedAndCanBeWrittenLater) {
  CMessenger quiet;  // needs no memory
  quiet.SetFilters(0, 0, 0, 0, 0);
  CLink::SetMessenger(&quiet);
  CLogSample sample;
  sample.m_values.SetSize(20'000);  // three to a block
  Open(Writer());
  int refusals = 0;
  for (int i = 0; i < 8; ++i) {
    sample.m_time.time = kStart + i;
    g_limit = g_allocations.load();
    const bool written = m_link->Write(sample);
    g_limit = LONG_MAX;
    refusals += !written;
    EXPECT_TRUE(written || m_link->Write(sample));
  }
  EXPECT_EQ(refusals, 3);  // the first sample, and each that needs a new block
  EXPECT_TRUE(m_link->Flush());
  EXPECT_EQ(Times("0301021400.rph"), " 0 1 2 3 4 5 6 7");
  m_link.reset();
}

}  // namespace
}  // namespace vastra
