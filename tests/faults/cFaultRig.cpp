#include "tests/faults/cFaultRig.h"

cSimSetting paced(eSimDialect dialect, double rate) {
  cSimSetting setting;
  setting.dialect = dialect;
  setting.rate = rate;
  setting.paced = rate > 0;
  return setting;
}

int startScan(iSCIP2IF& driver, int count, int most, int interval) {
  return surely(driver, [&] { return driver.startScan(FIRST, LAST, 1, interval, count, most); });
}

tDriver openAny(const cSimSensor& sensor) {
  if (sensor.getSetting().dialect == eSimDialect::SCIP2) return openReady(sensor.getPath());
  return tDriver(new cSensorDriverSCIP1(openLink(sensor.getPath())));
}

cFaultRig::cFaultRig(const cSimSetting& setting)
    : sensor(setting), driver(openAny(sensor)), face(*driver->getSCIP2IF()) {}

void cFaultRig::scan(int count) {
  startScan(face, count);
  oracle.expectTrueScan(face);
}
