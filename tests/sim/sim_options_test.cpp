// The sim's component arguments and the host configuration built from them.
#include "zelto_sim/sim_options.h"

#include <gtest/gtest.h>

#include "zelto_sim/host_configuration.h"

namespace {

using ZeltoSim::ParseSimOptions;
using ZeltoSim::SimOptions;

std::string ParseError(std::map<std::string, std::string> values) {
  weftcore::ComponentArgument args;
  args.values = std::move(values);
  SimOptions options;
  const weftcore::Status status = ParseSimOptions(args, &options);
  if (status.ok()) return "OK";
  EXPECT_EQ(status.cause(), weftcore::kCauseInvalidArgument);
  EXPECT_EQ(status.block(), "ZeltoSim");
  return status.message();
}

TEST(SimOptions, Defaults) {
  SimOptions options;
  ASSERT_TRUE(ParseSimOptions(weftcore::ComponentArgument{}, &options).ok());
  EXPECT_EQ(options.input, "");
  EXPECT_EQ(options.frames, 0u);
  EXPECT_EQ(options.seed, 1u);
  EXPECT_FALSE(options.remote);
  EXPECT_EQ(options.runMode, 0);
  EXPECT_FALSE(options.realtime);
  EXPECT_EQ(options.logLevel, 8);
}

TEST(SimOptions, AsComponentArgument) {
  SimOptions options;
  options.input = "/data/rec";
  options.frames = 60;
  options.seed = 42;
  options.remote = true;
  options.runMode = 200;
  options.realtime = false;
  options.logLevel = 3;
  const weftcore::ComponentArgument args = ZeltoSim::ToComponentArgument(options);
  EXPECT_EQ(args.values, (std::map<std::string, std::string>{{"input", "/data/rec"},
                                                             {"frames", "60"},
                                                             {"seed", "42"},
                                                             {"remote", "true"},
                                                             {"run_mode", "200"},
                                                             {"realtime", "false"},
                                                             {"log_level", "3"}}));
  SimOptions parsed;
  ASSERT_TRUE(ParseSimOptions(args, &parsed).ok());
  EXPECT_EQ(parsed.input, "/data/rec");
  EXPECT_EQ(parsed.frames, 60u);
  EXPECT_EQ(parsed.seed, 42u);
  EXPECT_TRUE(parsed.remote);
  EXPECT_EQ(parsed.runMode, 200);
  EXPECT_FALSE(parsed.realtime);
  EXPECT_EQ(parsed.logLevel, 3);
}

TEST(SimOptions, FlagsAcceptOneAndZero) {
  weftcore::ComponentArgument args;
  args.values = {{"remote", "1"}, {"realtime", "1"}};
  SimOptions options;
  ASSERT_TRUE(ParseSimOptions(args, &options).ok());
  EXPECT_TRUE(options.remote);
  EXPECT_TRUE(options.realtime);
}

TEST(SimOptions, Errors) {
  EXPECT_EQ(ParseError({{"fps", "30"}}), "unknown component argument \"fps\"");
  EXPECT_EQ(ParseError({{"frames", "x"}}),
            "component argument \"frames\": \"x\" is not an unsigned integer");
  EXPECT_EQ(ParseError({{"frames", "-1"}}),
            "component argument \"frames\": \"-1\" is not an unsigned integer");
  EXPECT_EQ(ParseError({{"seed", ""}}),
            "component argument \"seed\": \"\" is not an unsigned integer");
  EXPECT_EQ(ParseError({{"run_mode", "256"}}),
            "component argument \"run_mode\": \"256\" is not an integer 0..255");
  EXPECT_EQ(ParseError({{"log_level", "1"}}),
            "component argument \"log_level\": \"1\" is not an integer 2..8");
  EXPECT_EQ(ParseError({{"log_level", "9"}}),
            "component argument \"log_level\": \"9\" is not an integer 2..8");
  EXPECT_EQ(ParseError({{"remote", "yes"}}),
            "component argument \"remote\": \"yes\" is not true or false");
  EXPECT_EQ(ParseError({{"realtime", "TRUE"}}),
            "component argument \"realtime\": \"TRUE\" is not true or false");
}

TEST(HostConfiguration, MeshAndSimWithPlayer) {
  ZeltoSim::HostOptions options;
  options.sim.input = "/data/rec";
  const weftcore::host::HostConfiguration configuration = ZeltoSim::BuildHostConfiguration(options);
  ASSERT_EQ(configuration.components.size(), 2u);
  EXPECT_EQ(configuration.components.at("mesh_component").library, "component_zelto_mesh");
  EXPECT_TRUE(configuration.components.at("mesh_component").args.values.empty());
  EXPECT_EQ(configuration.components.at("sim_component").library, "component_zelto_sim");
  EXPECT_EQ(configuration.components.at("sim_component").args.values,
            ZeltoSim::ToComponentArgument(options.sim).values);
  std::map<std::string, std::pair<std::string, std::string>> streams;
  for (const auto& [key, entry] : configuration.streams)
    streams[key] = {entry.component, entry.type};
  EXPECT_EQ(streams, (std::map<std::string, std::pair<std::string, std::string>>{
                         {"mesh", {"mesh_component", "mesh"}},
                         {"zelto_stream", {"sim_component", "zelto_settings"}},
                         {"zelto_tof_camera2_stream", {"sim_component", "tof_camera"}},
                         {"player_tof_stream", {"sim_component", "tof_player"}},
                         {"zelto_segmentation_camera2_stream", {"sim_component", "segmentation"}},
                     }));
}

TEST(HostConfiguration, WithoutPlayerAndWithOtherLibraries) {
  ZeltoSim::HostOptions options;
  options.player = false;
  options.meshLibrary = "/opt/lib/libcomponent_zelto_mesh.so";
  options.simLibrary = "/opt/lib/libcomponent_zelto_sim.so";
  const weftcore::host::HostConfiguration configuration = ZeltoSim::BuildHostConfiguration(options);
  EXPECT_EQ(configuration.streams.count("player_tof_stream"), 0u);
  EXPECT_EQ(configuration.streams.size(), 4u);
  EXPECT_EQ(configuration.components.at("mesh_component").library,
            "/opt/lib/libcomponent_zelto_mesh.so");
  EXPECT_EQ(configuration.components.at("sim_component").library,
            "/opt/lib/libcomponent_zelto_sim.so");
}

}  // namespace
