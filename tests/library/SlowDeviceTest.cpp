// A device that takes its time holds up nobody who does not need it.
#include <chrono>
#include <functional>
#include <semaphore>
#include <thread>
#include <utility>

#include "Device.h"

namespace {

TEST(SlowDevice, HoldsUpNobodyWhoNeedsNoDevice) {
  const char* const kTip = "<ToolTip>How wide</ToolTip>";
  Device device("<Integer Name='Width'>" + std::string(kTip) + "<pValue>WidthReg</pValue></Integer>" +
                integerRegister("WidthReg", 0) + "<Integer Name='Other'>" + kTip + "<Value>1</Value></Integer>");
  const NODE width = device.node("Width");
  std::binary_semaphore waiting(0), answered(0);
  bool isFirst = true;
  device.after = [&](int64_t, bool) {
    if (!std::exchange(isFirst, false)) return;
    waiting.release();
    // Generous: what runs out here is not time but patience.
    EXPECT_TRUE(answered.try_acquire_for(std::chrono::seconds(30))) << "somebody waits for the device";
  };
  std::jthread reader([&] {
    int64_t value = 0;
    EXPECT_OK(NGetAsInteger(width, &value));
  });
  waiting.acquire();
  TNodeType type{};
  uint32_t count = 0;
  EXPECT_OK(NType(width, &type));
  EXPECT_OK(NMNodeCount(device.map, count));
  const NODE other = device.node("Other");
  for (const TNodeInfo item : {NI_Name, NI_DisplayName, NI_ToolTip})
    EXPECT_NE(textOf([&](char* text, size_t& size) { return NInfoAsString(other, item, text, size); }), "") << item;
  EXPECT_NE(textOf([&](char* text, size_t& size) { return NMInfoAsString(device.map, NMI_ModelName, text, size); }),
            "");
  answered.release();
  reader.join();
}

}  // namespace
