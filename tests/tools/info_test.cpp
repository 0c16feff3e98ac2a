#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "sim/tarvosim.h"
#include "tests/tools/cProgram.h"

TEST(ProgramInfoTest, TellsInJsonWhatTheSensorTells) {
  cSimSetting setting;
  setting.model = eSimModel::LONG_RANGE;
  setting.speed = 57600;  // found by a later detection: fails when the speed told is the first one
  const cSimSensor sensor(setting);
  const cResult result = runProgram({"info", sensor.getPath(), "--json"});
  ASSERT_EQ(result.status, 0) << result.errors;
  const auto object = nlohmann::json::parse(result.output);
  EXPECT_EQ(object["device"], sensor.getPath());
  EXPECT_EQ(object["vendor"], "Simulated sensors");
  for (const char* text : {"product", "firmware", "protocol", "serial", "status"}) {
    EXPECT_NE(object[text], "") << text;
  }
  const nlohmann::json numbers = {{"first_step", 0},          {"last_step", 1080},
                                  {"front_step", 540},        {"min_distance_mm", 23},
                                  {"max_distance_mm", 60000}, {"steps_per_turn", 1440},
                                  {"speed_rpm", 2400},        {"line_speed_bps", 57600}};
  for (const auto& [key, value] : numbers.items()) EXPECT_EQ(object[key], value) << key;
}

TEST(ProgramInfoTest, IsReadableAndSaysWhichDeviceItTook) {
  // Fails when chatter gets between the data, or a default device goes unsaid.
  const cResult result = runProgram({"info"});
  ASSERT_EQ(result.status, 0) << result.errors;
  EXPECT_NE(result.errors.find("no DEVICE given"), std::string::npos);
  EXPECT_EQ(linesOf(result.output).size(), 16u);
  EXPECT_NE(result.output.find("Longest distance   5600 mm\n"), std::string::npos) << result.output;
}

TEST(ProgramInfoTest, FetchesAgainWhatDetectionCameBackWithout) {
  // A first identity and a first parameter answer that are lost leave them empty.
  cSimSensor sensor{cSimSetting{}};
  sensor.setFault(eSimFault::NO_ANSWER, cSimSensor::DEFAULT_VALUE, "VV", 1);
  sensor.setFault(eSimFault::WRONG_SUM, 1, "PP", 1);
  const cResult result = runProgram({"info", sensor.getPath(), "--json"});
  ASSERT_EQ(result.status, 0) << result.errors;
  const auto object = nlohmann::json::parse(result.output);
  EXPECT_EQ(object["vendor"], "Simulated sensors");
  EXPECT_EQ(object["steps_per_turn"], 1024);
}
