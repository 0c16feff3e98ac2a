#include <nlohmann/json.hpp>

#include "sim/tarvosim.h"
#include "tests/tools/cProgram.h"

// Would catch a line speed told that is not the sensor's, and a figure in another's place.
TEST(ProgramInfo, tellsInJsonWhatTheSensorTells) {
  cSimSetting setting;
  setting.model = eSimModel::LONG_RANGE;
  setting.speed = 57600;
  const cSimSensor sensor(setting);
  const cResult result = runProgram({"info", sensor.getPath(), "--json", "--speed", "57600"});
  ASSERT_EQ(result.status, 0) << result.errors;
  const nlohmann::json object = nlohmann::json::parse(result.output);
  const nlohmann::json expected = {
      {"device", sensor.getPath()}, {"dialect", "SCIP 2.0"}, {"last_step", 1080},
      {"front_step", 540},          {"min_distance_mm", 23}, {"max_distance_mm", 60000},
      {"steps_per_turn", 1440},     {"speed_rpm", 2400},     {"line_speed_bps", 57600}};
  for (const auto& [key, value] : expected.items()) EXPECT_EQ(object[key], value) << key;
}
