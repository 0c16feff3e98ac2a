#include "tools/cli/searchPorts.h"

#include <sys/eventfd.h>

#include <cerrno>
#include <deque>
#include <mutex>
#include <system_error>

#include "tools/base/cFailure.h"
#include "tools/cli/lineLog.h"
#include "tools/output/cDescriptor.h"

namespace tool {

namespace {

constexpr std::chrono::hours LONG_TIME{1};

/// The results that came and were not taken yet.
class cResults {
 public:
  cResults() : event(eventfd(0, EFD_CLOEXEC | EFD_SEMAPHORE)) {
    if (event.get() < 0) throw std::system_error(errno, std::generic_category(), "eventfd");
  }

  void push(const tarvo::cSearchResult& result) {
    const std::lock_guard<std::mutex> lock(mutex);
    results.push_back(result);
    eventfd_write(event.get(), 1);
  }

  tarvo::cSearchResult take(const cShutdown& stop) {
    if (stop.waitFor(LONG_TIME, event.get())) throw cInterrupted();
    eventfd_t count = 0;
    eventfd_read(event.get(), &count);
    const std::lock_guard<std::mutex> lock(mutex);
    auto result = results.front();
    results.pop_front();
    return result;
  }

 private:
  const cDescriptor event;
  std::mutex mutex;
  std::deque<tarvo::cSearchResult> results;  // under mutex
};

}  // namespace

void searchPorts(const std::vector<std::string>& paths, int speed, const cShutdown& stop,
                 const std::function<bool(const tarvo::cSearchResult&)>& onResult) {
  cResults results;
  const std::vector<int> speeds = speed == 0 ? std::vector<int>() : std::vector<int>{speed};
  const tarvo::cSensorSearch search(
      paths, speeds, [&results](const tarvo::cSearchResult& result) { results.push(result); },
      lineLog());
  for (std::size_t i = 0; i < paths.size(); ++i) {
    if (onResult(results.take(stop))) return;
  }
}

}  // namespace tool
