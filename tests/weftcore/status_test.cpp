#include "weftcore/status.h"

#include <string>
#include <utility>

#include <gtest/gtest.h>

namespace {

using weftcore::Status;

TEST(Status, DefaultIsOkWithoutPayload) {
  const Status status;
  EXPECT_TRUE(status.ok());
  EXPECT_FALSE(status.IsError());
  EXPECT_EQ(status.level(), weftcore::kLevelNone);
  EXPECT_EQ(status.cause(), weftcore::kCauseNone);
  EXPECT_EQ(status.message(), "");
  EXPECT_EQ(status.block(), "");
  EXPECT_TRUE(status.trace().empty());
}

TEST(Status, AddTraceAndSetBlockLeaveOkStatusOk) {
  Status status;
  status.AddTrace("file.cpp", 3).SetBlock("core");
  EXPECT_TRUE(status.ok());
  EXPECT_EQ(status.block(), "");
  EXPECT_TRUE(status.trace().empty());
}

TEST(Status, ErrorFormatsMessagePrintfStyle) {
  const Status status(weftcore::kLevelError, weftcore::kCauseEndOfData,
                      "end of buffer: size=%zu, offset=%zu", size_t{3}, size_t{5});
  EXPECT_TRUE(status.IsError());
  EXPECT_FALSE(status.ok());
  EXPECT_EQ(status.level(), 1);
  EXPECT_EQ(status.cause(), 11);
  EXPECT_EQ(status.message(), "end of buffer: size=3, offset=5");
}

TEST(Status, FormatsStringsAndMessagesLongerThanAnyFixedBuffer) {
  const std::string key(2000, 'k');
  const Status status(weftcore::kLevelError, weftcore::kCauseNotAvailable,
                      "not available to set %s", key.c_str());
  EXPECT_EQ(status.message(), "not available to set " + key);
}

TEST(Status, ErrorWithEmptyMessageIsStillAnError) {
  const Status status(weftcore::kLevelError, weftcore::kCauseUnknown, "%s", "");
  EXPECT_TRUE(status.IsError());
  EXPECT_EQ(status.message(), "");
}

TEST(Status, SetBlockNamesTheBlockAndReturnsTheSameStatus) {
  Status status(weftcore::kLevelError, weftcore::kCauseInvalidArgument, "Null pointer");
  Status& returned = status.SetBlock("ZeltoMesh");
  EXPECT_EQ(&returned, &status);
  EXPECT_EQ(status.block(), "ZeltoMesh");
}

TEST(Status, AddTraceAppendsEntriesInOrderAndReturnsTheSameStatus) {
  Status status(weftcore::kLevelError, weftcore::kCauseSerializer, "what=%s", "x");
  Status& returned = status.AddTrace(nullptr, 0);
  EXPECT_EQ(&returned, &status);
  status.AddTrace("host_core.cpp", 42);
  const auto trace = status.trace();
  ASSERT_EQ(trace.size(), 2u);
  EXPECT_EQ(trace[0].file, "");
  EXPECT_EQ(trace[0].line, 0);
  EXPECT_EQ(trace[1].file, "host_core.cpp");
  EXPECT_EQ(trace[1].line, 42);
}

TEST(Status, CopyIsIndependentOfTheOriginal) {
  Status original(weftcore::kLevelError, weftcore::kCauseNotFound, "stream %s is not configured",
                  "mesh");
  original.SetBlock("core");
  Status copy(original);
  copy.SetBlock("other").AddTrace(nullptr, 0);
  EXPECT_EQ(original.block(), "core");
  EXPECT_TRUE(original.trace().empty());
  EXPECT_EQ(copy.message(), "stream mesh is not configured");
  EXPECT_EQ(copy.cause(), weftcore::kCauseNotFound);
  EXPECT_EQ(copy.trace().size(), 1u);
}

TEST(Status, CopyAssignmentReplacesErrorWithOkAndOkWithError) {
  const Status error(weftcore::kLevelError, weftcore::kCauseTimeout, "late");
  Status target;
  target = error;
  EXPECT_EQ(target.message(), "late");
  target = Status();
  EXPECT_TRUE(target.ok());
  EXPECT_EQ(target.message(), "");
}

TEST(Status, SelfAssignmentKeepsThePayload) {
  Status status(weftcore::kLevelError, weftcore::kCauseTimeout, "late");
  Status& alias = status;
  status = alias;
  EXPECT_EQ(status.message(), "late");
}

TEST(Status, MoveTransfersThePayloadAndLeavesTheSourceOk) {
  Status source(weftcore::kLevelError, weftcore::kCauseNotImplemented, "not yet");
  Status moved(std::move(source));
  EXPECT_EQ(moved.cause(), weftcore::kCauseNotImplemented);
  EXPECT_EQ(moved.message(), "not yet");
  EXPECT_TRUE(source.ok());  // NOLINT(bugprone-use-after-move): documented state

  Status assigned;
  assigned = std::move(moved);
  EXPECT_EQ(assigned.message(), "not yet");
  EXPECT_TRUE(moved.ok());  // NOLINT(bugprone-use-after-move)
}

}  // namespace
