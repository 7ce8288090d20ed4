// The table of calls that our driver modules have alike, on a connection that fails as told.
#include "drivers/common/handles.h"

#include <gtest/gtest.h>

#include <set>
#include <stdexcept>
#include <thread>

const driver::CNodeForm driver::kNodeForm = {0, "Made up", {}, {}, nullptr};

namespace {

enum EFailure { none, words, noMemory, other };

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

TEST(DriverHandles, AreDifferentWhenTwoThreadsOpen) {
  constexpr std::size_t kOpens = 5000;
  std::vector<int> handles[2] = {std::vector<int>(kOpens), std::vector<int>(kOpens)};
  {
    std::vector<std::jthread> threads;
    for (std::vector<int>& own : handles)
      threads.emplace_back([&own] {
        for (int& handle : own) kTable.Open({}, driverModeRead, &handle);
      });
  }
  std::set<int> all(handles[0].begin(), handles[0].end());
  all.insert(handles[1].begin(), handles[1].end());
  EXPECT_EQ(all.size(), 2 * kOpens);
  for (const int handle : all) kTable.Close(handle);
}

}  // namespace
