// JsonToMsgpack and MsgpackToJson over msgpack-c's packer and unpacker.
#include "json_msgpack.h"

#include <charconv>
#include <cstdlib>
#include <sstream>
#include <stdexcept>
#include <string>

#include <msgpack.hpp>

namespace zelto_cli {
namespace {

// Far deeper than any record; shallow enough for ToJson's recursion.
constexpr size_t kMaxDepth = 1000;
// The one float msgpack-c's packer mishandles (see Pack).
constexpr float kTwoToThe64 = 18446744073709551616.0f;

class ByteSink {
 public:
  explicit ByteSink(std::vector<uint8_t>* bytes) : bytes_(bytes) {}
  void write(const char* data, size_t count) {
    bytes_->insert(bytes_->end(), data, data + count);
  }

 private:
  std::vector<uint8_t>* bytes_;
};

void Pack(const Json& value, ByteSink& sink, msgpack::packer<ByteSink>& packer) {
  switch (value.type()) {
    case Json::value_t::null:
    case Json::value_t::discarded:
      packer.pack_nil();
      break;
    case Json::value_t::boolean:
      packer.pack(value.get<bool>());
      break;
    case Json::value_t::number_unsigned:
      packer.pack_uint64(value.get<uint64_t>());
      break;
    case Json::value_t::number_integer: {
      const int64_t number = value.get<int64_t>();
      if (number >= 0) {
        packer.pack_uint64(static_cast<uint64_t>(number));
      } else {
        packer.pack_int64(number);
      }
      break;
    }
    case Json::value_t::number_float: {
      const float number = static_cast<float>(value.get<double>());
      if (number == kTwoToThe64) {
        // msgpack-c tests whether a float is whole by converting it to
        // uint64, which cannot hold 2^64 (the float that uint64's largest
        // value rounds to, and a JSON integer just past it): float 32 as is.
        const char bytes[5] = {static_cast<char>(0xCA), 0x5F, static_cast<char>(0x80), 0, 0};
        sink.write(bytes, sizeof bytes);
      } else {
        packer.pack_float(number);
      }
      break;
    }
    case Json::value_t::string:
      packer.pack(value.get_ref<const std::string&>());
      break;
    case Json::value_t::binary: {
      const auto& binary = value.get_binary();
      packer.pack_bin(static_cast<uint32_t>(binary.size()));
      packer.pack_bin_body(reinterpret_cast<const char*>(binary.data()),
                           static_cast<uint32_t>(binary.size()));
      break;
    }
    case Json::value_t::array:
      packer.pack_array(static_cast<uint32_t>(value.size()));
      for (const Json& element : value) Pack(element, sink, packer);
      break;
    case Json::value_t::object:
      packer.pack_map(static_cast<uint32_t>(value.size()));
      for (const auto& [key, element] : value.items()) {
        packer.pack(key);
        Pack(element, sink, packer);
      }
      break;
  }
}

// The double nearest to the shortest decimal text of `number`, so that 0.1f
// prints as 0.1 and not as 0.10000000149011612.
double ShortestDouble(float number) {
  char text[32];
  const auto result = std::to_chars(text, text + sizeof text - 1, number);
  *result.ptr = '\0';
  return std::strtod(text, nullptr);
}

std::string KeyText(const msgpack::object& key) {
  switch (key.type) {
    case msgpack::type::STR:
      return std::string(key.via.str.ptr, key.via.str.size);
    case msgpack::type::POSITIVE_INTEGER:
      return std::to_string(key.via.u64);
    case msgpack::type::NEGATIVE_INTEGER:
      return std::to_string(key.via.i64);
    default: {
      std::ostringstream text;
      text << key;
      return text.str();
    }
  }
}

Json ToJson(const msgpack::object& object) {
  switch (object.type) {
    case msgpack::type::NIL:
      return nullptr;
    case msgpack::type::BOOLEAN:
      return object.via.boolean;
    case msgpack::type::POSITIVE_INTEGER:
      return object.via.u64;
    case msgpack::type::NEGATIVE_INTEGER:
      return object.via.i64;
    case msgpack::type::FLOAT32:
      return ShortestDouble(static_cast<float>(object.via.f64));
    case msgpack::type::FLOAT64:
      return object.via.f64;
    case msgpack::type::STR:
      return std::string(object.via.str.ptr, object.via.str.size);
    case msgpack::type::BIN: {
      const auto* first = reinterpret_cast<const uint8_t*>(object.via.bin.ptr);
      return Json::binary(std::vector<uint8_t>(first, first + object.via.bin.size));
    }
    case msgpack::type::ARRAY: {
      Json array = Json::array();
      for (uint32_t i = 0; i < object.via.array.size; ++i) {
        array.push_back(ToJson(object.via.array.ptr[i]));
      }
      return array;
    }
    case msgpack::type::MAP: {
      Json map = Json::object();
      for (uint32_t i = 0; i < object.via.map.size; ++i) {
        const msgpack::object_kv& entry = object.via.map.ptr[i];
        map[KeyText(entry.key)] = ToJson(entry.val);
      }
      return map;
    }
    case msgpack::type::EXT:
      return Json{{"ext", object.via.ext.type()}, {"size", object.via.ext.size}};
  }
  throw std::runtime_error("unknown MessagePack type");
}

}  // namespace

std::vector<uint8_t> JsonToMsgpack(const Json& value) {
  std::vector<uint8_t> bytes;
  ByteSink sink(&bytes);
  msgpack::packer<ByteSink> packer(sink);
  Pack(value, sink, packer);
  return bytes;
}

Json MsgpackToJson(const uint8_t* bytes, size_t size) {
  if (bytes == nullptr || size == 0) throw std::runtime_error("no MessagePack bytes");
  try {
    // No count may claim more elements or bytes than the reply has, so a
    // damaged header cannot make the CLI reserve gigabytes; nesting stops at
    // kMaxDepth because printing walks the object recursively.
    const msgpack::unpack_limit limits(size, size, size, size, size, kMaxDepth);
    const msgpack::object_handle handle =
        msgpack::unpack(reinterpret_cast<const char*>(bytes), size, nullptr, nullptr, limits);
    return ToJson(handle.get());
  } catch (const msgpack::unpack_error& error) {
    throw std::runtime_error(std::string("malformed MessagePack: ") + error.what());
  }
}

}  // namespace zelto_cli
