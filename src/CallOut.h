// Calls of a caller's function in the middle of an operation, which fails when that function throws.
#pragma once
#include <exception>
#include <new>
#include <stdexcept>

namespace orxGenApi {

// What a caller threw that is no standard exception: neither a GenICam nor a standard one, so that no mapping takes it
// for one of the library's own failures.
struct ForeignException {};

// No exception object of a caller travels on: its class may only share its name with one of ours. What the call fails
// with is a copy, and of a standard exception only the text.
template <class Callback>
auto callOut(Callback&& callback) {
  try {
    return callback();
  } catch (const std::bad_alloc&) {
    throw std::bad_alloc();
  } catch (const std::exception& fault) {
    throw std::runtime_error(fault.what());
  } catch (...) {
    throw ForeignException();
  }
}

}  // namespace orxGenApi
