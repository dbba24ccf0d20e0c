// A point of the depth camera's space.
#pragma once

namespace Zelto {

struct ZeltoVector3_ {
  float x = 0;
  float y = 0;
  float z = 0;
};

}  // namespace Zelto
