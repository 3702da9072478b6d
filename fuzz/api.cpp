// A stream of calls on every export, decoded from the input: live, stale and odd handles, odd sizes, failing and lying
// devices, callbacks that call back. What calls promise is judged in tests/calls.
#include <cstddef>
#include <cstdint>

#include "OxGenApi/OxGenApi.h"
#include "calls/Caller.h"

namespace {

// Keeps the descriptions parsed: loading the text is what other targets do.
struct Keeper {
  Keeper() {
    for (size_t i = 0; i < 2; ++i) {
      CreateNodeMap(maps[i]);
      NMLoadXMLString(maps[i], calls::descriptions()[i].c_str());
    }
  }
  NODEMAP maps[2];
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  constexpr size_t kMaxBytes = 4096;
  if (size > kMaxBytes) return 0;
  static const Keeper keeper;
  calls::World world;
  calls::SavedBytes bytes(data, size);
  calls::Caller caller(bytes, world);
  while (!bytes.empty()) caller.step();
  return 0;
}
