#include "drivers/common/handles.h"

#include <gtest/gtest.h>

#include <future>
#include <latch>
#include <set>
#include <stdexcept>
#include <thread>

const driver::CNodeForm driver::kNodeForm = {0, "Made up", {}, {}, nullptr};

namespace {

enum EFailure { none, words, noMemory, other, hangs };
std::promise<void> g_begun, g_released;

class CFailing {
 public:
  static std::unique_ptr<CFailing> Open(const DriverRecord& record, int, std::string& fault) {
    fault = std::string(600, '%');
    Fail(record.value1);
    return record.value1 == words ? nullptr : std::make_unique<CFailing>();
  }
  int Read(float*, int count) { return Fail(count); }
  int Write(const float*, int count) { return Fail(count); }
  const char* LastError() { return "%s"; }

 private:
  static int Fail(int failure) {
    if (failure == noMemory) throw std::bad_alloc();
    if (failure == other) throw std::runtime_error("");
    if (failure == hangs) g_begun.set_value(), g_released.get_future().wait();
    return failure == words ? statusExtendedError : statusOk;
  }
};
constexpr const DriverFunctions& kTable = driver::kFunctions<CFailing>;

TEST(DriverHandles, LetNothingThrownLeaveAndKeepNoHandleOfAFailedOpen) {
  int handle = -1;
  ASSERT_EQ(kTable.Open({}, driverModeRead, &handle), statusOk);
  const int opened = handle;
  const int kStatuses[] = {statusOk, statusExtendedError, statusNoMemory, 0};
  for (const int failure : {words, noMemory, other}) {
    DriverRecord record = {};
    record.value1 = failure;
    EXPECT_EQ(kTable.Open(record, driverModeWrite, &handle), kStatuses[failure]);
    EXPECT_EQ(kTable.Read(nullptr, failure, opened), kStatuses[failure]);
    EXPECT_EQ(kTable.Write(nullptr, failure, opened), kStatuses[failure]);
    EXPECT_EQ(handle, opened);
  }
  EXPECT_EQ(kTable.Open({}, driverModeOther, &handle), statusInvalidMode);
  EXPECT_STREQ("%s", kTable.GetExtendedError(opened));
  EXPECT_EQ(kTable.GetExtendedError(-1), "Made up: " + std::string(502, '%')) << "cut to its buffer";
  kTable.Close(opened);
  kTable.Close(opened);
  for (const int closed : {opened, -1, 0, 2147483647}) {
    EXPECT_EQ(kTable.Read(nullptr, none, closed), statusNotOpened);
    EXPECT_EQ(kTable.Write(nullptr, none, closed), statusNotOpened);
    EXPECT_NE(kTable.GetExtendedError(closed), nullptr);
  }
}

TEST(DriverHandles, AreDifferentWhenThreadsOpenTogether) {
  std::vector<int> handles[4];
  {
    std::latch start(4);
    std::vector<std::jthread> threads;
    for (std::vector<int>& own : handles)
      threads.emplace_back([&] {
        start.arrive_and_wait();
        for (int& handle : own = std::vector<int>(25'000)) kTable.Open({}, driverModeRead, &handle);
      });
  }
  std::set<int> all;
  for (const std::vector<int>& own : handles) all.insert(own.begin(), own.end());
  EXPECT_EQ(all.size(), 100'000u);
  for (const int handle : all) kTable.Close(handle);
}

TEST(DriverHandles, DoNotWaitForACallOfAnotherHandle) {
  int hanging = 0, other = 0;
  kTable.Open({}, driverModeRead, &hanging);
  const std::jthread thread([&] { EXPECT_EQ(kTable.Read(nullptr, hangs, hanging), statusOk); });
  g_begun.get_future().wait();
  EXPECT_EQ(kTable.Open({}, driverModeRead, &other), statusOk);
  EXPECT_EQ(kTable.Read(nullptr, none, other), statusOk);
  kTable.Close(other);
  g_released.set_value();
}

}  // namespace
