#include "sim/cSimSensor.h"

#include <algorithm>
#include <mutex>
#include <utility>

#include "sim/cSimError.h"
#include "sim/cSimWorker.h"

namespace {

double checkedRate(const cSimSetting& setting) {
  // Negated, so that NaN is refused as well.
  if (!(setting.rate >= 0 && setting.rate <= 1000))
    throwSimError("the rate is 0 to 1000 scans per second, not " + std::to_string(setting.rate),
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

class cSimSensor::cImpl {
 public:
  explicit cImpl(const cSimSetting& setting)
      : setting(setting),
        model(cSimModel::of(setting.model)),
        world(model, checkedRate(setting), setting.seed) {
    plug();
  }

  void plug() {
    std::lock_guard<std::mutex> plugLock(plugMutex);
    // Only plug and unplug change the worker, so plugMutex is enough to look at it here.
    if (worker) return;
    auto fresh = std::make_unique<cSimWorker>(setting, model, world, faults, log);
    path = fresh->getPath();
    std::lock_guard<std::mutex> lock(mutex);
    worker = std::move(fresh);
  }

  void unplug() {
    std::lock_guard<std::mutex> plugLock(plugMutex);
    // Declared before the lock and so destroyed after it: the worker's thread may be in
    // onCommand, in an operation that takes the lock, and the destructor joins that thread.
    std::unique_ptr<cSimWorker> old;
    std::lock_guard<std::mutex> lock(mutex);
    old.swap(worker);
  }

  /// The worker's value; `unplugged` while there is no worker.
  template <class tResult, class tGetter>
  tResult query(tResult unplugged, tGetter getter) {
    std::lock_guard<std::mutex> lock(mutex);
    return worker ? getter(*worker) : unplugged;
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
  std::mutex plugMutex;  ///< one plug or unplug at a time; taken before mutex
  std::mutex mutex;      ///< guards worker
  std::unique_ptr<cSimWorker> worker;
};

cSimSensor::cSimSensor(const cSimSetting& setting) : impl(std::make_unique<cImpl>(setting)) {}
cSimSensor::~cSimSensor() { impl->unplug(); }

const std::string& cSimSensor::getPath() const { return impl->path; }
cSimSetting cSimSensor::getSetting() const { return impl->setting; }

int cSimSensor::getSpeed() const {
  return impl->query(impl->setting.speed,
                     [](const cSimWorker& worker) { return worker.getSpeed(); });
}

bool cSimSensor::isScanning() const {
  return impl->query(false, [](const cSimWorker& worker) { return worker.isScanning(); });
}

void cSimSensor::setFault(eSimFault fault, int value, const std::string& target, int times) {
  if (fault == eSimFault::UNPLUGGED) return unplug();
  impl->faults.set(fault, value == DEFAULT_VALUE ? defaultOf(fault) : value, target, times);
  impl->wake();
}

void cSimSensor::clearFault(eSimFault fault) {
  if (fault == eSimFault::UNPLUGGED) return plug();
  impl->faults.clear(fault);
  impl->wake();
}

void cSimSensor::clearFaults() {
  impl->faults.clearAll();
  plug();
  impl->wake();
}

void cSimSensor::inject(const std::string& bytes) {
  std::lock_guard<std::mutex> lock(impl->mutex);
  if (impl->worker) impl->worker->inject(bytes);
}

void cSimSensor::unplug() { impl->unplug(); }
void cSimSensor::plug() { impl->plug(); }

std::vector<int> cSimSensor::getTrueDistances(std::uint32_t scanNumber, int first, int last,
                                              int cluster, int maxReading) const {
  return impl->world.scan(scanNumber, first, last, cluster, maxReading);
}

std::vector<std::uint32_t> cSimSensor::getSentScans() const { return impl->log.getSentScans(); }
std::vector<std::string> cSimSensor::getCommands() const { return impl->log.getCommands(); }
cSimCounters cSimSensor::getCounters() const { return impl->log.getCounters(); }

bool cSimSensor::waitFor(std::uint64_t cSimCounters::*counter, std::uint64_t count,
                         cTimeOut timeOut) const {
  return impl->log.waitFor(counter, count, timeOut);
}

bool cSimSensor::waitForCommand(const std::string& prefix, cTimeOut timeOut,
                                std::size_t count) const {
  return impl->log.waitForCommand(prefix, count, timeOut);
}
