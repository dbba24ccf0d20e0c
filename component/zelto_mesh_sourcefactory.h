// ZeltoMeshSourceFactory: offers the single source type "mesh".
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "weftcore/stream_source_factory.h"

class ZeltoMeshSourceFactory final : public weftcore::StreamSourceFactory {
 public:
  ZeltoMeshSourceFactory() = default;
  ~ZeltoMeshSourceFactory() override = default;

  // Appends ("mesh", 0); `args` is ignored, earlier entries are kept.
  void GetSupportedList(const weftcore::ComponentArgument& args,
                        std::vector<std::pair<std::string, int>>* list) override;
  // A new ZeltoMeshStreamSource for exactly "mesh"; any other type is OK and
  // leaves `*source` untouched.
  weftcore::Status CreateSource(const std::pair<std::string, int>& type,
                                weftcore::StreamSource** source) override;
  // ReleaseSource: the base default (destroys the source).
};
