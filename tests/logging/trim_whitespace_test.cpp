// Part 5.1, TrimWhitespace.
#include <gtest/gtest.h>

#include "logging/zelto_logger.h"

namespace {

TEST(LoggerTrimWhitespace, TextOfOnlyTabVerticalTabFormFeedAndBlankGivesEmptyString) {
  EXPECT_EQ(TrimWhitespace("\t\v\f "), "");
}

TEST(LoggerTrimWhitespace, BlankABlankBBlankGivesABlankB) { EXPECT_EQ(TrimWhitespace(" a b "), "a b"); }

TEST(LoggerTrimWhitespace, EmptyTextGivesEmptyString) { EXPECT_EQ(TrimWhitespace(""), ""); }

TEST(LoggerTrimWhitespace, AllSixWhitespaceCharactersAreTrimmedFromBothEnds) {
  EXPECT_EQ(TrimWhitespace(" \n\r\t\f\vx y\v\f\t\r\n "), "x y");
}

TEST(LoggerTrimWhitespace, OtherControlCharactersAndNulAreNotWhitespace) {
  EXPECT_EQ(TrimWhitespace(std::string("\0a\0", 3)), std::string("\0a\0", 3));
  EXPECT_EQ(TrimWhitespace("\x1b" "a "), "\x1b" "a");
  EXPECT_EQ(TrimWhitespace("\xA0" "a"), "\xA0" "a");
}

TEST(LoggerTrimWhitespace, TextWithoutWhitespaceIsReturnedWhole) {
  EXPECT_EQ(TrimWhitespace("loglevel=info"), "loglevel=info");
  EXPECT_EQ(TrimWhitespace("x"), "x");
}

}  // namespace
