// The simulated sensor's protocol, in each dialect: whatever a host sends, each command gets at
// most one answer, which ends in an empty line.

#include <cstdint>
#include <cstdlib>

#include "sim/cSimProtocol.h"

namespace {

const cSimModel& model = cSimModel::of(eSimModel::SHORT_RANGE);
const cSimWorld world(model, model.rate(), 1);

void answer(cSimProtocol& sensor, const cSimCommand& command, std::uint32_t turn) {
  cSimClock clock;
  clock.stamp = clock.lastStamp = turn * 100;
  clock.lastScan = turn;
  clock.nextScan = turn + 1;
  const std::string bytes = sensor.answer(command, clock).bytes;
  if (!bytes.empty() && (bytes.size() < 2 || bytes.compare(bytes.size() - 2, 2, "\n\n") != 0)) {
    std::abort();
  }
  if (turn % 2 == 0) sensor.allSent();
  if (sensor.getTask() != nullptr) sensor.makeScan(turn, turn * 100);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  cSimSetting setting;
  setting.dialect = static_cast<eSimDialect>(data[0] % 3);
  setting.unknownCommands = static_cast<eSimUnknown>(data[0] / 3 % 3);
  setting.blankCommands = static_cast<eSimUnknown>(data[0] / 9 % 3);
  setting.threeCharScip1 = data[0] >= 128;
  cSimProtocol sensor(setting, model, world);
  std::uint32_t turn = 0;
  for (std::size_t i = 1; i < size; ++i) {
    if (const auto command = sensor.receive(static_cast<char>(data[i]))) {
      answer(sensor, *command, ++turn);
    }
  }
  return 0;
}
