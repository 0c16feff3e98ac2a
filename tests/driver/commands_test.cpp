// Information and control commands: one exchange each.
#include "tests/support/cScriptedSensor.h"

namespace {

/// An information line: key, ":", value, ";", sum.
std::string field(const std::string& keyAndValue) {
  return keyAndValue + ";" + summed(keyAndValue).back() + "\n";
}

/// Gives these status lines, each with the body behind it, in turn.
cScriptedSensor::tRule inTurn(const tLines& answers) {
  return [answers, next = std::size_t{0}](const std::string& line) mutable {
    return line + "\n" + answers.at(next++) + "\n";
  };
}

// Catches: another command on the wire or one more, a refusal taken for success.
TEST(Command, SendsItsLineAndReportsTheAnswer) {
  using tCall = int (*)(cSensorDriverSCIP2&);
  for (const auto& [call, line] : std::vector<std::pair<tCall, std::string>>{
           {[](cSensorDriverSCIP2& driver) { return driver.startStoringScan(); }, "BM"},
           {[](cSensorDriverSCIP2& driver) { return driver.doLaser(false); }, "BM"},
           {[](cSensorDriverSCIP2& driver) { return driver.stopAll(); }, "QT"},
           {[](cSensorDriverSCIP2& driver) { return driver.resetURG(); }, "SS"},
           {[](cSensorDriverSCIP2& driver) { return driver.updateStatus(); }, "II"},
           {[](cSensorDriverSCIP2& driver) { return driver.doVersion(); }, "VV"}}) {
    const cScriptedSensor sensor(inTurn({"00P\n", summed("01") + "\n", summed("0E") + "\n"}));
    const tDriver2 driver = openDriver(sensor.getPath());
    for (const int result :
         {driver->doSpeed(19200), driver->setCommSpeed(19200), driver->doRaw("VV"),
          driver->resumeScan(), driver->scansToGo(), driver->abortScan()})
      EXPECT_EQ(result, -1) << "nothing is sent";
    EXPECT_FALSE(driver->getScanFirst(0));
    driver->purgeScan();
    for (const int result : {0, -1, -1}) EXPECT_EQ(call(*driver), result) << line;
    EXPECT_EQ(sensor.getCommands(), (tLines{line + ";1", line + ";2", line + ";3"}));
  }
}

// Catches: values trimmed or cut, keys taken for others, a refusal that empties what is known.
TEST(Command, KeepsVersionTextsAsTheyStand) {
  const std::string body = field("VEND:a vendor\xE4") + field("OTHR:unknown") +
                           field("PROD:a;b:c(d)") + field("FIRM:1.0<-Default") + field("PROT:") +
                           field("SERI:H01");
  const cScriptedSensor sensor(inTurn(
      {"00P\n" + body, summed("0E") + "\n" + field("VEND:other"), "00x\n" + field("VEND:other")}));
  const tDriver2 driver = openDriver(sensor.getPath());
  EXPECT_EQ(driver->getSCIP2IF()->fetchVersionStr(), 0);
  EXPECT_EQ(driver->getSCIP1IF()->getResponseBody(), body);
  for (int refusal = 0; refusal < 2; ++refusal) EXPECT_EQ(driver->fetchVersionStr(), -1);
  EXPECT_EQ((tLines{driver->getVend(), driver->getProd(), driver->getFirm(), driver->getProt(),
                    driver->getSerial(), driver->getLastRawCommand()}),
            (tLines{"a vendor\xE4", "a;b:c(d)", "1.0<-Default", "", "H01", ""}));
}

// Catches: a number in another field, values read behind a bad sum, a crash by a short line.
TEST(Command, TakesParametersFromTheNumbersAtTheBeginning) {
  const cScriptedSensor sensor(
      inTurn({"00P\n" + field("MODL:another") + field("DMIN:20") + field("DMAX:4095[mm]") +
                  field("ARES:1024") + field("AMIN:-3") + field("AMAX:725") + field("AFRT: 384") +
                  field("SCAN:600 rpm"),
              "00P\n" + field("DMIN:21") + "DMAX:4096;x\n" + field("ARES:1025"),
              "00P\n" + field("DMIN:22") + field("DMAX") + field("ARES:1026"), "00P\n"}));
  const tDriver2 driver = openDriver(sensor.getPath());
  const auto numbers = [&] {
    return std::vector<int>{driver->getMinDist(),   driver->getMaxDist(), driver->getNumSpot(),
                            driver->getMinSpot(),   driver->getMaxSpot(), driver->getFrontSpot(),
                            driver->getScanSpeed(), driver->getErr()};
  };
  EXPECT_EQ(driver->fetchParameters(), 0);
  EXPECT_EQ(numbers(), (std::vector<int>{20, 4095, 1024, -3, 725, 384, 600, 0}));
  EXPECT_EQ(driver->getProd(), "") << "MODL is not the product";
  EXPECT_EQ(driver->fetchParameters(), -1);
  EXPECT_THROW(driver->fetchParameters(), std::out_of_range);
  EXPECT_EQ(numbers(), (std::vector<int>{22, 4095, 1024, -3, 725, 384, 600, 0}));
  EXPECT_EQ(driver->fetchParameters(), 0) << "the driver goes on";
}

// Catches: a status that cannot be trusted taken for a success or ending the thread, a number or
// letter that becomes another code word.
TEST(Command, ReportsTheStatusAsACodeWord) {
  using tRow = std::tuple<std::string, int, std::string>;
  for (const auto& [status, error, left] :
       {tRow{"00P", 0, "00"}, tRow{summed("98"), cSCIPError::ESCIP2_STATUS | 98, "98"},
        tRow{"0Ee", cSCIPError::ESCIP2_EXTSTATUS | 'E', "0E"},
        tRow{summed("0a"), cSCIPError::ESCIP2_EXTSTATUS | 'a', "0a"},
        tRow{"00Q", cSCIPError::EINVALID_STATUS, "00"}, tRow{"0", cSCIPError::EINVALID_STATUS, "0"},
        tRow{"", cSCIPError::EINVALID_STATUS, ""},
        tRow{"00P\r", cSCIPError::EINVALID_STATUS, "00P"}}) {
    const cScriptedSensor sensor(inTurn({status + "\nbody\n", status + "\nbody\n"}));
    const tDriver2 driver = openDriver(sensor.getPath());
    for (const char* command : {"BM", "QT"}) {
      const boost::shared_ptr<cSCIPRecord> record = driver->doRaw2(command, 0);
      EXPECT_EQ(record->error, error) << status;
      EXPECT_EQ(record->status, left);
      EXPECT_EQ(record->body, "body\n");
      EXPECT_EQ(driver->getErr(), 0) << "the link's own word: the record came whole";
    }
  }
}

}  // namespace
