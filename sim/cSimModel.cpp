#include "sim/cSimModel.h"

const cSimModel& cSimModel::of(eSimModel model) {
  static const cSimModel SHORT = {"SIM-S240(Short range)",
                                  "Simulated short range scanner",
                                  44,
                                  725,
                                  384,
                                  1024,
                                  20,
                                  5600,
                                  600,
                                  0,
                                  19};
  static const cSimModel MIDDLE = {"SIM-M270(Middle range)",
                                   "Simulated middle range scanner",
                                   0,
                                   768,
                                   384,
                                   1024,
                                   20,
                                   8000,
                                   900,
                                   0,
                                   19};
  static const cSimModel LONG = {"SIM-L270(Long range)",
                                 "Simulated long range scanner",
                                 0,
                                 1080,
                                 540,
                                 1440,
                                 23,
                                 60000,
                                 2400,
                                 1,
                                 5};
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
