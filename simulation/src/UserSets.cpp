// Settings kept in the camera: what UserSetSave stores, UserSetLoad and the next power on bring back.
#include <algorithm>
#include <array>

#include "Behaviours.h"
#include "DeviceFailure.h"

namespace ox::simulation {

namespace {

constexpr uint64_t kFactorySet = 0;
constexpr uint64_t kSets = 3;

class UserSets final : public Behaviour {
 public:
  explicit UserSets(CameraCore& core) : Behaviour(core) {
    registers().onWrite(reg("UserSetLoad"), [this](int32_t) {
      registers().setInteger(reg("UserSetLoad"), 0);
      apply(selected());
    });
    registers().onWrite(reg("UserSetSave"), [this](int32_t) {
      const uint64_t set = selected();
      if (set == kFactorySet) throw DeviceFailure(kAccessRefused, "UserSetSave: the set Default cannot be overwritten");
      sets_[set] = current();
      registers().setInteger(reg("UserSetSave"), 0);
    });
    const auto knownSet = [this](int32_t) {
      if (registers().integer(reg("UserSetDefault")) >= kSets || registers().integer(reg("UserSetSelector")) >= kSets)
        throw DeviceFailure(kInvalidArgument, "there is no such user set");
    };
    registers().onWrite(reg("UserSetDefault"), knownSet);
    registers().onWrite(reg("UserSetSelector"), knownSet);
  }

  // Runs after all others, so that the registers now hold what the factory set means.
  void powerOn() override {
    sets_[kFactorySet] = current();
    for (auto& set : sets_)
      if (set.empty()) set = sets_[kFactorySet];
    apply(registers().integer(reg("UserSetDefault")));
  }

  void save(StateBlocks& blocks) const override {
    for (uint64_t set = kFactorySet + 1; set < kSets; ++set)
      for (const auto& [name, bytes] : sets_[set]) blocks.emplace(prefix(set) + name, bytes);
  }

  void load(const StateBlocks& blocks) override {
    for (uint64_t set = kFactorySet + 1; set < kSets; ++set)
      for (auto& [name, bytes] : sets_[set]) {
        const auto found = blocks.find(prefix(set) + name);
        if (found != blocks.end() && found->second.size() == bytes.size()) bytes = found->second;
      }
  }

 private:
  static std::string prefix(uint64_t set) { return "userset/" + std::to_string(set) + "/"; }

  uint64_t selected() const { return std::min(registers().integer(reg("UserSetSelector")), kSets - 1); }

  StateBlocks current() const {
    StateBlocks blocks;
    for (std::size_t i = 0; i < kRegisterCount; ++i) {
      if ((kRegisters[i].flags & kUserSet) == 0) continue;
      const auto bytes = registers().bytes(static_cast<RegisterId>(i));
      blocks.emplace(kRegisters[i].name, std::vector<uint8_t>(bytes.begin(), bytes.end()));
    }
    return blocks;
  }

  void apply(uint64_t set) {
    if (set >= kSets) set = kFactorySet;  // a loaded state may say anything
    for (std::size_t i = 0; i < kRegisterCount; ++i) {
      const auto found = sets_[set].find(std::string(kRegisters[i].name));
      if (found == sets_[set].end()) continue;
      std::copy(found->second.begin(), found->second.end(), registers().bytes(static_cast<RegisterId>(i)).begin());
    }
  }

  std::array<StateBlocks, kSets> sets_;
};

}  // namespace

std::unique_ptr<Behaviour> makeUserSets(CameraCore& core) { return std::make_unique<UserSets>(core); }

}  // namespace ox::simulation
