// Reading all features of real cameras' descriptions, which are not part of this repository.
#include <gtest/gtest.h>

#include "Descriptions.h"
#include "Sweep.h"

namespace {

TEST(RealDescriptionSweep, NoCacheablePlaceIsReadTwice) {
  const auto all = descriptions();
  if (all.size() < 2) GTEST_SKIP() << "set OXGENAPI_DESCRIPTIONS to a folder of camera descriptions";
  EmptyPort zeros;
  for (const auto& each : all) {
    SCOPED_TRACE(each.name);
    SweptCamera camera(each.text);
    EXPECT_GT(camera.sweep(), 0);
    const EmptyDevice cold = camera.device;
    camera.device.reads.clear();
    camera.sweep();
    const EmptyDevice again = camera.device;
    const auto uncacheable = uncacheablePlaces(each.text, zeros);
    EXPECT_GT(count(cold, uncacheable).all, 0);
    EXPECT_LE(count(cold, uncacheable).most, 1);
    EXPECT_EQ(count(again, uncacheable).cacheable, 0);
  }
}

}  // namespace
