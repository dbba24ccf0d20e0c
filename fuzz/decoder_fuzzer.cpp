// Bytes from clients and upstream streams into every property record. The
// first byte picks the record type; the rest is a stream of objects, decoded
// one after the other as the decoder's offset moves on. A failed object
// leaves the offset where it was; an accepted one encodes to bytes that
// decode to the very same record.
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <vector>

#include "fuzz/require.h"
#include "masking/mask_settings_property.h"
#include "mesh/mesh_algorithm_config_property.h"
#include "properties/zelto_log_level_property.h"
#include "properties/zelto_runtime_settings_property.h"
#include "properties/zelto_segmentation_properties.h"
#include "properties/zelto_tof_properties.h"
#include "weftcore/framework_properties.h"

namespace {

template <typename T>
std::vector<uint8_t> Encode(const T& record) {
  weftcore::serialize::SerializedBuffer buffer;
  Require(weftcore::serialize::MsgPackEncoder(&buffer).Push(record).ok());
  return std::vector<uint8_t>(buffer.data(), buffer.data() + buffer.size());
}

template <typename T>
void DecodeStream(const uint8_t* data, size_t size) {
  weftcore::serialize::MsgPackDecoder decoder(data, size);
  for (;;) {
    const size_t before = decoder.offset();
    T record{};
    if (!decoder.Pop(record).ok()) return Require(decoder.offset() == before);
    Require(decoder.offset() > before && decoder.offset() <= size);
    const std::vector<uint8_t> encoded = Encode(record);
    T again{};
    weftcore::serialize::MsgPackDecoder reread(encoded.data(), encoded.size());
    Require(reread.Pop(again).ok() && reread.offset() == encoded.size());
    Require(Encode(again) == encoded);
  }
}

constexpr void (*kRecords[])(const uint8_t*, size_t) = {
    DecodeStream<weftcore::FrameRateProperty>,
    DecodeStream<weftcore::ChannelInfoProperty>,
    DecodeStream<Zelto::ZeltoLogLevelProperty_>,
    DecodeStream<Zelto::ZeltoRuntimeSettingsProperty_>,
    DecodeStream<ZeltoMesh::ZeltoMeshAlgorithmConfigProperty_>,
    DecodeStream<ZeltoMesh::ZeltoMeshMaskSettingsProperty_>,
    DecodeStream<ZeltoSegmentation::ZeltoSegmentationMaskDataListProperty_>,
    DecodeStream<ZeltoTof::ZeltoTofCalibrationSettingsProperty_>,
    DecodeStream<ZeltoTof::ZeltoTofProcessTargetsProperty_>,
    DecodeStream<ZeltoTof::ZeltoTofCamera2ConfigurationProperty_>,
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > 0) kRecords[data[0] % std::size(kRecords)](data + 1, size - 1);
  return 0;
}
