// Stands before any device: counts what is asked of it, and makes accesses fail, lie, wait or re-enter.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "OxSimulation/RegisterDevice.h"

namespace ox::simulation {

/// Accesses are counted before they fail or pass; a failed one does not reach the device. Safe to use from several
/// threads; no lock is held while the hook or the device runs.
class FaultPort final : public RegisterDevice {
 public:
  enum class Kind { kRead, kWrite };

  struct Access {
    Kind kind;
    int64_t address;
    int64_t length;
    int64_t number;  ///< 1 for the first access of the port
  };

  /// The device must outlive the port.
  explicit FaultPort(RegisterDevice& device) : device_(device) {}

  int read(void* buffer, int64_t address, int64_t length) override;
  int write(const void* buffer, int64_t address, int64_t length) override;
  int accessMode() override;

  /// The `n`-th access from now (1: the next one) fails with `code`; once. An empty text means that the access gives
  /// no reason.
  void failNth(int64_t n, int code, std::string text = {});
  /// From now on every `k`-th access fails (1: each one). Throws std::invalid_argument for k below 1.
  void failEvery(int64_t k, int code, std::string text = {});
  /// Every access for which `condition` holds fails. It is called with a lock held: must not call the port.
  void failWhen(std::function<bool(const Access&)> condition, int code, std::string text = {});
  /// Reads succeed and give bytes that have nothing to do with the device; the same ones for the same seed.
  void garbleReads(uint64_t seed = 1);
  /// What accessMode() says instead of the device.
  void reportAccessMode(int mode);
  /// Called before each access, on its thread, also before one that will fail. May use the port and the device, wait,
  /// or throw: an exception leaves the access as it is.
  void onAccess(std::function<void(const Access&)> hook);
  /// Forgets all of the above; counts stay.
  void heal();

  int64_t reads() const;
  int64_t writes() const;
  int64_t accessModeQueries() const;
  /// Accesses of a kind that began at an address.
  int64_t count(Kind kind, int64_t address) const;
  /// All accesses since construction or clearCounts(), in order; the first kMaxLogged of them.
  std::vector<Access> log() const;
  void clearCounts();

  static constexpr std::size_t kMaxLogged = 1 << 20;

 private:
  struct Fault {
    int code;
    std::string text;
  };

  /// Counts, calls the hook, and tells what is to go wrong.
  std::optional<Fault> enter(Kind kind, int64_t address, int64_t length);
  std::optional<Fault> faultFor(const Access& access);

  RegisterDevice& device_;
  mutable std::mutex mutex_;
  int64_t number_ = 0;
  int64_t reads_ = 0;
  int64_t writes_ = 0;
  int64_t accessModeQueries_ = 0;
  std::map<std::pair<Kind, int64_t>, int64_t> counts_;
  std::vector<Access> log_;

  std::map<int64_t, Fault> once_;  // by number of the access
  int64_t every_ = 0;
  int64_t everySince_ = 0;
  Fault everyFault_;
  std::vector<std::pair<std::function<bool(const Access&)>, Fault>> conditions_;
  std::optional<uint64_t> garbage_;
  std::optional<int> mode_;
  std::function<void(const Access&)> hook_;
};

}  // namespace ox::simulation
