#include "tarvoscan/cScanner.h"

#include <fmt/format.h>

#include <algorithm>
#include <system_error>
#include <thread>

#include "tarvoscan/port/startThread.h"
#include "tarvoscan/scanner/cScannerThread.h"
#include "tarvoscan/tarvoscan.h"

namespace tarvo {

namespace {

constexpr std::size_t OWN_DEPTH = 16;
constexpr std::chrono::seconds COMMAND_TIMEOUT{5};

}  // namespace

const char* getLibraryVersion() { return TARVOSCAN_VERSION; }

/// What the host's threads and the reading thread share; the reading thread keeps it alive, since a
/// host may destroy its scanner in a callback.
class cScanner::cImpl : public std::enable_shared_from_this<cImpl> {
 public:
  explicit cImpl(const cScannerOptions& options) : parts(options) {}

  void start();
  void stop();
  void abandon();
  bool isReadingThread() const { return std::this_thread::get_id() == readingThread; }
  std::shared_ptr<cScanQueue> getOwnQueue();
  cCommandResult run(eCommand kind);

  cScannerParts parts;

 private:
  void join();

  std::mutex life;  // starting and joining
  std::thread thread;
  std::atomic<std::thread::id> readingThread{std::thread::id()};
  std::once_flag isQueueMade;
  std::shared_ptr<cScanQueue> ownQueue;
};

void cScanner::cImpl::start() {
  if (isReadingThread()) return;
  const std::lock_guard<std::mutex> lock(life);
  if (thread.joinable() && parts.board.getState() != eState::STOPPED) return;
  join();
  parts.waker.reset();
  parts.board.reset();
  if (!parts.waker.isUsable()) {
    return parts.board.setState(eState::STOPPED,
                                {eProblem::NO_THREAD, "the system has no descriptors left.", ""});
  }
  parts.board.setState(eState::SEARCHING);
  parts.hub.setOpen(true);
  try {
    thread = startThread([self = shared_from_this()] {
      self->readingThread = std::this_thread::get_id();
      cScannerThread(self->parts).run();
      self->readingThread = std::thread::id();
    });
  } catch (const std::system_error& error) {
    parts.hub.setOpen(false);
    parts.board.setState(
        eState::STOPPED,
        {eProblem::NO_THREAD, fmt::format("no thread can be started: {}.", error.what()), ""});
  }
}

void cScanner::cImpl::stop() {
  parts.waker.requestStop();
  if (isReadingThread()) return;
  const std::lock_guard<std::mutex> lock(life);
  join();
}

/// Under `life`.
void cScanner::cImpl::join() {
  if (thread.joinable()) thread.join();
}

/// For the destructor: the thread ends by itself where it cannot be joined.
void cScanner::cImpl::abandon() {
  stop();
  if (isReadingThread()) thread.detach();
}

std::shared_ptr<cScanQueue> cScanner::cImpl::getOwnQueue() {
  std::call_once(isQueueMade, [this] { ownQueue = parts.hub.subscribe(OWN_DEPTH); });
  return ownQueue;
}

cCommandResult cScanner::cImpl::run(eCommand kind) {
  if (isReadingThread()) return {"a callback cannot wait for the sensor: use another thread", {}};
  const cHealth health = parts.board.get();
  if (health.state != eState::SCANNING && health.state != eState::PAUSED) {
    if (kind == eCommand::LASER_ON || kind == eCommand::LASER_OFF) {
      parts.isLaserWanted = kind == eCommand::LASER_ON;  // for when it is found
    }
    return {fmt::format("no sensor is connected: the scanner is {}. {}", toText(health.state),
                        health.problem.message),
            health.sensor};
  }
  const auto command = std::make_shared<cCommand>(kind);
  parts.commands.push(command);
  parts.waker.wake();
  return command->wait(COMMAND_TIMEOUT);
}

cScanner::cScanner(const cScannerOptions& options) : impl(std::make_shared<cImpl>(options)) {
  impl->start();
}

cScanner::~cScanner() { impl->abandon(); }

void cScanner::start() { impl->start(); }
void cScanner::stop() { impl->stop(); }
void cScanner::requestStop() noexcept { impl->parts.waker.requestStop(); }

bool cScanner::isStopped() const {
  return impl->parts.waker.isStopRequested() || impl->parts.board.getState() == eState::STOPPED;
}

cSubscription cScanner::subscribe(std::size_t depth) {
  return cSubscription(impl->parts.hub.subscribe(depth));
}

std::shared_ptr<void> cScanner::subscribe(std::function<void(const tScanPtr&)> callback) {
  return impl->parts.hub.subscribe(std::move(callback));
}

tScanPtr cScanner::next(std::chrono::milliseconds timeout) {
  return impl->getOwnQueue()->next(timeout);
}

cHealth cScanner::getHealth() const { return impl->parts.board.get(); }
cCommandResult cScanner::fetchStatus() { return impl->run(eCommand::FETCH_STATUS); }
cCommandResult cScanner::fetchVersion() { return impl->run(eCommand::FETCH_VERSION); }

cCommandResult cScanner::setLaser(bool on) {
  return impl->run(on ? eCommand::LASER_ON : eCommand::LASER_OFF);
}

}  // namespace tarvo
