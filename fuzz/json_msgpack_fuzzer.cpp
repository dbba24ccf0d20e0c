// The command-line host's conversions. As MessagePack, the input is a reply
// the CLI prints: it converts or fails with std::runtime_error. As JSON, it is
// a property the user typed: packed, printed back as the CLI prints replies
// and packed again, it gives the same bytes, so a printed value can be typed
// back in.
#include <cstddef>
#include <cstdint>
#include <stdexcept>

#include "fuzz/require.h"
#include "json_msgpack.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  try {
    zelto_cli::MsgpackToJson(data, size);
  } catch (const std::runtime_error&) {
  }
  const zelto_cli::Json typed = zelto_cli::Json::parse(data, data + size, nullptr, false);
  if (typed.is_discarded()) return 0;
  const auto packed = zelto_cli::JsonToMsgpack(typed);
  const zelto_cli::Json printed = zelto_cli::MsgpackToJson(packed.data(), packed.size());
  Require(zelto_cli::JsonToMsgpack(printed) == packed);
  return 0;
}
