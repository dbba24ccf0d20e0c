// Names of the component (Part 1.3).
#pragma once

namespace ZeltoMesh {

constexpr char kComponentName[] = "ZeltoMesh";  // log tag and status block
constexpr char kPortType[] = "mesh";            // the source type (Part 1.2)
constexpr char kRawDataTypeMesh[] = "kRawDataTypeMesh";

}  // namespace ZeltoMesh
