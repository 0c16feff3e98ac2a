#pragma once

#include <chrono>
#include <climits>
#include <functional>
#include <string>
#include <vector>

#include "sim/tarvosim.h"
#include "tarvolink/tarvolink.h"

using tDriver = boost::shared_ptr<cSensorDriver>;
using tDriver2 = boost::shared_ptr<cSensorDriverSCIP2>;
using tScan = boost::shared_ptr<cScan>;

/// Longer than anything here takes on a loaded machine; waits end on their event.
constexpr int LONG = 20000;  // milliseconds
constexpr std::chrono::milliseconds LONG_TIME(LONG);

/// A sensor that turns much faster than real ones, but not faster than a sanitizer's host takes.
cSimSetting quick(eSimModel model = eSimModel::SHORT_RANGE);

boost::shared_ptr<cTarvoLink> openLink(const std::string& path);

/// A running driver on `path` without a detection: nothing was sent, the next tag is 1.
tDriver2 openDriver(const std::string& path);

/// The same with the parameters fetched (tag 1), so that it can scan.
tDriver2 openReady(const std::string& path);

/// Takes the oldest scan, waiting for one; empty if none comes.
tScan takeScan(iSCIP2IF& driver);

/// Sends "QT" until its answer is clean, as a host does on a sensor that somebody left scanning.
bool stopLeftScan(iSCIP2IF& driver);

std::vector<int> distancesOf(const tScan& scan);

/// What the sensor measured in the scan that it sent as number `index`, from 0.
std::vector<int> truth(const cSimSensor& sensor, std::size_t index, int first, int last,
                       int cluster = 1, int most = INT_MAX);

/// What `action` printed.
struct cOutput {
  std::string out;
  std::string err;
};
cOutput outputOf(const std::function<void()>& action);

/// Whether `condition` comes to hold.
bool eventually(const std::function<bool()>& condition);

/// Descriptors of this process that stand for `path`.
int countOpen(const std::string& path);
int countDescriptors();
int countThreads();
