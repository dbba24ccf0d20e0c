// Part 5.1, Initialize: the settings file found below Documents selects the
// level. Every test writes a real tree and constructs a fresh logger after.
#include <gtest/gtest.h>

#include "logging/zelto_logger.h"
#include "logging/temporary_documents.h"

namespace {

using zelto_test::ScopedEnvironment;
using zelto_test::TemporaryDirectory;
using zelto_test::TemporaryDocuments;

constexpr const char* kSettings = "zelto_log_settings";

TEST(LoggerSettingsFile, NoSettingsFileAnywhereUnderDocumentsLevelStays8AndWriteLogReturnsFalseForEveryLevel) {
  TemporaryDocuments documents;
  documents.WriteFile("notes.txt", "loglevel=verbose\n");
  documents.WriteFile("sub/zelto_log_settings.txt", "loglevel=verbose\n");
  ZeltoLogger logger;
  EXPECT_EQ(logger.GetLogLevel(), 8);
  for (int level = -1; level <= 9; ++level) {
    EXPECT_FALSE(logger.WriteLog(static_cast<ZeltoLogger::LogLevel>(level), "ZeltoMesh", "x"))
        << "level " << level;
  }
}

TEST(LoggerSettingsFile, FirstLineOfTwoBlanksMixedCaseLogLevelInfoAndCrLfMatchesLevelBecomes4) {
  TemporaryDocuments documents;
  documents.WriteFile(kSettings, "  LogLevel=Info\r\n");
  ZeltoLogger logger;
  EXPECT_EQ(logger.GetLogLevel(), ZeltoLogger::Info);
  EXPECT_EQ(logger.GetLogLevel(), 4);
}

TEST(LoggerSettingsFile, FirstLineEmptyAndSecondLineLoglevelErrorLeavesLevelUnchanged) {
  TemporaryDocuments documents;
  documents.WriteFile(kSettings, "\nloglevel=error\n");
  ZeltoLogger logger;
  EXPECT_EQ(logger.GetLogLevel(), 8);
}

TEST(LoggerSettingsFile, FirstLineOnlyCarriageReturnCountsAsEmptyAndLeavesLevelUnchanged) {
  TemporaryDocuments documents;
  documents.WriteFile(kSettings, "\r\nloglevel=error\n");
  ZeltoLogger logger;
  EXPECT_EQ(logger.GetLogLevel(), 8);
}

TEST(LoggerSettingsFile, FileNameDifferingOnlyInLetterCaseIsNotFound) {
  TemporaryDocuments documents;
  documents.WriteFile("Zelto_Log_Settings", "loglevel=error\n");
  documents.WriteFile("sub/ZELTO_LOG_SETTINGS", "loglevel=error\n");
  ZeltoLogger logger;
  EXPECT_EQ(logger.GetLogLevel(), 8);
}

TEST(LoggerSettingsFile, TwoMatchingFilesInDifferentSubdirectoriesTheFirstTheEnumeratorYieldsWins) {
  TemporaryDocuments documents;
  documents.WriteFile("a/zelto_log_settings", "loglevel=error\n");
  documents.WriteFile("b/zelto_log_settings", "loglevel=debug\n");
  ZeltoLogger logger;
  EXPECT_EQ(logger.GetLogLevel(), ZeltoLogger::Error);
}

TEST(LoggerSettingsFile, TwoMatchingFilesTheWalkOrderNotTheWritingOrderDecides) {
  TemporaryDocuments documents;
  documents.WriteFile("b/zelto_log_settings", "loglevel=error\n");
  documents.WriteFile("a/zelto_log_settings", "loglevel=debug\n");
  ZeltoLogger logger;
  EXPECT_EQ(logger.GetLogLevel(), ZeltoLogger::Debug);
}

// Pre-order and byte order: "A" (0x41) sorts before "a" (0x61), and a whole
// subtree is walked before its next sibling.
TEST(LoggerSettingsFile, WalkIsPreOrderInByteOrderOfNames) {
  TemporaryDocuments documents;
  documents.WriteFile("a/zelto_log_settings", "loglevel=error\n");
  documents.WriteFile("A/deep/er/zelto_log_settings", "loglevel=warn\n");
  documents.WriteFile("zelto_log_settings", "loglevel=debug\n");
  ZeltoLogger logger;
  EXPECT_EQ(logger.GetLogLevel(), ZeltoLogger::Warn);
}

TEST(LoggerSettingsFile, FileDirectlyInDocumentsIsFound) {
  TemporaryDocuments documents;
  documents.WriteFile(kSettings, "loglevel=verbose");
  ZeltoLogger logger;
  EXPECT_EQ(logger.GetLogLevel(), ZeltoLogger::Verbose);
}

// The enumerator yields directories too; one named like the settings file
// matches first, and opening it as a file reads nothing.
TEST(LoggerSettingsFile, DirectoryNamedLikeTheSettingsFileMatchesAndReadsNothing) {
  TemporaryDocuments documents;
  documents.MakeDirectory("a/zelto_log_settings");
  documents.WriteFile("b/zelto_log_settings", "loglevel=error\n");
  ZeltoLogger logger;
  EXPECT_EQ(logger.GetLogLevel(), 8);
}

TEST(LoggerSettingsFile, OnlyTheFirstLineCounts) {
  TemporaryDocuments documents;
  documents.WriteFile(kSettings, "loglevel=debug\nloglevel=error\n");
  ZeltoLogger logger;
  EXPECT_EQ(logger.GetLogLevel(), ZeltoLogger::Debug);
}

TEST(LoggerSettingsFile, InnerBlanksAroundTheEqualsSignMatchNothing) {
  TemporaryDocuments documents;
  documents.WriteFile(kSettings, "loglevel = debug\n");
  ZeltoLogger logger;
  EXPECT_EQ(logger.GetLogLevel(), 8);
}

TEST(LoggerSettingsFile, UnknownWordLeavesLevelUnchanged) {
  TemporaryDocuments documents;
  documents.WriteFile(kSettings, "loglevel=trace\n");
  ZeltoLogger logger;
  EXPECT_EQ(logger.GetLogLevel(), 8);
}

TEST(LoggerSettingsFile, EachSettingsWordSelectsItsLevel) {
  const std::pair<const char*, int> cases[] = {
      {"loglevel=verbose", 2}, {"loglevel=debug", 3}, {"loglevel=info", 4},
      {"loglevel=warn", 5},    {"loglevel=error", 6},
  };
  for (const auto& [line, expected] : cases) {
    TemporaryDocuments documents;
    documents.WriteFile(kSettings, std::string(line) + "\n");
    ZeltoLogger logger;
    EXPECT_EQ(logger.GetLogLevel(), expected) << line;
  }
}

TEST(LoggerSettingsFile, EachInstanceReadsTheFileWhenConstructedAndKeepsItsOwnLevel) {
  TemporaryDocuments documents;
  documents.WriteFile(kSettings, "loglevel=info\n");
  ZeltoLogger first;
  ZeltoLogger second;
  first.SetLogLevel(ZeltoLogger::Error);
  EXPECT_EQ(first.GetLogLevel(), ZeltoLogger::Error);
  EXPECT_EQ(second.GetLogLevel(), ZeltoLogger::Info);
}

TEST(LoggerSettingsFile, MissingDocumentsDirectoryLeavesLevel8) {
  TemporaryDocuments documents;
  ScopedEnvironment variable("ZELTO_DOCUMENTS_DIR");
  variable.Set(documents.path() + "/does_not_exist");
  ZeltoLogger logger;
  EXPECT_EQ(logger.GetLogLevel(), 8);
}

TEST(LoggerSettingsFile, WithoutZeltoDocumentsDirHomeDocumentsIsSearched) {
  TemporaryDirectory home;
  home.WriteFile("Documents/x/zelto_log_settings", "loglevel=warn\n");
  home.WriteFile("zelto_log_settings", "loglevel=error\n");  // outside Documents
  ScopedEnvironment documentsVariable("ZELTO_DOCUMENTS_DIR");
  ScopedEnvironment homeVariable("HOME");
  documentsVariable.Unset();
  homeVariable.Set(home.path());
  ZeltoLogger logger;
  EXPECT_EQ(logger.GetLogLevel(), ZeltoLogger::Warn);
}

TEST(LoggerSettingsFile, NeitherZeltoDocumentsDirNorHomeLeavesLevel8) {
  ScopedEnvironment documentsVariable("ZELTO_DOCUMENTS_DIR");
  ScopedEnvironment homeVariable("HOME");
  documentsVariable.Unset();
  homeVariable.Unset();
  ZeltoLogger logger;
  EXPECT_EQ(logger.GetLogLevel(), 8);
}

TEST(LoggerSettingsFile, InitializeAgainAppliesTheFileOverASetLevel) {
  TemporaryDocuments documents;
  documents.WriteFile(kSettings, "loglevel=warn\n");
  ZeltoLogger logger;
  logger.SetLogLevel(ZeltoLogger::Verbose);
  logger.Initialize();
  EXPECT_EQ(logger.GetLogLevel(), ZeltoLogger::Warn);
}

}  // namespace
