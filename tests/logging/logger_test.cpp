// ZeltoLogger as users and the host see it: which settings file sets the level, how its
// first line reads, and which records reach the platform log, with which type and text.
#include <gtest/gtest.h>
#include <stdlib.h>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include "logging/zelto_logger.h"
#include "support/log_capture.h"

namespace {

ZeltoLogger::LogLevel Level(int value) { return static_cast<ZeltoLogger::LogLevel>(value); }

// A throw-away Documents tree. At the end it is removed, and ZELTO_DOCUMENTS_DIR
// and HOME, which lead the logger to a Documents directory, are as they were.
class TemporaryDocuments {
 public:
  TemporaryDocuments() { mkdtemp(root_.data()); }
  ~TemporaryDocuments() {
    for (int i : {0, 1}) Set(i, saved_[i] ? saved_[i]->c_str() : nullptr);
    std::error_code ignored;
    std::filesystem::remove_all(root_, ignored);
  }
  // ZELTO_DOCUMENTS_DIR: `documentsDir` below the tree ("" stays empty, null unsets); HOME: the tree.
  void Point(const char* documentsDir, bool home) const {
    Set(0, documentsDir && *documentsDir ? (root_ + "/" + documentsDir).c_str() : documentsDir);
    Set(1, home ? root_.c_str() : nullptr);
  }
  void Add(const std::string& relative, const std::string& content) const {
    const std::filesystem::path file = std::filesystem::path(root_) / relative;
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << content;
  }
 private:
  static constexpr const char* kNames[2] = {"ZELTO_DOCUMENTS_DIR", "HOME"};
  static void Set(int i, const char* value) { value ? setenv(kNames[i], value, 1) : unsetenv(kNames[i]); }
  static std::optional<std::string> Get(int i) {
    return getenv(kNames[i]) ? std::optional<std::string>(getenv(kNames[i])) : std::nullopt;
  }
  std::string root_ = (std::filesystem::temp_directory_path() / "zelto_documents_XXXXXX").string();
  std::optional<std::string> saved_[2] = {Get(0), Get(1)};
};

// Which file below Documents counts, and how its first line reads.
TEST(Logger, StartsAtTheLevelOfTheFirstSettingsFileBelowDocuments) {
  using Tree = std::vector<std::pair<std::string, std::string>>;  // path, content
  const std::string e = "loglevel=error", settings = "zelto_log_settings";
  const auto only = [&](const std::string& content) { return Tree{{settings, content}}; };
  const struct Case { const char* name; Tree tree; int level; const char* documentsDir = "."; bool home = true; } cases[] = {
      {"no settings file", {{"notes.txt", e}, {"sub/zelto_log_settings.txt", e}}, 8},
      {"blanks, capitals and CR LF", only("  LogLevel=Info\r\n"), 4}, {"silent", only("loglevel=silent"), 8},
      {"verbose, no final newline", only("loglevel=verbose"), 2}, {"debug", only("loglevel=debug"), 3},
      {"info", only("loglevel=info"), 4}, {"warn", only("loglevel=warn"), 5}, {"CR anywhere", only("log\rlevel=er\rror\r"), 6},
      {"blanks of every kind", only(" \t\f\vLOGLEVEL=WARN\v\f\t "), 5}, {"only blanks", only("\t\v\f \n" + e), 8},
      {"inner blanks", only("loglevel = debug"), 8}, {"other control characters", only("\x1bloglevel=debug"), 8},
      {"a prefix", only("loglevel=debu"), 8}, {"longer", only("loglevel=debugx"), 8}, {"unknown word", only("loglevel=trace"), 8},
      {"only the first line counts", only("loglevel=debug\n" + e), 3}, {"an empty first line", only("\r\n" + e), 8},
      {"the name is case-sensitive", {{"Zelto_Log_Settings", e}, {"sub/ZELTO_LOG_SETTINGS", e}}, 8},
      {"walk order, not writing order", {{"b/" + settings, e}, {"a/" + settings, "loglevel=debug"}}, 3},
      {"pre-order walk in byte order", {{settings, e}, {"a/" + settings, e}, {"A/deep/er/" + settings, "loglevel=warn"}}, 5},
      {"a directory of that name matches, reads nothing", {{"a/" + settings + "/" + settings, e}, {"b/" + settings, e}}, 8},
      {"Documents missing", only(e), 8, "missing"},
      {"$HOME/Documents by default", {{"Documents/x/" + settings, "loglevel=warn"}, {"A/" + settings, e}}, 5, nullptr},
      {"$HOME/Documents for an empty variable", {{"Documents/" + settings, e}}, 6, ""},
      {"neither variable", {{settings, e}, {"Documents/" + settings, e}}, 8, nullptr, false}};
  for (const Case& row : cases) {
    SCOPED_TRACE(row.name);
    TemporaryDocuments documents;
    for (const auto& [path, content] : row.tree) documents.Add(path, content);
    documents.Point(row.documentsDir, row.home);
    ZeltoLogger logger, other;
    other.SetLogLevel(Level(0));  // each module's logger has a level of its own
    EXPECT_EQ(logger.GetLogLevel(), row.level);
  }
}

// Per message level 0 to 8, what reaches the platform log: '.' nothing, else
// the record's platform type: 'i' info, 'd' debug, 'e' error, '0' default.
TEST(Logger, WritesTheFiveMessageLevelsAtOrAboveTheThresholdWithTheirPlatformTypes) {
  const struct Case { int threshold; bool force; const char* types; } cases[] = {
      {8, false, "........."}, {2, false, "..iidde.."}, {4, false, "....dde.."} /* 7 is no message level */,
      {6, false, "......e.."}, {7, false, "........."}, {0, false, "..iidde.."}, {-5, false, "..iidde.."},
      {8, true, "00iidde00"} /* ForceWriteLog ignores the threshold */};
  for (const Case& row : cases) {
    SCOPED_TRACE(testing::Message() << "threshold " << row.threshold << (row.force ? ", forced" : ""));
    zelto_test::LogCapture capture;
    ZeltoLogger logger;
    logger.SetLogLevel(Level(row.threshold));
    std::vector<zelto_test::LogRecord> expected;
    for (int level = 0; level <= 8; ++level) {
      const bool written = row.force ? logger.ForceWriteLog(Level(level), "a tag", "level %d", level)
                                     : logger.WriteLog(Level(level), "a tag", "level %d", level);
      const char type = row.types[level];
      EXPECT_EQ(written, type != '.') << level;
      const int platformType = type == 'i' ? 1 : type == 'd' ? 2 : type == 'e' ? 16 : 0;
      if (type != '.') expected.push_back({platformType, "a tag", "level " + std::to_string(level)});
    }
    EXPECT_EQ(capture.records(), expected);
  }
}

TEST(Logger, WritesMessagesOfAnyLengthAndAnUnformattableOneAsNull) {
  zelto_test::LogCapture capture;
  ZeltoLogger logger;
  logger.SetLogLevel(ZeltoLogger::Verbose);
  const std::string body = "A" + std::string(199998, 'm') + "Z";
  EXPECT_TRUE(logger.WriteLog(ZeltoLogger::Error, "ZeltoMesh", "<%s>", body.c_str()));
  const wchar_t unconvertible[] = {0x4E2D, 0};  // beyond what the "C" locale can convert
  EXPECT_TRUE(logger.WriteLog(ZeltoLogger::Error, "ZeltoMesh", "%ls", unconvertible));
  const std::vector<zelto_test::LogRecord> expected = {{16, "ZeltoMesh", "<" + body + ">"}, {16, "ZeltoMesh", "(null)"}};
  EXPECT_EQ(capture.records(), expected);
}

}  // namespace
