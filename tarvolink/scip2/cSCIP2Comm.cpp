#include "tarvolink/scip2/cSCIP2Comm.h"

#include <algorithm>
#include <boost/chrono.hpp>
#include <boost/make_shared.hpp>
#include <limits>
#include <stdexcept>
#include <string_view>

#include "tarvolink/scip/cSCIPError.h"
#include "tarvolink/scip2/checkedLine.h"

namespace {

// How often a hung-up port is looked at: often enough to stop well, far below 1 % of a core.
constexpr boost::chrono::milliseconds DEAD_PORT_PAUSE(100);

// A command that is never answered leaves its listener expecting for good. Beyond this many
// the oldest is dropped, so that a sensor that went mute costs no memory over a year.
constexpr int ABANDONED_LIMIT = 256;

}  // namespace

cSCIP2Comm::cSCIP2Comm(boost::shared_ptr<cTarvoLink> givenLink) : link(givenLink) {}

cSCIP2Comm::~cSCIP2Comm() { finalize(); }

void cSCIP2Comm::threadInit() { finished = false; }

void cSCIP2Comm::threadFunc() {
  try {
    while (servePass()) {
    }
  } catch (...) {
    // Out of memory, in the middle of a pass: there is nobody to tell but the callers.
  }
  setFinishing();
  closeQueue();
}

void cSCIP2Comm::threadFinReq() {
  setFinishing();  // a later run must not start a thread that nothing could wake
  if (!wasStarted()) closeQueue();
  interruptReads(true);
  cReqType stop;
  if (queue.postIfOpen(&stop)) stop.done.wait();
  interruptReads(false);
  finished = true;
}

/// Ends a receive between two reads, or a driver on a babbling line could not be stopped.
void cSCIP2Comm::interruptReads(bool on) {
  if (link) link->portbuf->interruptReads(on);
}

// --- callers ---------------------------------------------------------------------------

cSCIP2RecordListener* cSCIP2Comm::sendRequest(std::string command, int count) {
  cReqType request;
  request.command = command;
  request.count = count;
  return post(request);
}

cSCIP2RecordListener* cSCIP2Comm::claimRequest(std::string command, int count) {
  cReqType request;
  request.command = command;
  request.count = count;
  request.claims = true;
  return post(request);
}

cSCIP2RecordListener* cSCIP2Comm::post(cReqType& request) {
  if (!queue.postIfOpen(&request)) return nullptr;
  request.done.wait_and_reset();
  return request.listener;
}

cSCIP2RecordListener* cSCIP2Comm::resumeRequest(cSCIP2RecordListener* listener,
                                                std::string command) {
  const auto request = boost::make_shared<cReqType>();
  request->command = command;
  request->listener = listener;
  request->self = request;
  request->entries = 2;
  for (int entry = 0; entry < 2; ++entry) {
    if (!queue.postIfOpen(request.get())) wake(request.get());
  }
  request->done.wait_and_reset();
  return listener;
}

boost::shared_ptr<cSCIPRecord> cSCIP2Comm::waitRecord(cSCIP2RecordListener* listener, int timeout) {
  return listener ? listener->waitRecord(timeout) : boost::shared_ptr<cSCIPRecord>();
}

boost::shared_ptr<cSCIPRecord> cSCIP2Comm::waitRecord(int tag, int timeout) {
  boost::shared_ptr<cSCIP2RecordListener> found;
  {
    boost::mutex::scoped_lock guard(listsMutex);
    const auto place =
        std::find_if(activeListeners.begin(), activeListeners.end(),
                     [tag](const cSCIP2RecordListener* listener) { return listener->tag == tag; });
    if (place != activeListeners.end()) found = findOwner(*place);
  }
  return found ? found->waitRecord(timeout) : boost::shared_ptr<cSCIPRecord>();
}

void cSCIP2Comm::release(cSCIP2RecordListener* listener) {
  boost::mutex::scoped_lock guard(listsMutex);
  listener->claimed = false;
  listener->abandoned = isActive(listener);
  if (listener->abandoned) {
    boundAbandoned();
  } else {
    disownRetired(listener);
  }
}

void cSCIP2Comm::retire(cSCIP2RecordListener* listener) {
  boost::mutex::scoped_lock guard(listsMutex);
  listener->retired = true;
}

boost::shared_ptr<cSCIP2RecordListener> cSCIP2Comm::keep(cSCIP2RecordListener* listener) {
  const boost::shared_ptr<cSCIP2RecordListener> owner = getOwner(listener);
  return boost::shared_ptr<cSCIP2RecordListener>(
      listener, [this, owner](cSCIP2RecordListener* kept) { recycle(kept); });
}

void cSCIP2Comm::recycle(cSCIP2RecordListener* listener) {
  boost::mutex::scoped_lock guard(listsMutex);
  listener->claimed = false;
  listener->empty();
  const auto place = std::find(activeListeners.begin(), activeListeners.end(), listener);
  if (place != activeListeners.end()) setFree(place);
  disownRetired(listener);
}

void cSCIP2Comm::giveUp() {
  interruptReads(true);
  cReqType request;
  request.givesUp = true;
  post(request);
  interruptReads(false);
}

void cSCIP2Comm::releaseLink() { link.reset(); }

bool cSCIP2Comm::validateLine(std::string& line, bool hasSemicolon) {
  if (!line.empty() && line.back() == '\n') line.pop_back();
  if (line.empty()) throw std::out_of_range("cSCIP2Comm::validateLine: an empty line has no sum");
  std::string_view summed = line;
  const bool isValid = takeSum(summed, hasSemicolon);
  line.resize(summed.size());
  return isValid;
}

// --- worker ----------------------------------------------------------------------------

/// One pass; false once the thread is to end.
bool cSCIP2Comm::servePass() {
  if (isFinishing()) return false;
  if (cReqType* request = takeRequest()) {
    if (request->givesUp) {
      forgetAll();
      wake(request);
      return true;
    }
    if (request->command.empty()) {
      setFinishing();
      closeQueue();
      wake(request);
      return false;
    }
    serve(*request);
  }
  if (expectsRecords()) receive();
  return true;
}

/// The next request, waiting for one unless records are expected; null: there is none.
cSCIP2Comm::cReqType* cSCIP2Comm::takeRequest() {
  const bool waits = !expectsRecords();
  boost::this_thread::disable_interruption uninterrupted;
  boost::mutex::scoped_lock guard(queue.mutex);
  while (queue.queue.empty()) {
    if (!waits) return nullptr;
    queue.cond.wait(guard);
  }
  cReqType* const request = queue.queue.front();
  queue.queue.pop_front();
  return request;
}

void cSCIP2Comm::serve(cReqType& request) {
  try {
    if (request.listener == nullptr) assignListener(request);
    send(request);
  } catch (...) {
    if (!request.self) request.listener = nullptr;
    wake(&request);
    throw;
  }
  wake(&request);
}

void cSCIP2Comm::assignListener(cReqType& request) {
  boost::mutex::scoped_lock guard(listsMutex);
  const auto place = std::find_if(
      freeListeners.begin(), freeListeners.end(),
      [](const cSCIP2RecordListener* listener) { return !listener->busy && !listener->claimed; });
  if (place != freeListeners.end()) {
    activeListeners.splice(activeListeners.end(), freeListeners, place);
  } else {
    const auto made = boost::make_shared<cSCIP2RecordListener>();
    listeners.push_back(made);
    activeListeners.push_back(made.get());
  }
  request.listener = activeListeners.back();
  request.listener->claimed = request.claims;
}

void cSCIP2Comm::send(cReqType& request) {
  {
    boost::mutex::scoped_lock guard(listsMutex);
    request.listener->resetResponse(request.command, nextTag, request.count);
  }
  *link->stream << request.command + ";" + std::to_string(nextTag) + cTarvoLink::SEND_EOL;
  nextTag = nextTag == std::numeric_limits<int>::max() ? 1 : nextTag + 1;
}

void cSCIP2Comm::receive() {
  const auto record = boost::make_shared<cSCIPRecord>();
  if (!receive(*record)) {
    if (link->portbuf->isDeadEnd()) pause();
    return;
  }
  // A status line that is empty has no sum to look at.
  if (record->status.empty() || !validateLine(record->status, false)) {
    record->error = cSCIPError::EINVALID_STATUS;
  }
  offer(record);
}

/// Receives into `record` and shows the link's users what came; the lock is not held while
/// waiting.
bool cSCIP2Comm::receive(cSCIPRecord& record) {
  record.command = link->record.command;
  record.time = link->record.time;
  const bool isComplete = link->recvRecord(record);
  boost::mutex::scoped_lock guard(link->mutex);
  link->record = record;
  return isComplete;
}

void cSCIP2Comm::offer(boost::shared_ptr<cSCIPRecord> record) {
  boost::mutex::scoped_lock guard(listsMutex);
  const auto taker =
      std::find_if(activeListeners.begin(), activeListeners.end(),
                   [&record](cSCIP2RecordListener* listener) { return listener->push(record); });
  if (taker == activeListeners.end() || !(*taker)->isComplete()) return;
  cSCIP2RecordListener* const complete = *taker;
  setFree(taker);
  disownRetired(complete);
}

/// Moves an active listener to the end of the free ones. Allocates nothing: a scan's listener
/// comes here from a destructor.
void cSCIP2Comm::setFree(std::list<cSCIP2RecordListener*>::iterator place) {
  (*place)->abandoned = false;
  freeListeners.splice(freeListeners.end(), activeListeners, place);
}

/// Lets a free listener go if it is retired and nobody holds it.
void cSCIP2Comm::disownRetired(cSCIP2RecordListener* listener) {
  if (!listener->retired || listener->claimed) return;
  freeListeners.remove(listener);
  listeners.erase(std::find(listeners.begin(), listeners.end(), findOwner(listener)));
}

boost::shared_ptr<cSCIP2RecordListener> cSCIP2Comm::getOwner(cSCIP2RecordListener* listener) {
  boost::mutex::scoped_lock guard(listsMutex);
  return findOwner(listener);
}

boost::shared_ptr<cSCIP2RecordListener> cSCIP2Comm::findOwner(
    const cSCIP2RecordListener* listener) const {
  return *std::find_if(listeners.begin(), listeners.end(),
                       [listener](const boost::shared_ptr<cSCIP2RecordListener>& owner) {
                         return owner.get() == listener;
                       });
}

bool cSCIP2Comm::isActive(cSCIP2RecordListener* listener) const {
  return std::find(activeListeners.begin(), activeListeners.end(), listener) !=
         activeListeners.end();
}

bool cSCIP2Comm::expectsRecords() {
  boost::mutex::scoped_lock guard(listsMutex);
  return !activeListeners.empty();
}

void cSCIP2Comm::boundAbandoned() {
  const auto isAbandoned = [](const cSCIP2RecordListener* listener) { return listener->abandoned; };
  if (std::count_if(activeListeners.begin(), activeListeners.end(), isAbandoned) <=
      ABANDONED_LIMIT) {
    return;
  }
  const auto oldest = std::find_if(activeListeners.begin(), activeListeners.end(), isAbandoned);
  forget(oldest);
}

void cSCIP2Comm::forgetAll() {
  boost::mutex::scoped_lock guard(listsMutex);
  while (!activeListeners.empty()) forget(activeListeners.begin());
}

/// Expects nothing more of an active listener.
void cSCIP2Comm::forget(std::list<cSCIP2RecordListener*>::iterator place) {
  cSCIP2RecordListener* const forgotten = *place;
  forgotten->empty();
  setFree(place);
  disownRetired(forgotten);
}

/// Reading a hung-up port returns at once: sleeps a little, but not on a new request.
void cSCIP2Comm::pause() {
  boost::this_thread::disable_interruption uninterrupted;
  boost::mutex::scoped_lock guard(queue.mutex);
  if (queue.queue.empty()) queue.cond.wait_for(guard, DEAD_PORT_PAUSE);
}

void cSCIP2Comm::closeQueue() {
  queue.close([](cReqType* request) { wake(request); });
}

void cSCIP2Comm::wake(cReqType* request) {
  boost::shared_ptr<cReqType> last;
  if (request->self && --request->entries == 0) last.swap(request->self);
  request->done.unblock();
}
