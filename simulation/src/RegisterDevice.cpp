#include "OxSimulation/RegisterDevice.h"

#include <utility>

namespace ox::simulation {

namespace {
std::string& failureText() noexcept {
  thread_local std::string text;
  return text;
}
}  // namespace

RegisterDevice::~RegisterDevice() = default;

const std::string& RegisterDevice::lastFailureText() noexcept { return failureText(); }

int RegisterDevice::fail(int code, std::string text) noexcept {
  failureText() = std::move(text);
  return code;
}

}  // namespace ox::simulation
