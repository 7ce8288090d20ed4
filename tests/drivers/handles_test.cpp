// The table of calls that our driver modules have alike, on a connection that fails as told.
#include "drivers/common/handles.h"

#include <gtest/gtest.h>

#include <stdexcept>

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
  ASSERT_EQ(statusOk, kTable.Open({}, driverModeRead, &handle));
  const int opened = handle;
  const int kStatuses[] = {statusOk, statusExtendedError, statusNoMemory, 0};
  for (const int failure : {words, noMemory, other}) {
    DriverRecord record = {};
    record.value1 = failure;
    EXPECT_EQ(kStatuses[failure], kTable.Open(record, driverModeWrite, &handle));
    EXPECT_EQ(kStatuses[failure], kTable.Read(nullptr, failure, opened));
    EXPECT_EQ(kStatuses[failure], kTable.Write(nullptr, failure, opened));
    EXPECT_EQ(opened, handle);
  }
  EXPECT_EQ(statusInvalidMode, kTable.Open({}, driverModeOther, &handle));
  EXPECT_STREQ("%s", kTable.GetExtendedError(opened));
  EXPECT_EQ("Made up: " + std::string(502, '%'), kTable.GetExtendedError(-1)) << "cut to its buffer";
  kTable.Close(opened);
  EXPECT_EQ(statusNotOpened, kTable.Read(nullptr, none, opened));
}

}  // namespace
