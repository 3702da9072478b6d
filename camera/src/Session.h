// One camera from open to close: its connection, kept alive on a thread of its own, lost, found again.
#pragma once

#include <OxCamera/CameraTypes.h>

#include <atomic>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>

#include "Acquisition.h"
#include "CameraEvents.h"
#include "Connection.h"
#include "FeatureMap.h"
#include "Opening.h"

namespace ox::camera {

class Session final : public FeaturePort, public std::enable_shared_from_this<Session> {
 public:
  // Throws CameraError, TransportError.
  static std::shared_ptr<Session> open(const std::string& name, const OpenOptions& options);
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  ListedCamera camera() const;
  TCameraState state() const;
  NODEMAP nodeMap();
  std::string description();

  void read(void* buffer, uint64_t address, size_t length);
  void write(const void* buffer, uint64_t address, size_t length);
  void readFeature(void* buffer, uint64_t address, size_t length) override;
  void writeFeature(const void* buffer, uint64_t address, size_t length) override;
  TAccessMode featureAccess() const override;
  // Looks at the description once, so that the byte order is known also without a node map of this session.
  void prepareFeatures() noexcept;
  // Throws CameraError READ_ONLY.
  void requireControl();
  // Any other use of the device, in turn with reads and writes.
  void use(const std::function<void(Device&)>& use);

  Acquisition& acquisition() { return acquisition_; }
  CameraEvents& events() { return events_; }
  // See Device::nextEvent; beside reads and writes.
  bool nextEvent(EventMessage& event, Milliseconds time);
  // The connection in use, to be handed to giveBack(). Throws CameraError when lost or closed.
  std::shared_ptr<Connection> connection() const;
  // A share that may be the last one of a connection that has ended.
  void giveBack(std::shared_ptr<Connection> connection);

  struct Failure {
    uint32_t code = 0;
    std::string text;
  };
  Failure lastFailure() const;

  // `callback` is called once for each loss, on a thread of its own; an empty one takes the former away. Waits for a
  // callback that runs, except when called from it.
  void onLoss(std::function<void(const std::string& reason)> callback);
  // Throws CameraError TIMEOUT, CLOSED.
  void waitForLoss(Milliseconds time);
  // Throws as open() does; the session is lost then.
  void reopen(Milliseconds retry);
  void close();

 private:
  explicit Session(const OpenOptions& options);
  // The next opening: its number, and what the device and the tries ask while it lasts.
  Caller begin(uint64_t& number);
  void install(uint64_t number, OpenedCamera opened);
  void keepAlive();
  void lose(uint64_t number, const std::string& reason);
  void callBack();  // with the mutex held
  // Calls use(connection) with the one in use; a failure is noted, a loss ends the connection.
  template <class Use>
  void withConnection(Use use);
  template <class Ask>
  auto withFeatures(Ask ask);

  const OpenOptions options_;
  FeatureMap features_;
  Acquisition acquisition_{*this};
  CameraEvents events_{*this};
  std::atomic<bool> prepared_ = false;
  std::mutex reopening_;

  mutable std::mutex mutex_;  // a leaf, for everything below
  std::condition_variable changed_;
  ListedCamera camera_;
  std::shared_ptr<Connection> connection_;
  uint64_t openings_ = 0;
  TCameraState state_ = CS_Lost;
  std::string reason_;       // why it is lost
  uint64_t lostNumber_ = 0;  // the last opening that ended in a loss
  Failure lastFailure_;
  std::function<void(const std::string&)> callback_;
  std::set<std::thread::id> callingBack_;
  std::thread heartbeat_;
};

}  // namespace ox::camera
