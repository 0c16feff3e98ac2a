#include "sim/cSimModel.h"

#include <cstdio>

// Figures that are typical of each class. They differ on purpose in what a driver might take for
// granted: where the first step is, whether the front is in the middle, which readings are errors.
const cSimModel& cSimModel::of(eSimModel model) {
  static const cSimModel SHORT = {"SIM-S240(Short range)",
                                  "Simulated short range scanner",
                                  44,    // first
                                  725,   // last
                                  384,   // front
                                  1024,  // perTurn
                                  20,    // minDistance
                                  5600,  // maxDistance
                                  600,   // rpm
                                  0,     // firstError
                                  19};   // lastError
  static const cSimModel MIDDLE = {"SIM-M270(Middle range)",
                                   "Simulated middle range scanner",
                                   0,     // first
                                   768,   // last
                                   384,   // front
                                   1024,  // perTurn
                                   20,    // minDistance
                                   8000,  // maxDistance
                                   900,   // rpm
                                   0,     // firstError
                                   19};   // lastError
  static const cSimModel LONG = {"SIM-L270(Long range)",
                                 "Simulated long range scanner",
                                 0,      // first
                                 1080,   // last
                                 540,    // front
                                 1440,   // perTurn
                                 23,     // minDistance
                                 60000,  // maxDistance
                                 2400,   // rpm
                                 1,      // firstError
                                 5};     // lastError
  switch (model) {
    case eSimModel::MIDDLE_RANGE:
      return MIDDLE;
    case eSimModel::LONG_RANGE:
      return LONG;
    case eSimModel::SHORT_RANGE:
      break;
  }
  return SHORT;
}

bool cSimModel::acceptsSpeed(int bitsPerSecond) {
  return bitsPerSecond == 19200 || bitsPerSecond == 57600 || bitsPerSecond == 115200 ||
         bitsPerSecond == 500000;
}

std::string cSimModel::serialNumber(const cSimSetting& setting) {
  char text[16];
  std::snprintf(text, sizeof text, "S%07u", static_cast<unsigned>(setting.seed % 10000000));
  return text;
}
