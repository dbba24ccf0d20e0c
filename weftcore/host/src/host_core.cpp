// HostCore: the stream registry. Components are loaded on first use; streams
// are opened and closed under one recursive mutex, because a source opens and
// closes its upstream streams from inside its own Open and Close.
#include "weftcore/host/host_core.h"

#include <algorithm>
#include <utility>

#include "weftcore/host/host_stream.h"

namespace weftcore {
namespace host {
namespace {

// Removes `key` from the set of streams being opened when the scope ends,
// whichever way OpenStream leaves.
class OpeningGuard {
 public:
  OpeningGuard(std::set<std::string>* opening, std::string key)
      : opening_(opening), key_(std::move(key)) {
    opening_->insert(key_);
  }
  ~OpeningGuard() { opening_->erase(key_); }
  OpeningGuard(const OpeningGuard&) = delete;
  OpeningGuard& operator=(const OpeningGuard&) = delete;

 private:
  std::set<std::string>* opening_;
  std::string key_;
};

}  // namespace

HostCore::HostCore(HostConfiguration configuration, std::vector<std::string> search_paths)
    : configuration_(std::move(configuration)), search_paths_(std::move(search_paths)) {}

HostCore::~HostCore() {
  std::lock_guard<std::recursive_mutex> lock(mutex_);
  // Newest first: a source closes the upstream streams it opened (which were
  // opened before it finished opening) from its own Close.
  while (!streams_.empty()) {
    (void)CloseStream(streams_.back().get());
  }
  components_.clear();
}

void HostCore::AddComponent(const std::string& name,
                              std::unique_ptr<ComponentLibrary> library) {
  LoadedComponent component;
  const auto entry = configuration_.components.find(name);
  const ComponentArgument args =
      entry == configuration_.components.end() ? ComponentArgument() : entry->second.args;
  library->factory()->GetSupportedList(args, &component.supported);
  component.library = std::move(library);
  components_.emplace(name, std::move(component));
}

Status HostCore::FindComponent(const std::string& name, LoadedComponent** component) {
  auto loaded = components_.find(name);
  if (loaded == components_.end()) {
    const auto entry = configuration_.components.find(name);
    if (entry == configuration_.components.end()) {
      return Status(kLevelError, kCauseNotFound,
                    "component %s is not configured", name.c_str())
          .SetBlock("core");
    }
    std::unique_ptr<ComponentLibrary> library;
    Status status = ComponentLibrary::Load(entry->second.library, search_paths_, &library);
    if (status.IsError()) return status.AddTrace(nullptr, 0);
    AddComponent(name, std::move(library));
    loaded = components_.find(name);
  }
  *component = &loaded->second;
  return Status();
}

Status HostCore::Initialize() {
  std::lock_guard<std::recursive_mutex> lock(mutex_);
  ++initialize_count_;
  return Status();
}

bool HostCore::IsInitialized() const {
  std::lock_guard<std::recursive_mutex> lock(mutex_);
  return initialize_count_ > 0;
}

Status HostCore::Finalize() {
  std::lock_guard<std::recursive_mutex> lock(mutex_);
  if (initialize_count_ > 0) --initialize_count_;
  return Status();
}

Status HostCore::OpenStream(const std::string& key, Stream** stream) {
  if (stream == nullptr) {
    return Status(kLevelError, kCauseInvalidArgument, "stream is null").SetBlock("core");
  }
  std::lock_guard<std::recursive_mutex> lock(mutex_);
  const auto entry = configuration_.streams.find(key);
  if (entry == configuration_.streams.end()) {
    return Status(kLevelError, kCauseNotFound, "stream %s is not configured", key.c_str())
        .SetBlock("core");
  }
  if (opening_.count(key) != 0) {
    return Status(kLevelError, kCauseInvalidState,
                  "stream %s is opened again from inside its own Open", key.c_str())
        .SetBlock("core");
  }
  const StreamEntry& configured = entry->second;
  LoadedComponent* component = nullptr;
  Status status = FindComponent(configured.component, &component);
  if (status.IsError()) return status.AddTrace(nullptr, 0);

  const auto type = std::find_if(
      component->supported.begin(), component->supported.end(),
      [&configured](const auto& supported) { return supported.first == configured.type; });
  if (type == component->supported.end()) {
    return Status(kLevelError, kCauseNotFound, "component %s does not support source type %s",
                  configured.component.c_str(), configured.type.c_str())
        .SetBlock("core");
  }
  StreamSourceFactory* factory = component->library->factory();
  StreamSource* source = nullptr;
  status = factory->CreateSource(*type, &source);
  if (status.IsError()) return status.AddTrace(nullptr, 0);
  if (source == nullptr) {
    return Status(kLevelError, kCauseInvalidState,
                  "component %s created no source of type %s for stream %s",
                  configured.component.c_str(), configured.type.c_str(), key.c_str())
        .SetBlock("core");
  }

  // From here the stream owns the source: destroying it closes and releases.
  auto opened = std::make_unique<HostStream>(key, factory, source, &allocator_);
  {
    OpeningGuard guard(&opening_, key);
    source->RegisterMandatoryProperties(opened->utility());
    status = source->Open(this, opened->utility());
  }
  if (status.IsError()) {
    (void)opened->Shutdown();
    return status.AddTrace(nullptr, 0);
  }
  *stream = opened.get();
  streams_.push_back(std::move(opened));
  return Status();
}

Status HostCore::CloseStream(Stream* stream) {
  if (stream == nullptr) {
    return Status(kLevelError, kCauseInvalidArgument, "stream is null").SetBlock("core");
  }
  std::lock_guard<std::recursive_mutex> lock(mutex_);
  const auto found =
      std::find_if(streams_.begin(), streams_.end(),
                   [stream](const auto& open) { return open.get() == stream; });
  if (found == streams_.end()) {
    return Status(kLevelError, kCauseNotFound, "stream is not open in this core")
        .SetBlock("core");
  }
  // Out of the registry before the source runs: its Close closes other
  // streams re-entrantly, which changes streams_.
  std::unique_ptr<HostStream> closing = std::move(*found);
  streams_.erase(found);
  Status status = closing->Shutdown();
  if (status.IsError()) status.AddTrace(nullptr, 0);
  return status;
}

}  // namespace host
}  // namespace weftcore
