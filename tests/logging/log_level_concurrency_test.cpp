// Part 5.1, Concurrency: the property handler writes the level while frame
// threads write logs; under ThreadSanitizer this must be race-free.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "logging/log_capture.h"
#include "logging/zelto_logger.h"

namespace {

TEST(LoggerConcurrency, SetLogLevelWhileOtherThreadsWriteEveryAcceptedWriteIsDeliveredOnce) {
  zelto_test::LogCapture capture;
  ZeltoLogger logger;
  std::atomic<bool> stop{false};
  std::atomic<int> accepted{0};
  std::thread setter([&] {
    for (int i = 0; i < 20000; ++i) {
      logger.SetLogLevel(i % 2 == 0 ? ZeltoLogger::Verbose : ZeltoLogger::Silent);
    }
    stop.store(true);
  });
  std::vector<std::thread> writers;
  for (int t = 0; t < 3; ++t) {
    writers.emplace_back([&, t] {
      while (!stop.load()) {
        if (logger.WriteLog(ZeltoLogger::Debug, "ZeltoMesh", "thread %d", t)) accepted.fetch_add(1);
      }
    });
  }
  setter.join();
  for (std::thread& writer : writers) writer.join();
  const std::vector<zelto_test::LogRecord> records = capture.records();
  EXPECT_EQ(static_cast<int>(records.size()), accepted.load());
  for (const zelto_test::LogRecord& record : records) {
    ASSERT_EQ(record.type, 1);
    ASSERT_EQ(record.tag, "ZeltoMesh");
    ASSERT_EQ(record.message.rfind("thread ", 0), 0u);
  }
}

}  // namespace
