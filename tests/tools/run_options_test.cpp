// Values of the options that need more than a number.
#include "run_options.h"

#include <gtest/gtest.h>

namespace zelto_cli {
namespace {

TEST(ParseMaskSpec, NameAlone) {
  MaskSpec mask;
  std::string error;
  ASSERT_TRUE(ParseMaskSpec("person", &mask, &error)) << error;
  EXPECT_EQ(mask.name, "person");
  EXPECT_FALSE(mask.isColorSource.has_value());
  EXPECT_FALSE(mask.isInvertMask);
}

TEST(ParseMaskSpec, SourceAndInversion) {
  MaskSpec mask;
  std::string error;
  ASSERT_TRUE(ParseMaskSpec("floor:depth:invert", &mask, &error)) << error;
  EXPECT_EQ(mask.name, "floor");
  EXPECT_EQ(mask.isColorSource, false);
  EXPECT_TRUE(mask.isInvertMask);
  ASSERT_TRUE(ParseMaskSpec("sky:invert:color", &mask, &error)) << error;
  EXPECT_EQ(mask.name, "sky");
  EXPECT_EQ(mask.isColorSource, true);
  EXPECT_TRUE(mask.isInvertMask);
}

TEST(ParseMaskSpec, Errors) {
  MaskSpec mask;
  std::string error;
  EXPECT_FALSE(ParseMaskSpec(":depth", &mask, &error));
  EXPECT_EQ(error, "':depth' has no mask name (NAME[:color|:depth][:invert])");
  EXPECT_FALSE(ParseMaskSpec("person:colour", &mask, &error));
  EXPECT_EQ(error, "'person:colour': unexpected 'colour' (NAME[:color|:depth][:invert])");
  EXPECT_FALSE(ParseMaskSpec("person:color:depth", &mask, &error));
  EXPECT_EQ(error, "'person:color:depth': unexpected 'depth' (NAME[:color|:depth][:invert])");
  EXPECT_FALSE(ParseMaskSpec("person:", &mask, &error));
  EXPECT_EQ(error, "'person:': unexpected '' (NAME[:color|:depth][:invert])");
}

TEST(ParseFrameRate, NumeratorWithOptionalDenominator) {
  FrameRate rate;
  std::string error;
  ASSERT_TRUE(ParseFrameRate("15", &rate, &error)) << error;
  EXPECT_EQ(rate.num, 15u);
  EXPECT_EQ(rate.denom, 1u);
  ASSERT_TRUE(ParseFrameRate("30000/1001", &rate, &error)) << error;
  EXPECT_EQ(rate.num, 30000u);
  EXPECT_EQ(rate.denom, 1001u);
  ASSERT_TRUE(ParseFrameRate("4294967295", &rate, &error)) << error;
  EXPECT_EQ(rate.num, 4294967295u);
}

TEST(ParseFrameRate, Errors) {
  FrameRate rate;
  std::string error;
  for (const char* text : {"", "x", "-1", "15/0", "15/", "/2", "4294967296", "1.5"}) {
    EXPECT_FALSE(ParseFrameRate(text, &rate, &error)) << text;
    EXPECT_EQ(error, "'" + std::string(text) +
                         "' is not NUM[/DEN] with unsigned 32-bit numbers and DEN > 0");
  }
}

TEST(ParseLogLevel, NamesAndNumbers) {
  int level = 0;
  std::string error;
  const std::pair<const char*, int> cases[] = {{"verbose", 2}, {"debug", 3}, {"info", 4},
                                               {"warn", 5},    {"error", 6}, {"silent", 8},
                                               {"2", 2},       {"7", 7},     {"8", 8}};
  for (const auto& [text, expected] : cases) {
    ASSERT_TRUE(ParseLogLevel(text, &level, &error)) << text;
    EXPECT_EQ(level, expected) << text;
  }
  for (const char* text : {"1", "9", "Debug", ""}) {
    EXPECT_FALSE(ParseLogLevel(text, &level, &error)) << text;
    EXPECT_EQ(error, "'" + std::string(text) +
                         "' is not a log level (verbose, debug, info, warn, error, silent or 2..8)");
  }
}

TEST(ParsePropertySetting, KeyAndObject) {
  PropertySetting setting;
  std::string error;
  ASSERT_TRUE(ParsePropertySetting(R"(kZeltoLogLevelKey={"logLevel": 3})", &setting, &error))
      << error;
  EXPECT_EQ(setting.key, "kZeltoLogLevelKey");
  EXPECT_EQ(setting.value.dump(), R"({"logLevel":3})");
  // Only the first '=' separates: JSON may hold more.
  ASSERT_TRUE(ParsePropertySetting(R"(k={"a":"x=y"})", &setting, &error)) << error;
  EXPECT_EQ(setting.key, "k");
  EXPECT_EQ(setting.value.dump(), R"({"a":"x=y"})");
}

TEST(ParsePropertySetting, Errors) {
  PropertySetting setting;
  std::string error;
  EXPECT_FALSE(ParsePropertySetting("kZeltoLogLevelKey", &setting, &error));
  EXPECT_EQ(error, "'kZeltoLogLevelKey' is not KEY=JSON");
  EXPECT_FALSE(ParsePropertySetting("={}", &setting, &error));
  EXPECT_EQ(error, "'={}' is not KEY=JSON");
  EXPECT_FALSE(ParsePropertySetting("k=[1]", &setting, &error));
  EXPECT_EQ(error, "'k=[1]': the value must be a JSON object (a property is a map)");
  EXPECT_FALSE(ParsePropertySetting("k={", &setting, &error));
  EXPECT_EQ(error,
            "'k={': invalid JSON: parse error at line 1, column 2: syntax error while parsing "
            "object key - unexpected end of input; expected string literal");
}

}  // namespace
}  // namespace zelto_cli
