// Event messages of cameras: fetched and delivered on the caller's thread.
#include <thread>

#include "CameraBench.h"

using namespace oxgenapi;

class Events : public CameraBench {
 protected:
  Camera camera = [] {
    simulate("Teller");
    return Camera::open("Teller");
  }();
};

TEST_F(Events, FillFeaturesOnTheThreadThatFetches) {
  camera["EventSelector"].set("Test");
  camera["EventNotification"].set("On");
  std::thread::id told;
  const Node time = camera["EventTestTimestamp"];
  const auto callback = time.onUpdate([&](const Node&) { told = std::this_thread::get_id(); });
  camera["TestEventGenerate"].execute();
  const auto event = camera.nextEvent(5s);
  ASSERT_TRUE(event);
  EXPECT_EQ(std::stoll(event->id, nullptr, 16), camera["EventTest"].integer());
  ASSERT_EQ(event->payload.size(), 20U);
  int64_t sent = 0;
  for (size_t i = 0; i < 8; ++i) sent = sent << 8 | event->payload[i];
  EXPECT_EQ(time.integer(), sent);
  EXPECT_EQ(told, std::this_thread::get_id());
  EXPECT_FALSE(camera.nextEvent(0ms));
}

TEST_F(Events, AWaitEndsWithItsTimeAndWithTheCamera) {
  EXPECT_LT(timeOf([&] { EXPECT_FALSE(camera.nextEvent(30ms)); }), 5s);
  TCameraEvent old{};
  EXPECT_EQ(OxCameraNextEvent(camera.handle(), 0, &old), OXGENAPI_E_INVALID_ARGUMENT);
  EXPECT_EQ(OxCameraNextEvent(camera.handle(), 0, nullptr), OXGENAPI_E_INVALID_ARGUMENT);
  Outcome ended;
  std::thread waiter([&] { ended = outcomeOf([&] { camera.nextEvent(60s); }); });
  std::this_thread::sleep_for(20ms);
  camera.close();
  waiter.join();
  EXPECT_EQ(ended.code, OXCAMERA_E_CLOSED);
  simulate("");
  expectFailure(OXGENAPI_E_NOT_SUPPORTED, "This way to the camera carries no event messages", [&] {
    CameraOptions options;
    options.registers = (folder() / "image").string();
    Camera::open("", options).nextEvent(0ms);
  });
}
