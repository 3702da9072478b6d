// The behaviours that need no further interface: each installs its hooks on the registers it is about.
#pragma once

#include <functional>
#include <memory>

#include "CameraCore.h"

namespace ox::simulation {

/// Time, temperature, status, self-test. `reset` is called within the write to DeviceReset and only takes note.
std::unique_ptr<Behaviour> makeHousekeeping(CameraCore& core, std::function<void()> reset);
/// Lines, user outputs, counters, timers.
std::unique_ptr<Behaviour> makeSignals(CameraCore& core);
/// Gain, exposure and white balance that adjust themselves.
std::unique_ptr<Behaviour> makeAutomatics(CameraCore& core);
/// UserSetLoad, UserSetSave and the set of power on.
std::unique_ptr<Behaviour> makeUserSets(CameraCore& core);
/// The registers behind the test features.
std::unique_ptr<Behaviour> makeTestRegisters(CameraCore& core);

}  // namespace ox::simulation
