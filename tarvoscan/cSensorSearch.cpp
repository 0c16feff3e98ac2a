#include "tarvoscan/cSensorSearch.h"

#include <boost/make_shared.hpp>
#include <mutex>
#include <system_error>
#include <thread>

#include "tarvoscan/port/openPort.h"
#include "tarvoscan/port/startThread.h"
#include "tarvoscan/search/cLineDiagnosis.h"
#include "tarvoscan/search/cSensorFinder.h"

namespace tarvo {

class cSensorSearch::cImpl {
 public:
  cImpl(const std::vector<std::string>& devices, const std::vector<int>& speeds,
        std::function<void(const cSearchResult&)> onResult, tLineTap onLine);
  ~cImpl();

  std::vector<cSearchResult> wait();

  cWaker waker;

 private:
  void look(std::size_t place);
  void lookAt(cSearchResult& result);

  const std::vector<int> speeds;
  const std::function<void(const cSearchResult&)> onResult;
  const tLineTap onLine;
  std::mutex joining;
  std::mutex reporting;  // one result at a time
  std::vector<cSearchResult> results;
  std::vector<std::thread> threads;
};

cSensorSearch::cImpl::cImpl(const std::vector<std::string>& devices, const std::vector<int>& speeds,
                            std::function<void(const cSearchResult&)> onResult, tLineTap onLine)
    : speeds(speeds.empty() ? usualSpeeds() : speeds),
      onResult(std::move(onResult)),
      onLine(std::move(onLine)) {
  for (const std::string& device : devices) results.push_back({device, {}, {}, {}});
  for (std::size_t place = 0; place < results.size(); ++place) {
    try {
      threads.push_back(startThread([this, place] { look(place); }));
    } catch (const std::system_error&) {
      look(place);  // one after the other, then
    }
  }
}

cSensorSearch::cImpl::~cImpl() {
  waker.requestStop();
  wait();
}

std::vector<cSearchResult> cSensorSearch::cImpl::wait() {
  const std::lock_guard<std::mutex> lock(joining);
  for (std::thread& thread : threads) thread.join();
  threads.clear();
  return results;
}

void cSensorSearch::cImpl::look(std::size_t place) {
  cSearchResult& result = results[place];
  lookAt(result);
  if (!onResult) return;
  const std::lock_guard<std::mutex> lock(reporting);
  onResult(result);
}

void cSensorSearch::cImpl::lookAt(cSearchResult& result) {
  if (!waker.isUsable()) {
    result.problem = {eProblem::NO_THREAD, "the system has no descriptors left.", ""};
    return;
  }
  cDescriptor terminal = openPort(result.device, result.problem);
  if (result.problem) return;
  const auto port =
      boost::make_shared<cScanPort>(std::move(terminal), result.device, speeds.front(), waker);
  port->setTap(onLine);
  cConversation talk(port);
  cSensorFinder finder(talk);
  port->startCapture();
  const bool isFound = port->isUsable() && finder.search(speeds);
  result.heard = classifyAll(port->getCapture());
  port->stopCapture();
  if (!isFound) {
    result.problem = port->isGone() ? describeError(result.device, EIO)
                                    : describeSilence(result.device, result.heard);
    return;
  }
  cSensorInfo sensor;
  // One that does not report its parameters is a sensor all the same.
  finder.identify(sensor, result.problem);
  result.sensor = std::make_shared<cSensorInfo>(sensor);
}

cSensorSearch::cSensorSearch(const std::vector<std::string>& devices,
                             const std::vector<int>& lineSpeeds,
                             std::function<void(const cSearchResult&)> onResult, tLineTap onLine)
    : impl(std::make_unique<cImpl>(devices, lineSpeeds, std::move(onResult), std::move(onLine))) {}

cSensorSearch::~cSensorSearch() = default;

std::vector<cSearchResult> cSensorSearch::wait() { return impl->wait(); }

void cSensorSearch::requestStop() noexcept { impl->waker.requestStop(); }

}  // namespace tarvo
