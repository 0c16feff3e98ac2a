#include "tarvoscan/scanner/cScanHub.h"

#include <sys/eventfd.h>

#include <algorithm>
#include <utility>

namespace tarvo {

// --- one taker -------------------------------------------------------------------------

bool cScanQueue::push(const tScanPtr& scan) {
  const std::lock_guard<std::mutex> lock(mutex);
  const bool isFull = scans.size() == depth;
  if (isFull) {
    scans.pop_front();
    ++dropped;
  }
  scans.push_back(scan);
  signal();
  changed.notify_one();
  return isFull;
}

/// Makes the descriptor say whether a scan waits. Under the mutex.
void cScanQueue::signal() {
  const bool isWaiting = !scans.empty();
  if (event.get() < 0 || isWaiting == isSignalled) return;
  isSignalled = isWaiting;
  eventfd_t count = 0;
  if (isWaiting) {
    eventfd_write(event.get(), 1);
  } else {
    eventfd_read(event.get(), &count);
  }
}

tScanPtr cScanQueue::next(std::chrono::milliseconds timeout) {
  std::unique_lock<std::mutex> lock(mutex);
  const auto isOver = [this] { return !scans.empty() || closed; };
  if (timeout > std::chrono::milliseconds(0)) changed.wait_for(lock, timeout, isOver);
  return take();
}

/// The oldest; under the mutex.
tScanPtr cScanQueue::take() {
  if (scans.empty()) return {};
  tScanPtr scan = std::move(scans.front());
  scans.pop_front();
  signal();
  return scan;
}

tScanPtr cScanQueue::latest() {
  const std::lock_guard<std::mutex> lock(mutex);
  if (!scans.empty()) scans.erase(scans.begin(), scans.end() - 1);
  return take();
}

int cScanQueue::getDescriptor() {
  const std::lock_guard<std::mutex> lock(mutex);
  if (event.get() < 0) event = cDescriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
  signal();
  return event.get();
}

std::uint64_t cScanQueue::getDropped() const {
  const std::lock_guard<std::mutex> lock(mutex);
  return dropped;
}

void cScanQueue::setClosed(bool on) {
  const std::lock_guard<std::mutex> lock(mutex);
  closed = on;
  changed.notify_all();
}

bool cScanQueue::isClosed() const {
  const std::lock_guard<std::mutex> lock(mutex);
  return closed;
}

cSubscription::cSubscription(std::shared_ptr<cScanQueue> queue) : queue(std::move(queue)) {}
cSubscription::cSubscription(cSubscription&&) noexcept = default;
cSubscription& cSubscription::operator=(cSubscription&&) noexcept = default;
cSubscription::~cSubscription() = default;

tScanPtr cSubscription::next(std::chrono::milliseconds timeout) { return queue->next(timeout); }
tScanPtr cSubscription::latest() { return queue->latest(); }
int cSubscription::getDescriptor() { return queue->getDescriptor(); }
std::uint64_t cSubscription::getDropped() const { return queue->getDropped(); }
bool cSubscription::isEnded() const { return queue->isClosed(); }

// --- all of them -----------------------------------------------------------------------

/// A function that a host wants called. Its mutex is recursive, since the host may end the
/// subscription within the call.
class cScanHub::cCallback {
 public:
  explicit cCallback(std::function<void(const tScanPtr&)> call) : call(std::move(call)) {}

  void operator()(const tScanPtr& scan) {
    const std::lock_guard<std::recursive_mutex> lock(mutex);
    if (isOver) return;
    try {
      call(scan);
    } catch (...) {
      isOver = true;  // an exception that left the thread would end the process
    }
  }

  /// Waits for a call under way in another thread.
  void end() {
    const std::lock_guard<std::recursive_mutex> lock(mutex);
    isOver = true;
  }

 private:
  std::recursive_mutex mutex;
  bool isOver = false;  // under mutex
  const std::function<void(const tScanPtr&)> call;
};

std::shared_ptr<cScanQueue> cScanHub::subscribe(std::size_t depth) {
  auto queue = std::make_shared<cScanQueue>(std::max<std::size_t>(depth, 1));
  const std::lock_guard<std::mutex> lock(mutex);
  queue->setClosed(!isOpen);
  queues.push_back(queue);
  return queue;
}

std::shared_ptr<void> cScanHub::subscribe(std::function<void(const tScanPtr&)> callback) {
  auto made = std::make_shared<cCallback>(std::move(callback));
  const std::lock_guard<std::mutex> lock(mutex);
  callbacks.push_back(made);
  // The host's copies share one owner, whose end is the subscription's.
  return std::shared_ptr<void>(made.get(), [made](void*) { made->end(); });
}

namespace {

/// Those that are still there; the others are forgotten.
template <class tEntry>
void forgetEnded(std::vector<std::weak_ptr<tEntry>>& entries) {
  const auto isEnded = [](const std::weak_ptr<tEntry>& entry) { return entry.expired(); };
  entries.erase(std::remove_if(entries.begin(), entries.end(), isEnded), entries.end());
}

}  // namespace

std::vector<std::shared_ptr<cScanHub::cCallback>> cScanHub::getCallbacks() {
  const std::lock_guard<std::mutex> lock(mutex);
  forgetEnded(callbacks);
  std::vector<std::shared_ptr<cCallback>> living;
  for (const auto& callback : callbacks) living.push_back(callback.lock());
  living.erase(std::remove(living.begin(), living.end(), nullptr), living.end());
  return living;
}

std::uint64_t cScanHub::publish(const tScanPtr& scan) {
  std::uint64_t full = 0;
  {
    const std::lock_guard<std::mutex> lock(mutex);
    forgetEnded(queues);
    for (const auto& entry : queues) {
      if (const auto queue = entry.lock()) full += queue->push(scan) ? 1U : 0U;
    }
  }
  dropped += full;
  for (const auto& callback : getCallbacks()) (*callback)(scan);
  return full;
}

void cScanHub::setOpen(bool on) {
  const std::lock_guard<std::mutex> lock(mutex);
  isOpen = on;
  for (const auto& entry : queues) {
    if (const auto queue = entry.lock()) queue->setClosed(!on);
  }
}

}  // namespace tarvo
