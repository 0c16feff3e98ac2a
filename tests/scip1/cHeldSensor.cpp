#include "tests/scip1/cHeldSensor.h"

#include <signal.h>

#include <algorithm>

namespace {

constexpr auto DEADLINE = std::chrono::seconds(20);

std::string encode(int value) {
  return {static_cast<char>(value / 64 + 0x30), static_cast<char>(value % 64 + 0x30)};
}

bool isBefore(std::chrono::steady_clock::time_point deadline) {
  return std::chrono::steady_clock::now() < deadline;
}

}  // namespace

cHeldSensor::cHeldSensor(int speed) {
  signal(SIGHUP, SIG_IGN);  // an unplugged line may be the tests' controlling terminal
  cSimSetting setting;
  setting.speed = speed;
  setting.onCommand = [this](const std::string& command) { answer(command); };
  std::lock_guard<std::mutex> lock(mutex);
  sensor = std::make_unique<cSimSensor>(setting);
  sensor->setFault(eSimFault::NO_ANSWER);
}

cHeldSensor::~cHeldSensor() { letGo(-1); }

void cHeldSensor::script(const std::string& prefix, const std::string& bytes) {
  std::lock_guard<std::mutex> lock(mutex);
  scripts[prefix] = bytes;
}

void cHeldSensor::unscript(const std::string& prefix) {
  std::lock_guard<std::mutex> lock(mutex);
  scripts.erase(prefix);
}

void cHeldSensor::unplug() {
  std::size_t before = 0;
  {
    std::lock_guard<std::mutex> lock(mutex);
    refusesScans = true;
    before = countCommands("G");
  }
  hears("G", before + 2);
  sensor->unplug();
}

void cHeldSensor::letGo(int count) {
  std::lock_guard<std::mutex> lock(mutex);
  answersLeft = count;
  changed.notify_all();
}

void cHeldSensor::addAnswer() {
  std::lock_guard<std::mutex> lock(mutex);
  ++answersLeft;
  changed.notify_all();
}

bool cHeldSensor::hears(const std::string& prefix, std::size_t count) {
  return sensor->waitForCommand(prefix, DEADLINE, count);
}

bool cHeldSensor::hasSaid(std::uint64_t count) {
  return sensor->waitFor(&cSimCounters::records, count, DEADLINE);
}

std::size_t cHeldSensor::countCommands(const std::string& prefix) const {
  const std::vector<std::string> commands = sensor->getCommands();
  return static_cast<std::size_t>(std::count_if(
      commands.begin(), commands.end(),
      [&](const std::string& command) { return command.compare(0, prefix.size(), prefix) == 0; }));
}

void cHeldSensor::answer(const std::string& command) {
  std::unique_lock<std::mutex> lock(mutex);
  changed.wait(lock, [this] { return answersLeft != 0; });
  if (answersLeft > 0) --answersLeft;
  sensor->say(getAnswer(command));
}

std::string cHeldSensor::getAnswer(const std::string& command) {
  for (const auto& [prefix, bytes] : scripts) {
    if (command.compare(0, prefix.size(), prefix) == 0) return bytes;
  }
  if (command[0] != 'G') return record(command, "0");
  return refusesScans ? record(command, "1") : getScan(command);
}

std::string cHeldSensor::getScan(const std::string& command) {
  const int points = std::stoi(command.substr(4, 3)) - std::stoi(command.substr(1, 3)) + 1;
  std::string data;
  for (int i = 0; i < points; ++i) data += encode(i % 2 == 0 ? scans / 4096 : scans % 4096);
  ++scans;
  std::string body;
  for (std::size_t i = 0; i < data.size(); i += 64) body += data.substr(i, 64) + "\n";
  return record(command, "0", body);
}

std::string record(const std::string& echo, const std::string& status, const std::string& body) {
  return echo + "\n" + status + "\n" + body + "\n";
}

cRig::cRig(int speed)
    : sensor(speed),
      port(new kavTBX::basic_portbuf<char>(sensor.getPath(),
                                           boost::shared_ptr<kavTBX::cPortSetting>())),
      link(new cTarvoLink(port)),
      driver(new cSensorDriverSCIP1(link)) {
  port->readTimeout = 10000;
}

iSCIP2IF& cRig::scip2() {
  if (face == nullptr) face = driver->getSCIP2IF();
  return *face;
}

int cRig::takeNumber() {
  const auto deadline = std::chrono::steady_clock::now() + DEADLINE;
  while (isBefore(deadline)) {
    if (const boost::shared_ptr<cScan> scan = scip2().getScanFirst()) return numberOf(*scan);
    scip2().waitScan(100);
  }
  return -1;
}

bool cRig::waitForIdle() {
  const auto deadline = std::chrono::steady_clock::now() + DEADLINE;
  while (scip2().isScanning() && isBefore(deadline)) scip2().waitScan(100);
  return !scip2().isScanning();
}

std::vector<int> cRig::takeAll() {
  std::vector<int> numbers;
  while (const boost::shared_ptr<cScan> scan = scip2().getScanFirst()) {
    numbers.push_back(numberOf(*scan));
  }
  return numbers;
}

int numberOf(const cScan& scan) {
  return static_cast<int>(scan.points.at(0).distance * 4096 + scan.points.at(1).distance);
}
