// A stream of the host: one source, its registered properties,
// its frames, under the stream's function lock.
#pragma once

#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "weftcore/frame.h"
#include "weftcore/frame_info.h"
#include "weftcore/stream.h"
#include "weftcore/stream_function_lock.h"
#include "weftcore/stream_source.h"
#include "weftcore/stream_source_factory.h"
#include "weftcore/stream_source_utility.h"

namespace weftcore {
namespace host {

// A delivered frame as a consumer sees it: channel views over a FrameInfo
// (raw data address = memory address + offset).
class HostFrame final : public Frame {
 public:
  explicit HostFrame(FrameInfo info);
  ~HostFrame() override;
  uint64_t GetSequenceNumber() const override;
  size_t GetChannelCount() const override;
  Status GetChannel(uint32_t channel_id, Channel** channel) override;
  Status GetChannelList(std::map<uint32_t, Channel*>* channels) override;
  const FrameInfo& info() const { return info_; }

 private:
  FrameInfo info_;
  std::map<uint32_t, std::unique_ptr<Channel>> channels_;
};

class HostStreamUtility final : public StreamSourceUtility {
 public:
  explicit HostStreamUtility(MemoryAllocator* default_allocator);
  ~HostStreamUtility() override;
  Status GetAllocator(const std::string& key, MemoryAllocator** allocator) override;
  // Fails with cause 5 when the key is already registered.
  Status RegisterProperty(PropertyAccessor* accessor) override;
  PropertyAccessor* FindProperty(const std::string& key) const;
  std::vector<std::string> PropertyKeys() const;

 private:
  MemoryAllocator* default_allocator_;  // not owned; fixed at construction
  mutable std::mutex mutex_;            // guards properties_
  std::map<std::string, std::unique_ptr<PropertyAccessor>> properties_;
};

// Owns its source: Shutdown (or the destructor) closes it and hands it back
// to the factory.
class HostStream final : public Stream {
 public:
  HostStream(std::string key, StreamSourceFactory* factory, StreamSource* source,
             MemoryAllocator* allocator);
  ~HostStream() override;  // Shutdown, if not done yet

  Status Start() override;
  Status Stop() override;
  // Pulls frames with the source's GetFrames: 0 asks once; a positive
  // timeout asks again after each frame signal (weftcore/frame_signal.h)
  // until a frame comes or time runs out, sleeping in between.
  // Frames delivered by an earlier request are handed out first, without
  // asking. OK with a null frame when none is ready; negative: cause 2.
  Status GetFrame(Frame** frame, int32_t timeout_msec) override;
  // Hands the frame back with the source's ReleaseFrame.
  Status ReleaseFrame(Frame* frame) override;
  // Route to the accessor registered under `key`; cause 4 for an unknown key.
  Status GetSerializedProperty(const std::string& key, const void* input, size_t input_size,
                               void** property, size_t* size) override;
  Status ReleaseSerializedProperty(const std::string& key, void* property, size_t size) override;
  Status SetSerializedProperty(const std::string& key, const void* property,
                               size_t size) override;
  StreamFunctionLockManager* GetFunctionLockManager() override;

  const std::string& key() const { return key_; }
  StreamSource* source() const { return source_; }
  StreamSourceFactory* factory() const { return factory_; }
  HostStreamUtility* utility() { return &utility_; }

  // Hands every queued and outstanding frame back to the source, then calls
  // Close and the factory's ReleaseSource. Later calls of the stream's
  // functions fail ("stream is closed"); frames handed out become invalid.
  // Returns Close's status; runs once, later calls return OK.
  Status Shutdown();

 private:
  void ReleaseAllFrames();

  // Set at construction; Shutdown hands the source back and clears source_.
  std::string key_;
  StreamSourceFactory* factory_;
  StreamSource* source_;
  HostStreamUtility utility_;
  StreamFunctionLockManager lock_manager_;
  // frames_mutex_ guards the frame collections and shut_down_: GetFrame and
  // ReleaseFrame already run one at a time under kFrame, but Shutdown does not.
  mutable std::mutex frames_mutex_;
  std::deque<FrameInfo> pending_;  // delivered by GetFrames, not yet handed out
  std::map<const Frame*, std::unique_ptr<HostFrame>> handed_out_;
  bool shut_down_ = false;
};

}  // namespace host
}  // namespace weftcore
