#pragma once

#include <atomic>
#include <boost/shared_ptr.hpp>
#include <boost/thread/mutex.hpp>
#include <list>
#include <string>
#include <string_view>
#include <vector>

#include "tarvolink/base/cBSync.h"
#include "tarvolink/base/cMessQueue.h"
#include "tarvolink/base/cThread.h"
#include "tarvolink/export.h"
#include "tarvolink/scip/cTarvoLink.h"
#include "tarvolink/scip2/cSCIP2RecordListener.h"

/// The conversation with a SCIP 2.0 sensor: the thread that alone writes and reads the port.
///
/// One pass of the worker: it takes a request from the queue (sleeping there while no record is
/// expected), gives it a listener and a tag, writes its line and wakes its caller; then, while any
/// listener expects records, it receives one and hands it to the listener with its tag. A request
/// waits for the read under way, which ends by the port's read time-out at the latest.
///
/// Stopping: a request with an empty command. However the worker ends, it closes the queue and
/// wakes the callers of every request left there, without a listener; later requests return like
/// that at once. The destructor stops and joins the worker while all members are alive.
///
/// Any thread, for every operation not marked otherwise. A request posted before `run` waits for
/// it.
class TARVOLINK_API cSCIP2Comm : public kavTBX::cThread {
 public:
  /// One request. It lives in its caller until the worker raises `done`, and the worker does not
  /// touch it afterwards.
  struct cReqType {
    std::string command;                       ///< without tag and line end; empty: stop
    int count = 0;                             ///< records expected, see the listener
    cSCIP2RecordListener* listener = nullptr;  ///< collects the answers
    kavTBX::cBSync done;                       ///< raised once the line is written
    bool claims = false;                       ///< the listener serves this caller alone
    bool givesUp = false;                      ///< not a command: give up all other requests
    /// Of a resumed request, which is in the queue twice: keeps it alive until both entries are
    /// served, since its caller returns after the first.
    boost::shared_ptr<cReqType> self;
    std::atomic<int> entries{0};  ///< of a resumed request: its entries not yet served
  };

  /// A conversation over `link`. Does not start the thread.
  explicit cSCIP2Comm(boost::shared_ptr<cTarvoLink> link);
  ~cSCIP2Comm() override;

  /// Sends `command` with a tag; blocks until its line is written. The result collects `count`
  /// records (below 0: without end) and may serve another request as soon as it has them. It lives
  /// as long as this object, unless `claimRequest` is used too. Null if the thread has ended.
  cSCIP2RecordListener* sendRequest(std::string command, int count);

  /// The same, but the listener serves this caller alone until `release`, or until the last copy of
  /// what `detach` returns is gone; after that it may be destroyed. See `cSCIP2Claim`.
  cSCIP2RecordListener* claimRequest(std::string command, int count);

  /// Sends `command` twice, each with its own tag, for `listener`, which then expects one record,
  /// with the second tag. Blocks until the first line is written. Returns `listener`, which gets no
  /// answer if the thread has ended.
  cSCIP2RecordListener* resumeRequest(cSCIP2RecordListener* listener, std::string command);

  /// `listener->waitRecord(timeout)`, milliseconds; empty if `listener` is null.
  boost::shared_ptr<cSCIPRecord> waitRecord(cSCIP2RecordListener* listener, int timeout);

  /// Waits up to `timeout` milliseconds on the listener that expects records for `tag`; empty if
  /// there is none or none came.
  boost::shared_ptr<cSCIPRecord> waitRecord(int tag, int timeout);

  /// The caller has its record or gave up: `listener` may serve another request once it is
  /// complete.
  void release(cSCIP2RecordListener* listener);

  /// The caller took a late answer from `listener`: after its `release` it serves no other request.
  void withdraw(cSCIP2RecordListener* listener);

  /// Leaves `listener` to the caller of `claimRequest` for as long as a copy of the result exists.
  /// After the last one it is cleared and expects no more records. No copy may outlive this object.
  boost::shared_ptr<cSCIP2RecordListener> detach(cSCIP2RecordListener* listener);

  /// Gives up every unanswered request. When it returns, the thread sleeps on its queue and does
  /// not read until the next request.
  void giveUp();

  /// Releases the link. Call it only after `giveUp`, and post no request afterwards. One caller at
  /// a time.
  void releaseLink();

  /// Whether `line` ends in its checksum: ((the bytes before it, added up) AND 0x3F) + 0x30. Edits
  /// `line` in place, whatever the result: removes a line feed at its end, then, unless fewer than
  /// 3 characters are left, the checksum and, with `hasSemicolon`, a ";" before it, which the
  /// checksum does not cover. Throws std::out_of_range for an empty line. Any thread.
  static bool validateLine(std::string& line, bool hasSemicolon);

  /// The character that ends a line with this text: ((bytes added up) AND 0x3F) + 0x30. Any thread.
  static char getSum(std::string_view text);

 protected:
  void threadInit() override;
  void threadFunc() override;
  void threadFinReq() override;

 private:
  cSCIP2RecordListener* post(cReqType& request);
  bool servePass();
  cReqType* takeRequest();
  void serve(cReqType& request);
  void assignListener(cReqType& request);
  void send(cReqType& request);
  void receive();
  bool receive(cSCIPRecord& record);
  void offer(boost::shared_ptr<cSCIPRecord> record);
  void forgetAll();
  void pause();
  void closeQueue();
  static void wake(cReqType* request);
  bool expectsRecords();
  void recycle(cSCIP2RecordListener* listener);
  void setFree(std::list<cSCIP2RecordListener*>::iterator place);
  void eraseIfWithdrawn(cSCIP2RecordListener* listener);
  void forget(std::list<cSCIP2RecordListener*>::iterator place);
  void boundAbandoned();
  bool isActive(cSCIP2RecordListener* listener) const;
  boost::shared_ptr<cSCIP2RecordListener> getOwner(cSCIP2RecordListener* listener);
  boost::shared_ptr<cSCIP2RecordListener> findOwner(const cSCIP2RecordListener* listener) const;

  kavTBX::cMessQueue<cReqType*> queue;
  boost::shared_ptr<cTarvoLink> link;
  bool finished = false;    // the stop was acknowledged; nothing reads it, but a debugger shows it
  int nextTag = 1;          // worker only
  boost::mutex listsMutex;  // guards all below; taken before a listener's own
  std::list<cSCIP2RecordListener*> activeListeners;  // expect records, in the order sent
  std::list<cSCIP2RecordListener*> freeListeners;    // complete, for reuse
  std::vector<boost::shared_ptr<cSCIP2RecordListener>> listeners;  // owns them all
};
