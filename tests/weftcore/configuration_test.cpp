#include "weftcore/host/configuration.h"

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

#include <gtest/gtest.h>

namespace {

using weftcore::Status;
using weftcore::host::HostConfiguration;
using weftcore::host::LoadConfigurationFile;
using weftcore::host::ParseConfiguration;

constexpr char kValid[] = R"({
  "components": {
    "mesh_component": {"library": "component_zelto_mesh",
                       "args": {"mode": "fast", "level": 5, "verbose": true}},
    "sim": {"library": "/opt/lib/libcomponent_zelto_sim.so"}
  },
  "streams": {
    "mesh": {"component": "mesh_component", "type": "mesh"},
    "zelto_tof_camera2_stream": {"component": "sim", "type": "tof"}
  }
})";

// The error a configuration text yields; the output must stay untouched.
Status ParseError(const std::string& text) {
  HostConfiguration configuration;
  configuration.streams["untouched"] = {"c", "t"};
  Status status = ParseConfiguration(text, &configuration);
  EXPECT_EQ(configuration.streams.size(), 1u);
  EXPECT_EQ(configuration.streams.count("untouched"), 1u);
  EXPECT_TRUE(status.IsError());
  EXPECT_EQ(status.level(), 1);
  EXPECT_EQ(status.block(), "core");
  return status;
}

TEST(Configuration, ParsesComponentsWithArgumentsAndStreams) {
  HostConfiguration configuration;
  ASSERT_TRUE(ParseConfiguration(kValid, &configuration).ok());
  ASSERT_EQ(configuration.components.size(), 2u);
  const auto& mesh = configuration.components.at("mesh_component");
  EXPECT_EQ(mesh.library, "component_zelto_mesh");
  EXPECT_EQ(mesh.args.values, (std::map<std::string, std::string>{
                                  {"level", "5"}, {"mode", "fast"}, {"verbose", "true"}}));
  EXPECT_EQ(configuration.components.at("sim").library, "/opt/lib/libcomponent_zelto_sim.so");
  EXPECT_TRUE(configuration.components.at("sim").args.values.empty());
  ASSERT_EQ(configuration.streams.size(), 2u);
  EXPECT_EQ(configuration.streams.at("mesh").component, "mesh_component");
  EXPECT_EQ(configuration.streams.at("mesh").type, "mesh");
  EXPECT_EQ(configuration.streams.at("zelto_tof_camera2_stream").component, "sim");
  EXPECT_EQ(configuration.streams.at("zelto_tof_camera2_stream").type, "tof");
}

TEST(Configuration, ComponentsMayBeAbsentForInProcessComponents) {
  HostConfiguration configuration;
  ASSERT_TRUE(
      ParseConfiguration(R"({"streams": {"s": {"component": "c", "type": "t"}}})", &configuration)
          .ok());
  EXPECT_TRUE(configuration.components.empty());
  EXPECT_EQ(configuration.streams.at("s").component, "c");
}

TEST(Configuration, MalformedJsonFailsWithCause2NamingTheParseError) {
  const Status status = ParseError(R"({"streams": )");
  EXPECT_EQ(status.cause(), 2);
  const std::string prefix = "configuration is not valid JSON: [json.exception.parse_error.101] "
                             "parse error at line 1, column 13: ";
  EXPECT_EQ(status.message().substr(0, prefix.size()), prefix) << status.message();
}

TEST(Configuration, EmptyTextIsMalformed) {
  EXPECT_EQ(ParseError("").message().rfind("configuration is not valid JSON: ", 0), 0u);
}

TEST(Configuration, TopLevelMustBeAnObject) {
  EXPECT_EQ(ParseError("[1, 2]").message(), "configuration must be a JSON object");
}

TEST(Configuration, MissingStreamsIsAnError) {
  EXPECT_EQ(ParseError(R"({"components": {}})").message(), R"(configuration has no "streams")");
}

TEST(Configuration, StreamsMustBeAnObject) {
  EXPECT_EQ(ParseError(R"({"streams": []})").message(), R"("streams" must be an object)");
}

TEST(Configuration, StreamWithoutTypeNamesTheStreamAndTheField) {
  EXPECT_EQ(ParseError(R"({"streams": {"mesh": {"component": "c"}}})").message(),
            R"(stream "mesh" has no "type")");
}

TEST(Configuration, StreamWithoutComponentNamesTheStreamAndTheField) {
  EXPECT_EQ(ParseError(R"({"streams": {"mesh": {"type": "mesh"}}})").message(),
            R"(stream "mesh" has no "component")");
}

TEST(Configuration, StreamFieldOfTheWrongTypeIsNamed) {
  EXPECT_EQ(ParseError(R"({"streams": {"mesh": {"component": "c", "type": 3}}})").message(),
            R"(stream "mesh": "type" must be a string)");
}

TEST(Configuration, EmptyStreamFieldIsAnError) {
  EXPECT_EQ(ParseError(R"({"streams": {"mesh": {"component": "", "type": "t"}}})").message(),
            R"(stream "mesh": "component" is empty)");
}

TEST(Configuration, StreamEntryMustBeAnObject) {
  EXPECT_EQ(ParseError(R"({"streams": {"mesh": "c"}})").message(),
            R"(stream "mesh" must be an object)");
}

TEST(Configuration, ComponentWithoutLibraryIsAnError) {
  EXPECT_EQ(ParseError(R"({"components": {"c": {}}, "streams": {}})").message(),
            R"(component "c" has no "library")");
}

TEST(Configuration, ComponentArgumentsMustBeAnObject) {
  EXPECT_EQ(
      ParseError(R"({"components": {"c": {"library": "l", "args": [1]}}, "streams": {}})")
          .message(),
      R"(component "c": "args" must be an object)");
}

TEST(Configuration, ComponentArgumentMustBeAScalar) {
  EXPECT_EQ(ParseError(
                R"({"components": {"c": {"library": "l", "args": {"k": {"x": 1}}}}, "streams": {}})")
                .message(),
            R"(component "c": argument "k" must be a string, number or boolean)");
}

TEST(Configuration, NullOutputFailsWithCause2) {
  const Status status = ParseConfiguration(kValid, nullptr);
  EXPECT_EQ(status.cause(), 2);
  EXPECT_EQ(status.message(), "configuration is null");
}

class ConfigurationFileTest : public ::testing::Test {
 protected:
  void SetUp() override {
    directory_ = std::filesystem::temp_directory_path() /
                 ("weftcore_configuration_test_" + std::to_string(::getpid()));
    std::filesystem::create_directories(directory_);
  }
  void TearDown() override { std::filesystem::remove_all(directory_); }

  std::string Write(const std::string& name, const std::string& text) {
    const std::filesystem::path path = directory_ / name;
    std::ofstream(path) << text;
    return path.string();
  }

  std::filesystem::path directory_;
};

TEST_F(ConfigurationFileTest, LoadsAValidFile) {
  HostConfiguration configuration;
  ASSERT_TRUE(LoadConfigurationFile(Write("host.json", kValid), &configuration).ok());
  EXPECT_EQ(configuration.streams.at("mesh").type, "mesh");
}

TEST_F(ConfigurationFileTest, MissingFileFailsWithCause4NamingTheFile) {
  HostConfiguration configuration;
  const std::string path = (directory_ / "absent.json").string();
  const Status status = LoadConfigurationFile(path, &configuration);
  EXPECT_EQ(status.level(), 1);
  EXPECT_EQ(status.cause(), 4);
  EXPECT_EQ(status.message(),
            "cannot open configuration file " + path + ": No such file or directory");
  EXPECT_EQ(status.block(), "core");
}

TEST_F(ConfigurationFileTest, DirectoryFailsWithCause4) {
  HostConfiguration configuration;
  const Status status = LoadConfigurationFile(directory_.string(), &configuration);
  EXPECT_EQ(status.cause(), 4);
  EXPECT_EQ(status.message(),
            "cannot open configuration file " + directory_.string() + ": Is a directory");
}

TEST_F(ConfigurationFileTest, ErrorsInAFileNameTheFile) {
  HostConfiguration configuration;
  const std::string path = Write("bad.json", R"({"streams": {"mesh": {"component": "c"}}})");
  const Status status = LoadConfigurationFile(path, &configuration);
  EXPECT_EQ(status.cause(), 2);
  EXPECT_EQ(status.message(),
            "configuration file " + path + R"(: stream "mesh" has no "type")");
  EXPECT_EQ(status.block(), "core");
}

}  // namespace
