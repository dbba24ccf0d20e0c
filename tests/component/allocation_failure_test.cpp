// Every operator new fails the n-th allocation of a call, for each n: nothing may throw or leak.
#include <cstddef>
#include <cstdlib>
#include <cstring>

#include <functional>
#include <new>
#include <string>
#include <utility>

#include "component/component_entry.h"
#include "component/stream_source_logger.h"
#include "component/zelto_mesh_sourcefactory.h"
#include "tests/component/mesh_source_fixture.h"

// 0 fails the next allocation, < 0 none. Per thread: only the calls the test
// makes fail, not the device's own decoding threads running beside them.
static thread_local long allocationsBeforeFailure = -1;
// Bytes taken minus bytes given back by this thread: what a release on the
// test's thread frees, whatever the device's threads do meanwhile.
static thread_local long long liveBytes = 0;

// Every form of new and delete goes through these two, so that no delete
// calls another form of itself (which GCC reports as a mismatch). Each block
// carries the size asked for in front of it: the count must not depend on how
// much the C library rounded a block up, which varies with what other
// threads freed before.
constexpr size_t kHeader = alignof(std::max_align_t);
__attribute__((noinline)) static void* Take(size_t size) {
  auto* block = allocationsBeforeFailure-- == 0 ? nullptr
                                                : static_cast<char*>(malloc(size + kHeader));
  if (block == nullptr) return nullptr;
  std::memcpy(block, &size, sizeof size);
  liveBytes += static_cast<long long>(size);
  return block + kHeader;
}
__attribute__((noinline)) static void Give(void* pointer) noexcept {
  if (pointer == nullptr) return;
  char* block = static_cast<char*>(pointer) - kHeader;
  size_t size = 0;
  std::memcpy(&size, block, sizeof size);
  liveBytes -= static_cast<long long>(size);
  free(block);
}

void* operator new(size_t size) {
  if (void* block = Take(size)) return block;
  throw std::bad_alloc();
}
void* operator new[](size_t size) {
  if (void* block = Take(size)) return block;
  throw std::bad_alloc();
}
void* operator new(size_t size, const std::nothrow_t&) noexcept { return Take(size); }
void* operator new[](size_t size, const std::nothrow_t&) noexcept { return Take(size); }
void operator delete(void* block) noexcept { Give(block); }
void operator delete[](void* block) noexcept { Give(block); }
void operator delete(void* block, size_t /*size*/) noexcept { Give(block); }
void operator delete[](void* block, size_t /*size*/) noexcept { Give(block); }
// The host substitute and the device simulator are not built to survive a failed allocation in
// their own code; LeakSanitizer counts only what the component leaks.
extern "C" const char* __lsan_default_suppressions() {
  return "leak:weftcore::host::HostCore::OpenStream\nleak:weftcore::host::HostStream::GetFrame\n";
}

namespace zelto_test {
namespace {

using weftcore::Status;
using AllocationFailure = MeshSourceTest;

TEST_F(AllocationFailure, EveryEntryPointTurnsAFailedAllocationIntoAStatusOrADroppedFrame) {
  auto encoded = [](const auto& record) {
    weftcore::serialize::SerializedBuffer buffer;
    weftcore::serialize::MsgPackEncoder(&buffer).Push(record);
    return std::vector<uint8_t>(buffer.data(), buffer.data() + buffer.size());
  };
  const auto mask = encoded(ZeltoMesh::ZeltoMeshMaskSettingsProperty_{
      true, {{"person", false, false}, {"floor", true, false}}, 55});
  const auto level = encoded(ZeltoMesh::ZeltoMeshAlgorithmConfigProperty_{1, 3});
  const auto rate = encoded(weftcore::FrameRateProperty{30, 1});
  // Made beforehand: inside a call only the component may allocate.
  const std::string maskKey = ZeltoMesh::kZeltoMeshMaskSettingsKey, longLine(2000, 'x'),
                    levelKey = ZeltoMesh::kZeltoMeshAlgorithmConfigKey,
                    rateKey = weftcore::kFrameRatePropertyKey,
                    channelKey = weftcore::kChannelInfoPropertyKey;
  auto access = [this](const std::string& key, const std::vector<uint8_t>* bytes) {  // null: Get
    weftcore::PropertyAccessor* accessor = utility->FindProperty(key);
    if (bytes != nullptr) return accessor->Set(key, bytes->data(), bytes->size());
    void* reply = nullptr;
    size_t size = 0;
    const Status status = accessor->Get(key, &reply, &size, nullptr, 0);
    accessor->Release(key, reply, size);
    return status;
  };
  ZeltoMeshSourceFactory factory;
  std::vector<std::pair<std::string, int>> types;
  std::vector<weftcore::FrameInfo> frames;
  // One source's life in order; row k runs rows 0..k-1 first, without failures.
  const std::pair<const char*, std::function<Status()>> rows[] = {
      {"CreateComponent", [] { DestroyComponent(CreateComponent()); return Status(); }},
      {"GetSupportedList", [&] { factory.GetSupportedList({}, &types); return Status(); }},
      {"CreateSource", [&] {
         weftcore::StreamSource* created = nullptr;
         const Status status = factory.CreateSource({"mesh", 0}, &created);
         return factory.ReleaseSource(created), status; }},
      {"RegisterMandatoryProperties",
       [&] { source->RegisterMandatoryProperties(utility.get()); return Status(); }},
      {"Open", [&] { return source->Open(host.get(), utility.get()); }},
      {"Set mask settings", [&] { return access(maskKey, &mask); }},
      {"Set algorithm configuration", [&] { return access(levelKey, &level); }},
      {"Start", [&] { return source->Start(); }},
      {"GetFrames", [&] { source->GetFrames(&frames); return Status(); }},
      {"Get mask settings", [&] { return access(maskKey, nullptr); }},
      {"Get channel information", [&] { return access(channelKey, nullptr); }},
      {"Set frame rate", [&] { return access(rateKey, &rate); }},
      {"GetFrames, flat", [&] { source->GetFrames(&frames); return Status(); }},
      {"WriteLog", [&] {
         StreamSourceLogger().ForceWriteLog(ZeltoLogger::Debug, "ZeltoMesh", "%s", &longLine[0]);
         return Status(); }},
      {"Stop", [&] { return source->Stop(); }},
      {"Close", [&] { return source->Close(); }},
  };
  ASSERT_TRUE(OpenHost().ok());  // one host, device loaded: its own failures are not ours
  for (size_t k = 0; k < std::size(rows); ++k) {
    for (long n = 1;; ++n) {
      SCOPED_TRACE(std::string(rows[k].first) + ", allocation " + std::to_string(n) + " fails");
      CloseSource();
      ASSERT_EQ(0, meshMemory.heap.LiveCount());
      utility = std::make_unique<weftcore::host::HostStreamUtility>(&meshMemory);
      source = std::make_unique<ZeltoMeshStreamSource>();
      for (size_t before = 0; before < k; ++before) ASSERT_TRUE(rows[before].second().ok());
      Status status;
      allocationsBeforeFailure = n - 1;
      EXPECT_NO_THROW(status = rows[k].second());
      const bool failed = std::exchange(allocationsBeforeFailure, -1) < 0;
      delivered.swap(frames);  // CloseSource releases them
      EXPECT_TRUE(status.ok() || (failed && !status.message().empty())) << status.message();
      if (!failed) break;
    }
  }
}

TEST_F(AllocationFailure, ReplacedArraysLiveExactlyAsLongAsAnUnreleasedFrameNamesThem) {
  ASSERT_TRUE(OpenHost().ok() && source->Start().ok());
  auto next = [this](int32_t level) {
    const ZeltoMesh::ZeltoMeshAlgorithmConfigProperty_ config{level, 0};
    EXPECT_TRUE(source->Set(ZeltoMesh::kZeltoMeshAlgorithmConfigKey, &config).ok());
    std::vector<weftcore::FrameInfo> frames;
    source->GetFrames(&frames);
    return frames.at(0);
  };
  auto bytesFreedBy = [this](const weftcore::FrameInfo& frame) {
    const long long live = liveBytes;
    EXPECT_TRUE(source->ReleaseFrame(frame, nullptr).ok());
    return live - liveBytes;
  };
  // 4 x 3 pixels: level 0 has 12 vertices and 12 triangles, at least 288 bytes of arrays.
  const weftcore::FrameInfo held = next(0);  // names the first record's level-0 arrays
  const weftcore::FrameInfo second = next(1);
  const weftcore::FrameInfo third = next(1);  // replaces the arrays `held` names
  EXPECT_EQ(std::vector<float>(12, 1.0f), DepthsOf(held.channels[0]));
  const long long releasingCurrent = bytesFreedBy(second);
  EXPECT_LE(releasingCurrent + 288, bytesFreedBy(held));
  EXPECT_EQ(releasingCurrent, bytesFreedBy(third));
}

}  // namespace
}  // namespace zelto_test
