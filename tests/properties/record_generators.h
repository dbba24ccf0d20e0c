// rapidcheck generators for every property record (Parts 2.2, 3.4, 4.2, 4.3).
#pragma once

#include <rapidcheck.h>

#include <cstdint>
#include <cstring>

#include "properties/record_equality.h"

namespace zelto_test {

// Any float bit pattern except signalling NaNs, whose quiet bit the float
// to double to float path of the decoder may set.
inline rc::Gen<float> AnyFloat() {
  return rc::gen::map(rc::gen::arbitrary<uint32_t>(), [](uint32_t bits) {
    const bool nan = (bits & 0x7F800000u) == 0x7F800000u && (bits & 0x007FFFFFu) != 0;
    if (nan) bits |= 0x00400000u;
    float value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
  });
}

}  // namespace zelto_test

namespace rc {

template <>
struct Arbitrary<ZeltoLogger::LogLevel> {
  static Gen<ZeltoLogger::LogLevel> arbitrary() {
    return gen::cast<ZeltoLogger::LogLevel>(gen::arbitrary<int32_t>());
  }
};

template <>
struct Arbitrary<Zelto::RunMode> {
  static Gen<Zelto::RunMode> arbitrary() {
    return gen::cast<Zelto::RunMode>(gen::arbitrary<uint8_t>());
  }
};

template <>
struct Arbitrary<Zelto::ZeltoLogLevelProperty_> {
  static Gen<Zelto::ZeltoLogLevelProperty_> arbitrary() {
    using T = Zelto::ZeltoLogLevelProperty_;
    return gen::build<T>(gen::set(&T::logLevel));
  }
};

template <>
struct Arbitrary<ZeltoMesh::ZeltoMeshAlgorithmConfigProperty_> {
  static Gen<ZeltoMesh::ZeltoMeshAlgorithmConfigProperty_> arbitrary() {
    using T = ZeltoMesh::ZeltoMeshAlgorithmConfigProperty_;
    return gen::build<T>(gen::set(&T::meshReductionLevel), gen::set(&T::resetTrianglePeriod));
  }
};

template <>
struct Arbitrary<ZeltoSegmentation::ZeltoSegmentationMaskInfo_> {
  static Gen<ZeltoSegmentation::ZeltoSegmentationMaskInfo_> arbitrary() {
    using T = ZeltoSegmentation::ZeltoSegmentationMaskInfo_;
    return gen::build<T>(gen::set(&T::name), gen::set(&T::isColorSource),
                         gen::set(&T::isInvertMask));
  }
};

template <>
struct Arbitrary<ZeltoMesh::ZeltoMeshMaskSettingsProperty_> {
  static Gen<ZeltoMesh::ZeltoMeshMaskSettingsProperty_> arbitrary() {
    using T = ZeltoMesh::ZeltoMeshMaskSettingsProperty_;
    return gen::build<T>(gen::set(&T::enabled), gen::set(&T::maskInfo),
                         gen::set(&T::maskThreshold));
  }
};

template <>
struct Arbitrary<weftcore::ChannelInfo> {
  static Gen<weftcore::ChannelInfo> arbitrary() {
    using T = weftcore::ChannelInfo;
    return gen::build<T>(gen::set(&T::raw_data_type), gen::set(&T::description));
  }
};

template <>
struct Arbitrary<weftcore::ChannelInfoProperty> {
  static Gen<weftcore::ChannelInfoProperty> arbitrary() {
    using T = weftcore::ChannelInfoProperty;
    return gen::build<T>(gen::set(&T::channels));
  }
};

template <>
struct Arbitrary<weftcore::FrameRateProperty> {
  static Gen<weftcore::FrameRateProperty> arbitrary() {
    using T = weftcore::FrameRateProperty;
    return gen::build<T>(gen::set(&T::num), gen::set(&T::denom));
  }
};

template <>
struct Arbitrary<ZeltoTof::InternalParameter_> {
  static Gen<ZeltoTof::InternalParameter_> arbitrary() {
    using T = ZeltoTof::InternalParameter_;
    const auto f = zelto_test::AnyFloat;
    return gen::build<T>(gen::set(&T::fx, f()), gen::set(&T::fy, f()), gen::set(&T::cx, f()),
                         gen::set(&T::cy, f()));
  }
};

template <>
struct Arbitrary<ZeltoTof::Matrix_> {
  static Gen<ZeltoTof::Matrix_> arbitrary() {
    using T = ZeltoTof::Matrix_;
    const auto f = zelto_test::AnyFloat;
    return gen::build<T>(gen::set(&T::a, f()), gen::set(&T::b, f()), gen::set(&T::c, f()),
                         gen::set(&T::d, f()), gen::set(&T::e, f()), gen::set(&T::f, f()),
                         gen::set(&T::g, f()), gen::set(&T::h, f()), gen::set(&T::i, f()));
  }
};

template <>
struct Arbitrary<ZeltoTof::Vector_> {
  static Gen<ZeltoTof::Vector_> arbitrary() {
    using T = ZeltoTof::Vector_;
    const auto f = zelto_test::AnyFloat;
    return gen::build<T>(gen::set(&T::x, f()), gen::set(&T::y, f()), gen::set(&T::z, f()));
  }
};

template <>
struct Arbitrary<ZeltoTof::ZeltoTofCalibrationSettingsProperty_> {
  static Gen<ZeltoTof::ZeltoTofCalibrationSettingsProperty_> arbitrary() {
    using T = ZeltoTof::ZeltoTofCalibrationSettingsProperty_;
    return gen::build<T>(gen::set(&T::colorWidth), gen::set(&T::colorHeight),
                         gen::set(&T::depthWidth), gen::set(&T::depthHeight),
                         gen::set(&T::isCalibrated), gen::set(&T::c), gen::set(&T::d),
                         gen::set(&T::R), gen::set(&T::T));
  }
};

template <>
struct Arbitrary<ZeltoTof::ZeltoTofProcessTargetsProperty_> {
  static Gen<ZeltoTof::ZeltoTofProcessTargetsProperty_> arbitrary() {
    using T = ZeltoTof::ZeltoTofProcessTargetsProperty_;
    return gen::build<T>(gen::set(&T::processDepth), gen::set(&T::processConfidence),
                         gen::set(&T::processPointCloud));
  }
};

template <>
struct Arbitrary<Zelto::ZeltoRuntimeSettingsProperty_> {
  static Gen<Zelto::ZeltoRuntimeSettingsProperty_> arbitrary() {
    using T = Zelto::ZeltoRuntimeSettingsProperty_;
    return gen::build<T>(gen::set(&T::runMode), gen::set(&T::isRemoteServer),
                         gen::set(&T::isUsingArFoundation));
  }
};

template <>
struct Arbitrary<ZeltoTof::ZeltoTofCamera2IntrinsicsProperty_> {
  static Gen<ZeltoTof::ZeltoTofCamera2IntrinsicsProperty_> arbitrary() {
    using T = ZeltoTof::ZeltoTofCamera2IntrinsicsProperty_;
    const auto f = zelto_test::AnyFloat;
    return gen::build<T>(gen::set(&T::fx, f()), gen::set(&T::fy, f()), gen::set(&T::cx, f()),
                         gen::set(&T::cy, f()), gen::set(&T::k1, f()), gen::set(&T::k2, f()),
                         gen::set(&T::k3, f()), gen::set(&T::p1, f()), gen::set(&T::p2, f()));
  }
};

template <>
struct Arbitrary<ZeltoTof::ZeltoTofCamera2ConfigurationProperty_> {
  static Gen<ZeltoTof::ZeltoTofCamera2ConfigurationProperty_> arbitrary() {
    using T = ZeltoTof::ZeltoTofCamera2ConfigurationProperty_;
    const auto f = zelto_test::AnyFloat;
    return gen::build<T>(
        gen::set(&T::isCalibrated), gen::set(&T::cameraId), gen::set(&T::colorCameraId),
        gen::set(&T::uid), gen::set(&T::width), gen::set(&T::height),
        gen::set(&T::frameRate, f()), gen::set(&T::unambiguousRange, f()),
        gen::set(&T::lensFacing), gen::set(&T::intrinsics), gen::set(&T::name),
        gen::set(&T::isDepthPrivate), gen::set(&T::isFusion), gen::set(&T::fusionSourceWidth),
        gen::set(&T::fusionSourceHeight));
  }
};

template <>
struct Arbitrary<ZeltoSegmentation::ZeltoSegmentationMaskDataProperty_> {
  static Gen<ZeltoSegmentation::ZeltoSegmentationMaskDataProperty_> arbitrary() {
    using T = ZeltoSegmentation::ZeltoSegmentationMaskDataProperty_;
    return gen::build<T>(gen::set(&T::name), gen::set(&T::maskDataAddress),
                         gen::set(&T::maskDataSize), gen::set(&T::maskDataWidth),
                         gen::set(&T::maskDataHeight), gen::set(&T::maskDataTimestamp),
                         gen::set(&T::isColorSource), gen::set(&T::isInvertMask));
  }
};

template <>
struct Arbitrary<ZeltoSegmentation::ZeltoSegmentationMaskDataListProperty_> {
  static Gen<ZeltoSegmentation::ZeltoSegmentationMaskDataListProperty_> arbitrary() {
    using T = ZeltoSegmentation::ZeltoSegmentationMaskDataListProperty_;
    return gen::build<T>(gen::set(&T::data));
  }
};

}  // namespace rc
