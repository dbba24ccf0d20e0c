// JSON <-> MessagePack of the command line's --set and --get.
#include "json_msgpack.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace zelto_cli {
namespace {

using Bytes = std::vector<uint8_t>;

Bytes Pack(const std::string& json_text) { return JsonToMsgpack(Json::parse(json_text)); }

Bytes Concat(std::initializer_list<Bytes> parts) {
  Bytes all;
  for (const Bytes& part : parts) all.insert(all.end(), part.begin(), part.end());
  return all;
}

Bytes Text(const std::string& text) { return Bytes(text.begin(), text.end()); }

std::string Unpack(const Bytes& bytes) { return MsgpackToJson(bytes.data(), bytes.size()).dump(); }

TEST(JsonToMsgpack, AlgorithmConfigIsTheRecordsMap) {
  EXPECT_EQ(Pack(R"({"meshReductionLevel":2,"resetTrianglePeriod":4})"),
            Concat({{0x82, 0xb2}, Text("meshReductionLevel"), {0x02, 0xb3},
                    Text("resetTrianglePeriod"), {0x04}}));
}

TEST(JsonToMsgpack, NonNegativeIntegersTakeTheShortestUnsignedForm) {
  EXPECT_EQ(Pack("0"), (Bytes{0x00}));
  EXPECT_EQ(Pack("127"), (Bytes{0x7f}));
  EXPECT_EQ(Pack("128"), (Bytes{0xcc, 0x80}));
  EXPECT_EQ(Pack("255"), (Bytes{0xcc, 0xff}));
  EXPECT_EQ(Pack("256"), (Bytes{0xcd, 0x01, 0x00}));
  EXPECT_EQ(Pack("65536"), (Bytes{0xce, 0x00, 0x01, 0x00, 0x00}));
  EXPECT_EQ(Pack("4294967296"), (Bytes{0xcf, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x00}));
}

TEST(JsonToMsgpack, NegativeIntegersTakeTheShortestSignedForm) {
  EXPECT_EQ(Pack("-1"), (Bytes{0xff}));
  EXPECT_EQ(Pack("-32"), (Bytes{0xe0}));
  EXPECT_EQ(Pack("-33"), (Bytes{0xd0, 0xdf}));
  EXPECT_EQ(Pack("-129"), (Bytes{0xd1, 0xff, 0x7f}));
  EXPECT_EQ(Pack("-32769"), (Bytes{0xd2, 0xff, 0xff, 0x7f, 0xff}));
}

TEST(JsonToMsgpack, FractionsAreFloat32) {
  EXPECT_EQ(Pack("1.5"), (Bytes{0xca, 0x3f, 0xc0, 0x00, 0x00}));
  EXPECT_EQ(Pack("0.1"), (Bytes{0xca, 0x3d, 0xcc, 0xcc, 0xcd}));
  EXPECT_EQ(Pack("-2.5"), (Bytes{0xca, 0xc0, 0x20, 0x00, 0x00}));
}

// msgpack-c's packer writes a float with a whole value as an integer, and so
// do the records' float fields; the record side converts it back to float.
TEST(JsonToMsgpack, WholeFloatsTakeTheIntegerFormAsMsgpackCPacksThem) {
  EXPECT_EQ(Pack("525.0"), (Bytes{0xcd, 0x02, 0x0d}));
  EXPECT_EQ(Pack("-3.0"), (Bytes{0xfd}));
}

TEST(JsonToMsgpack, ScalarsStringsAndArrays) {
  EXPECT_EQ(Pack("true"), (Bytes{0xc3}));
  EXPECT_EQ(Pack("false"), (Bytes{0xc2}));
  EXPECT_EQ(Pack("null"), (Bytes{0xc0}));
  EXPECT_EQ(Pack(R"("abc")"), (Bytes{0xa3, 'a', 'b', 'c'}));
  EXPECT_EQ(Pack('"' + std::string(32, 'x') + '"'),
            Concat({{0xd9, 0x20}, Text(std::string(32, 'x'))}));
  EXPECT_EQ(Pack("[1,[true]]"), (Bytes{0x92, 0x01, 0x91, 0xc3}));
}

TEST(JsonToMsgpack, ObjectsKeepTheOrderWritten) {
  EXPECT_EQ(Pack(R"({"b":1,"a":2})"), (Bytes{0x82, 0xa1, 'b', 0x01, 0xa1, 'a', 0x02}));
  EXPECT_EQ(Pack("{}"), (Bytes{0x80}));
}

TEST(JsonToMsgpack, MaskSettingsNestArraysOfMaps) {
  EXPECT_EQ(
      Pack(R"({"enabled":true,"maskInfo":[{"name":"person","isColorSource":true,"isInvertMask":false}],"maskThreshold":200})"),
      Concat({{0x83, 0xa7}, Text("enabled"), {0xc3, 0xa8}, Text("maskInfo"), {0x91, 0x83, 0xa4},
              Text("name"), {0xa6}, Text("person"), {0xad}, Text("isColorSource"), {0xc3, 0xac},
              Text("isInvertMask"), {0xc2, 0xad}, Text("maskThreshold"), {0xcc, 0xc8}}));
}

TEST(MsgpackToJson, FrameRateRecord) {
  EXPECT_EQ(Unpack(Concat({{0x82, 0xa3}, Text("num"), {0x1e, 0xa5}, Text("denom"), {0x01}})),
            R"({"num":30,"denom":1})");
}

TEST(MsgpackToJson, IntegerMapKeysBecomeTheirDecimalText) {
  EXPECT_EQ(Unpack(Concat({{0x81, 0xa8}, Text("channels"), {0x81, 0x00, 0x81, 0xa1}, Text("d"),
                            {0xa1}, Text("x")})),
            R"({"channels":{"0":{"d":"x"}}})");
}

TEST(MsgpackToJson, Float32PrintsItsShortestText) {
  EXPECT_EQ(Unpack({0xca, 0x3d, 0xcc, 0xcc, 0xcd}), "0.1");
  EXPECT_EQ(Unpack({0xca, 0x44, 0x03, 0x40, 0x00}), "525.0");
  EXPECT_EQ(Unpack({0xcb, 0x3f, 0xb9, 0x99, 0x99, 0x99, 0x99, 0x99, 0x9a}), "0.1");
}

TEST(MsgpackToJson, SignedAndUnsignedIntegers) {
  EXPECT_EQ(Unpack({0xd0, 0xdf}), "-33");
  EXPECT_EQ(Unpack({0xcf, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff}),
            "18446744073709551615");
}

TEST(MsgpackToJson, RoundTripKeepsEveryValue) {
  const std::string text =
      R"({"enabled":false,"maskInfo":[{"name":"a","isColorSource":false,"isInvertMask":true}],"maskThreshold":55,"f":-2.5,"n":null})";
  EXPECT_EQ(Unpack(Pack(text)), text);
}

TEST(MsgpackToJson, MalformedBytesThrow) {
  EXPECT_THROW(Unpack({0x82, 0xa1, 'a'}), std::runtime_error);  // truncated map
  EXPECT_THROW(Unpack({0xc1}), std::runtime_error);              // never used byte
  EXPECT_THROW(MsgpackToJson(nullptr, 0), std::runtime_error);
}

}  // namespace
}  // namespace zelto_cli
