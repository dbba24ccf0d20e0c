#include "weftcore/stream_function_lock.h"

#include <gtest/gtest.h>

namespace {

using weftcore::StreamFunctionLock;
using weftcore::StreamFunctionLockManager;
using weftcore::StreamFunctionType;

TEST(StreamFunctionLockManager, SameThreadMayLockTheSameFunctionAgain) {
  StreamFunctionLockManager manager;
  EXPECT_TRUE(manager.Lock(StreamFunctionType::kProperty).ok());
  EXPECT_TRUE(manager.Lock(StreamFunctionType::kProperty).ok());
  manager.Unlock(StreamFunctionType::kProperty);
  manager.Unlock(StreamFunctionType::kProperty);
}

TEST(StreamFunctionLockManager, LockAfterShutdownFailsWithCause3StreamIsClosed) {
  StreamFunctionLockManager manager;
  manager.Shutdown();
  const weftcore::Status status = manager.Lock(StreamFunctionType::kFrame);
  EXPECT_EQ(status.level(), 1);
  EXPECT_EQ(status.cause(), 3);
  EXPECT_EQ(status.message(), "stream is closed");
  EXPECT_EQ(status.block(), "core");
}

TEST(StreamFunctionLockManager, ShutdownWhileLockedKeepsTheHolderAndFailsLaterLocks) {
  StreamFunctionLockManager manager;
  {
    StreamFunctionLock lock(&manager, StreamFunctionType::kControl);
    EXPECT_TRUE(lock.GetStatus().ok());
    manager.Shutdown();
    EXPECT_TRUE(lock.GetStatus().ok());
  }
  EXPECT_TRUE(StreamFunctionLock(&manager, StreamFunctionType::kControl).GetStatus().IsError());
}

TEST(StreamFunctionLock, NestedScopedLocksOfOneFunctionSucceed) {
  StreamFunctionLockManager manager;
  StreamFunctionLock outer(&manager, StreamFunctionType::kProperty);
  StreamFunctionLock inner(&manager, StreamFunctionType::kProperty);
  EXPECT_TRUE(outer.GetStatus().ok());
  EXPECT_TRUE(inner.GetStatus().ok());
}

TEST(StreamFunctionLock, NullManagerReportsCause2NullPointer) {
  StreamFunctionLock lock(nullptr, StreamFunctionType::kFrame);
  EXPECT_EQ(lock.GetStatus().cause(), 2);
  EXPECT_EQ(lock.GetStatus().message(), "Null pointer");
  EXPECT_EQ(lock.GetStatus().block(), "core");
}

TEST(StreamFunctionLock, ShutDownManagerReportsTheFailureAndHoldsNothing) {
  StreamFunctionLockManager manager;
  manager.Shutdown();
  StreamFunctionLock lock(&manager, StreamFunctionType::kFrame);
  EXPECT_EQ(lock.GetStatus().message(), "stream is closed");
}

}  // namespace
