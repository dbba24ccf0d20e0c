// Client bytes into the five properties of the mesh source, through the real
// host, the mesh plug-in and the simulated device. The first byte picks the
// property and Set or Get; the rest is the record (Get's input record). Any
// bytes get a status; after any Set, a Get without input still answers, and
// every reply goes back through Release.
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <string>

#include "fuzz/require.h"
#include "weftcore/host/host_core.h"
#include "weftcore/osal.h"
#include "zelto_sim/host_configuration.h"

namespace {

constexpr const char* kKeys[] = {"kZeltoLogLevelKey", "channel_info_property",
                                 "frame_rate_property", "kZeltoMeshAlgorithmConfigKey",
                                 "kZeltoMeshMaskSettingsKey"};

// One host with the "mesh" stream open for the whole run, as in a client app:
// what one input sets, the next one finds.
weftcore::Stream* MeshStream() {
  static const auto host = [] {
    weftcore::osal::SetLogSink([](int, const char*, const char*) {});
    ZeltoSim::HostOptions options;  // the synthetic scene
    options.meshLibrary = std::string(ZELTO_LIBRARY_DIR) + "/libcomponent_zelto_mesh.so";
    options.simLibrary = std::string(ZELTO_LIBRARY_DIR) + "/libcomponent_zelto_sim.so";
    return std::make_unique<weftcore::host::HostCore>(ZeltoSim::BuildHostConfiguration(options));
  }();
  static weftcore::Stream* const mesh = [] {
    weftcore::Stream* stream = nullptr;
    Require(host->OpenStream("mesh", &stream).ok() && stream != nullptr);
    return stream;
  }();
  return mesh;
}

bool GetAndRelease(const char* key, const uint8_t* input, size_t size) {
  void* reply = nullptr;
  size_t replySize = 0;
  if (!MeshStream()->GetSerializedProperty(key, input, size, &reply, &replySize).ok()) return false;
  Require(reply != nullptr && replySize != 0);
  Require(MeshStream()->ReleaseSerializedProperty(key, reply, replySize).ok());
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  const char* key = kKeys[(data[0] & 0x7F) % std::size(kKeys)];
  const uint8_t* record = size > 1 ? data + 1 : nullptr;
  if ((data[0] & 0x80) != 0) {
    GetAndRelease(key, record, size - 1);
  } else {
    MeshStream()->SetSerializedProperty(key, record, size - 1);
    Require(GetAndRelease(key, nullptr, 0));
  }
  return 0;
}
