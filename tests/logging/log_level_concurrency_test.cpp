// The log level property sets a logger's level while frame threads write through it: under
// ThreadSanitizer this must be race-free, and every write the logger accepts must arrive once.
#include <gtest/gtest.h>
#include <atomic>
#include <thread>
#include <vector>

#include "logging/zelto_logger.h"
#include "support/log_capture.h"

TEST(Logger, LevelChangesRacingWritersDeliverEveryAcceptedRecordOnce) {
  zelto_test::LogCapture capture;
  ZeltoLogger logger;
  std::atomic<int> running{0}, accepted{0};
  std::atomic<bool> stop{false};
  std::vector<std::thread> writers;
  for (int t = 0; t < 3; ++t) {
    writers.emplace_back([&] {
      ++running;
      while (!stop) accepted += logger.WriteLog(ZeltoLogger::Debug, "ZeltoMesh", "written");
    });
  }
  while (running < 3) std::this_thread::yield();  // the level changes while all of them write
  for (int i = 0; i < 20000; ++i) logger.SetLogLevel(i % 2 ? ZeltoLogger::Silent : ZeltoLogger::Verbose);
  stop = true;
  for (std::thread& writer : writers) writer.join();
  EXPECT_EQ(capture.records(), std::vector<zelto_test::LogRecord>(accepted, zelto_test::MeshDebug("written")));
}
