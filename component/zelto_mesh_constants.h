// Names under which the component shows itself to hosts, clients and logs.
#pragma once

namespace ZeltoMesh {

constexpr char kComponentName[] = "ZeltoMesh";  // log tag and status block
constexpr char kPortType[] = "mesh";            // the source type
constexpr char kRawDataTypeMesh[] = "kRawDataTypeMesh";

}  // namespace ZeltoMesh
