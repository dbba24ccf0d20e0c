// The mesh algorithm configuration clients read and write as a MessagePack
// map under kZeltoMeshAlgorithmConfigKey: the reduction level (every
// (level + 1)-th pixel of every (level + 1)-th row becomes a vertex) and the
// period of the frames whose cell diagonals are re-fitted to the depths.
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
