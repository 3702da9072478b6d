#include "Session.h"

#include <OxBase/OxBase.h>

#include <algorithm>
#include <cstdlib>
#include <system_error>
#include <vector>

#include "Failure.h"

namespace ox::camera {
namespace {

using Clock = std::chrono::steady_clock;

constexpr Milliseconds kClosingTime{1500};     // of a device that does not answer any more
constexpr Milliseconds kStoppingTime{1000};    // of a stream when the camera is closed
constexpr Milliseconds kShortestInterval{10};  // between two heartbeats
constexpr Milliseconds kLongestInterval{1000};

// Those that the program has not closed are given back at its end, so that the next one finds them free.
class OpenSessions {
 public:
  static OpenSessions& all() {
    static OpenSessions& sessions = *new OpenSessions;
    return sessions;
  }
  void add(const std::shared_ptr<Session>& session) {
    const std::lock_guard lock(mutex_);
    std::erase_if(sessions_, [](const std::weak_ptr<Session>& known) { return known.expired(); });
    sessions_.push_back(session);
  }

 private:
  OpenSessions() {
    std::atexit([] {
      std::vector<std::weak_ptr<Session>> left;
      {
        const std::lock_guard lock(all().mutex_);
        left.swap(all().sessions_);
      }
      for (const std::weak_ptr<Session>& weak : left)
        if (const std::shared_ptr<Session> session = weak.lock()) session->close();
    });
  }
  std::mutex mutex_;
  std::vector<std::weak_ptr<Session>> sessions_;
};

[[noreturn]] void throwClosed() { throw CameraError(OXCAMERA_E_CLOSED, "The camera is closed"); }

}  // namespace

Session::Session(const OpenOptions& options) : options_(options), features_(options.description, options.byteOrder) {}

std::shared_ptr<Session> Session::open(const std::string& name, const OpenOptions& options) {
  std::shared_ptr<Session> session(new Session(options));
  session->features_.connectTo(session);
  uint64_t number = 0;
  const Caller caller = session->begin(number);
  session->install(number, openCamera(name, options, caller));
  session->heartbeat_ = std::thread([raw = session.get()] { raw->keepAlive(); });
  OpenSessions::all().add(session);
  return session;
}

Session::~Session() { close(); }

Caller Session::begin(uint64_t& number) {
  const std::lock_guard lock(mutex_);
  number = ++openings_;
  const auto report = [weak = weak_from_this(), number](const std::string& reason) {
    if (const auto session = weak.lock()) session->lose(number, reason);
  };
  return {report, [this] { return state() == CS_Closed; }};
}

void Session::install(uint64_t number, OpenedCamera opened) {
  ListedCamera camera = opened.camera;
  auto connection = std::make_shared<Connection>(number, std::move(opened));
  {
    const std::lock_guard lock(mutex_);
    if (state_ != CS_Closed && lostNumber_ != number) {
      camera_ = std::move(camera);
      connection_ = std::move(connection);
      state_ = CS_Open;
      lastFailure_ = {};
      changed_.notify_all();
      return;
    }
  }
  Connection::close(std::move(connection), kClosingTime);
  if (state() == CS_Closed) throwClosed();
  throw CameraError(OXCAMERA_E_LOST, reason_);
}

ListedCamera Session::camera() const {
  const std::lock_guard lock(mutex_);
  return camera_;
}

TCameraState Session::state() const {
  const std::lock_guard lock(mutex_);
  return state_;
}

Session::Failure Session::lastFailure() const {
  const std::lock_guard lock(mutex_);
  return lastFailure_;
}

std::shared_ptr<Connection> Session::connection() const {
  const std::lock_guard lock(mutex_);
  if (state_ == CS_Closed) throwClosed();
  if (state_ == CS_Lost) throw CameraError(OXCAMERA_E_LOST, "The camera is lost: " + reason_);
  return connection_;
}

void Session::giveBack(std::shared_ptr<Connection> connection) {
  {
    const std::lock_guard lock(mutex_);
    if (connection == connection_) {
      connection.reset();
      return;
    }
  }
  Connection::close(std::move(connection), Milliseconds{0});
}

template <class Use>
void Session::withConnection(Use use) {
  const auto note = [this](uint32_t code, const char* text) {
    const std::lock_guard lock(mutex_);
    lastFailure_ = {code, text};
  };
  std::shared_ptr<Connection> connection;
  try {
    connection = this->connection();
    use(*connection);
  } catch (const CameraError& error) {
    note(error.code(), error.what());
    if (connection) giveBack(std::move(connection));
    throw;
  } catch (const TransportError& error) {
    note(codeOf(error.reason()), error.what());
    if (error.reason() == Reason::lost) lose(connection->number(), error.what());
    giveBack(std::move(connection));
    throw;
  }
  giveBack(std::move(connection));
}

void Session::use(const std::function<void(Device&)>& use) {
  withConnection([&](Connection& connection) { connection.use(use); });
}

bool Session::nextEvent(EventMessage& event, Milliseconds time) {
  bool came = false;
  withConnection([&](Connection& connection) { came = connection.nextEvent(event, time); });
  return came;
}

void Session::read(void* buffer, uint64_t address, size_t length) {
  withConnection(
      [&](Connection& connection) { connection.use([&](Device& device) { device.read(buffer, address, length); }); });
}

void Session::write(const void* buffer, uint64_t address, size_t length) {
  requireControl();
  withConnection(
      [&](Connection& connection) { connection.use([&](Device& device) { device.write(buffer, address, length); }); });
}

void Session::requireControl() {
  if (options_.control) return;
  const std::lock_guard lock(mutex_);
  lastFailure_ = {OXCAMERA_E_READ_ONLY, camera_.id + " was opened read only"};
  throw CameraError(lastFailure_.code, lastFailure_.text);
}

void Session::readFeature(void* buffer, uint64_t address, size_t length) { read(buffer, address, length); }

void Session::writeFeature(const void* buffer, uint64_t address, size_t length) { write(buffer, address, length); }

TAccessMode Session::featureAccess() const {
  return AM_ReadWrite;  // of a camera opened read only, too: the refusal of a write names the reason
}

template <class Ask>
auto Session::withFeatures(Ask ask) {
  std::shared_ptr<Connection> connection = this->connection();
  try {
    auto result = ask(*connection);
    giveBack(std::move(connection));
    return result;
  } catch (...) {
    giveBack(std::move(connection));
    throw;
  }
}

NODEMAP Session::nodeMap() {
  return withFeatures([this](Connection& connection) { return features_.take(connection, camera()); });
}

std::string Session::description() {
  return withFeatures([this](Connection& connection) { return features_.description(connection); });
}

void Session::prepareFeatures() noexcept {
  if (prepared_.exchange(true)) return;
  try {
    OxIfaceContainerReleaseUseCounter(nodeMap());
  } catch (...) {  // without a usable description words are moved as memory
  }
}

void Session::keepAlive() {
  const Milliseconds interval = std::clamp(options_.heartbeat / 4, kShortestInterval, kLongestInterval);
  uint64_t number = 0;
  Clock::time_point answered;
  std::unique_lock lock(mutex_);
  while (!changed_.wait_for(lock, interval, [this] { return state_ == CS_Closed; })) {
    if (state_ != CS_Open) continue;
    std::shared_ptr<Connection> connection = connection_;
    lock.unlock();
    if (number != connection->number()) answered = Clock::now();
    number = connection->number();
    try {
      connection->ping();
      answered = Clock::now();
    } catch (const TransportError& error) {
      if (error.reason() == Reason::lost || Clock::now() - answered >= options_.heartbeat) lose(number, error.what());
    } catch (const std::exception& error) {
      lose(number, error.what());
    } catch (...) {
      lose(number, "the transport failed");
    }
    giveBack(std::move(connection));
    lock.lock();
  }
}

void Session::lose(uint64_t number, const std::string& reason) {
  std::shared_ptr<Connection> connection;
  {
    const std::lock_guard lock(mutex_);
    if (number != openings_ || state_ == CS_Closed || lostNumber_ == number) return;
    lostNumber_ = number;
    reason_ = reason;
    if (state_ != CS_Open) return;  // before the opening was over: install() will tell
    state_ = CS_Lost;
    connection = std::move(connection_);
    callBack();
    changed_.notify_all();
  }
  connection->end(OXCAMERA_E_LOST, "The camera is lost: " + reason);
  acquisition_.lose(reason);
  connection->release();
  Connection::close(std::move(connection), Milliseconds{0});
}

void Session::callBack() {
  const std::shared_ptr<Session> self = weak_from_this().lock();
  if (!callback_ || !self) return;
  const auto call = [self, callback = callback_, reason = reason_] {
    try {
      callback(reason);
    } catch (...) {  // it must not throw, and nobody is left to hear of it
    }
    const std::lock_guard lock(self->mutex_);
    self->callingBack_.erase(std::this_thread::get_id());
    self->changed_.notify_all();
  };
  try {
    std::thread thread(call);
    callingBack_.insert(thread.get_id());
    thread.detach();
  } catch (const std::system_error&) {  // the loss shows in the state and in every access
  }
}

void Session::onLoss(std::function<void(const std::string& reason)> callback) {
  std::unique_lock lock(mutex_);
  callback_ = std::move(callback);
  changed_.wait(lock, [this] { return callingBack_.empty() || callingBack_.contains(std::this_thread::get_id()); });
  if (state_ == CS_Lost) callBack();
}

void Session::waitForLoss(Milliseconds time) {
  std::unique_lock lock(mutex_);
  if (!changed_.wait_for(lock, time, [this] { return state_ != CS_Open; }))
    throw CameraError(OXCAMERA_E_TIMEOUT, "The camera was not lost within " + std::to_string(time.count()) + " ms");
  if (state_ == CS_Closed) throwClosed();
}

void Session::reopen(Milliseconds retry) {
  const std::unique_lock once(reopening_, std::try_to_lock);
  if (!once) throw CameraError(OXCAMERA_E_IN_USE, "Another thread is opening the camera again");
  std::shared_ptr<Connection> former;
  {
    const std::lock_guard lock(mutex_);
    if (state_ == CS_Closed) throwClosed();
    state_ = CS_Lost;
    reason_ = "it is being opened again";
    former = std::move(connection_);
    changed_.notify_all();
  }
  if (former) {
    former->end(OXCAMERA_E_LOST, "The camera is lost: it is being opened again");
    acquisition_.lose("it is being opened again");
    Connection::close(std::move(former), kClosingTime);
  }
  OpenOptions options = options_;
  options.retry = retry;
  uint64_t number = 0;
  const Caller caller = begin(number);
  try {
    install(number, openAgain(camera(), options, caller));
  } catch (const std::exception& error) {
    const std::lock_guard lock(mutex_);
    reason_ = error.what();
    throw;
  }
  withFeatures([this](Connection& connection) {
    features_.renew(connection, camera());
    return true;
  });
}

void Session::close() {
  acquisition_.close(kStoppingTime);
  std::shared_ptr<Connection> connection;
  std::thread heartbeat;
  {
    const std::lock_guard lock(mutex_);
    state_ = CS_Closed;
    connection = std::move(connection_);
    heartbeat = std::move(heartbeat_);
    changed_.notify_all();
  }
  if (connection) connection->end(OXCAMERA_E_CLOSED, "The camera is closed");
  acquisition_.finish();
  if (connection) Connection::close(std::move(connection), kClosingTime);
  if (heartbeat.joinable()) heartbeat.join();
}

}  // namespace ox::camera
