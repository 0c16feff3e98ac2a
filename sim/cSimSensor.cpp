#include "sim/cSimSensor.h"

#include <algorithm>
#include <mutex>
#include <utility>

#include "sim/cSimError.h"
#include "sim/cSimWorker.h"

namespace {

double checkedRate(const cSimSetting& setting) {
  if (!(setting.rate >= 0 && setting.rate <= 1000))
    throwSimError("a sensor turns up to 1000 times a second, not " + std::to_string(setting.rate),
                  EINVAL);
  return setting.rate > 0 ? setting.rate : cSimModel::of(setting.model).rate();
}

int defaultOf(eSimFault fault) {
  const auto& table = simFaultTable();
  const auto row = std::find_if(table.begin(), table.end(),
                                [&](const cSimFaultInfo& info) { return info.fault == fault; });
  return row == table.end() ? 0 : row->value;
}

}  // namespace

class cSimSensor::cBody {
 public:
  explicit cBody(const cSimSetting& sensorSetting)
      : setting(sensorSetting),
        model(cSimModel::of(setting.model)),
        world(model, checkedRate(setting), setting.seed) {
    plug();
  }

  void plug() {
    std::lock_guard<std::mutex> onePlug(plugging);
    if (worker) return;
    auto fresh = std::make_unique<cSimWorker>(setting, model, world, faults, log);
    path = fresh->getPath();
    std::lock_guard<std::mutex> lock(mutex);
    worker = std::move(fresh);
  }

  /// The lock is not held while the worker ends: its thread may be in a call that wants it.
  void unplug() {
    std::lock_guard<std::mutex> onePlug(plugging);
    std::unique_ptr<cSimWorker> old;
    std::lock_guard<std::mutex> lock(mutex);
    old.swap(worker);
  }

  /// What the worker says to a question, or what is so while there is none.
  template <class tResult, class tQuestion>
  tResult ask(tResult unplugged, tQuestion question) {
    std::lock_guard<std::mutex> lock(mutex);
    return worker ? question(*worker) : unplugged;
  }

  void wake() {
    std::lock_guard<std::mutex> lock(mutex);
    if (worker) worker->wake();
  }

  const cSimSetting setting;
  const cSimModel& model;
  const cSimWorld world;
  cSimFaults faults;
  cSimLog log;
  std::string path;
  std::mutex plugging;  ///< one plug or unplug at a time
  std::mutex mutex;     ///< guards worker
  std::unique_ptr<cSimWorker> worker;
};

cSimSensor::cSimSensor(const cSimSetting& setting) : body(std::make_unique<cBody>(setting)) {}
cSimSensor::~cSimSensor() { body->unplug(); }

const std::string& cSimSensor::getPath() const { return body->path; }
cSimSetting cSimSensor::getSetting() const { return body->setting; }

int cSimSensor::getSpeed() const {
  return body->ask(body->setting.speed, [](const cSimWorker& worker) { return worker.getSpeed(); });
}

bool cSimSensor::isScanning() const {
  return body->ask(false, [](const cSimWorker& worker) { return worker.isScanning(); });
}

void cSimSensor::setFault(eSimFault fault, int value, const std::string& only, int times) {
  if (fault == eSimFault::UNPLUGGED) return unplug();
  body->faults.set(fault, value == DEFAULT_VALUE ? defaultOf(fault) : value, only, times);
  body->wake();
}

void cSimSensor::clearFault(eSimFault fault) {
  if (fault == eSimFault::UNPLUGGED) return plug();
  body->faults.clear(fault);
  body->wake();
}

void cSimSensor::clearFaults() {
  body->faults.clearAll();
  plug();
  body->wake();
}

void cSimSensor::say(const std::string& bytes) {
  std::lock_guard<std::mutex> lock(body->mutex);
  if (body->worker) body->worker->say(bytes);
}

void cSimSensor::unplug() { body->unplug(); }
void cSimSensor::plug() { body->plug(); }

std::vector<int> cSimSensor::getTrueDistances(std::uint32_t scanNumber, int first, int last,
                                              int cluster, int most) const {
  return body->world.scan(scanNumber, first, last, cluster, most);
}

std::vector<std::uint32_t> cSimSensor::getSentScans() const { return body->log.getSentScans(); }
std::vector<std::string> cSimSensor::getCommands() const { return body->log.getCommands(); }
cSimCounters cSimSensor::getCounters() const { return body->log.getCounters(); }

bool cSimSensor::waitFor(std::uint64_t cSimCounters::*counter, std::uint64_t count,
                         cTimeOut timeOut) const {
  return body->log.waitFor(counter, count, timeOut);
}

bool cSimSensor::waitForCommand(const std::string& prefix, cTimeOut timeOut,
                                std::size_t count) const {
  return body->log.waitForCommand(prefix, count, timeOut);
}
