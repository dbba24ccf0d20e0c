// The mesh algorithm configuration record (Part 2.2).
#pragma once

#include <cstdint>

#include "weftcore/serialize.h"

namespace ZeltoMesh {

constexpr char kZeltoMeshAlgorithmConfigKey[] = "kZeltoMeshAlgorithmConfigKey";

struct ZeltoMeshAlgorithmConfigProperty_ {
  int32_t meshReductionLevel = 0;
  int32_t resetTrianglePeriod = 0;
  MSGPACK_DEFINE_MAP(meshReductionLevel, resetTrianglePeriod);
};

}  // namespace ZeltoMesh
