// Cameras of vendors' producers, over a producer that keeps to the rules or breaks the ones that a test names.
#include <dlfcn.h>

#include <cstdlib>

#include "CameraBench.h"

using namespace oxgenapi;
using testing::HasSubstr;

namespace {

class GenTL : public CameraBench {
 protected:
  GenTL() {
    simulate("");
    setenv("GENICAM_GENTL64_PATH", (built() / "test_producer").c_str(), 1);
  }
  ~GenTL() override { behave(""); }
  static void behave(const std::string& words) {
    static void* const library = dlopen((built() / "test_producer/TestProducer.cti").c_str(), RTLD_NOW | RTLD_LOCAL);
    reinterpret_cast<void (*)(const char*)>(dlsym(library, "producerBehaves"))(words.c_str());
  }

  static std::string notes() {
    std::string text;
    for (const CameraNote& note : CameraList(200ms).notes()) text += note.text + "\n";
    return text;
  }
};

}  // namespace

TEST_F(GenTL, ACameraOfAProducerIsACameraLikeAnyOther) {
  const std::vector<FoundCamera> found = findCameras(200ms);
  ASSERT_EQ(found.size(), 1U);
  EXPECT_EQ(found[0].id, "Test-Model-P1");
  EXPECT_EQ(found[0].transport, "gentl");
  EXPECT_EQ(found[0].protocol, "USB3Vision");
  const Camera camera = Camera::open("P1");
  camera["Width"].set(32);
  EXPECT_EQ(camera["Width"].integer(), 32);
  for (int round = 0; round < 3; ++round) {
    camera.start();
    for (uint64_t i = 1; i <= 20; ++i) {
      const Image image = camera.next(5s);
      EXPECT_EQ(image.record().FrameId, i);
      EXPECT_EQ(image.record().Time, i * 10 * 1'000'000) << "ticks of a millisecond";
      EXPECT_EQ(image.record().Part.Width, 32U);
      EXPECT_EQ(image.record().Part.Height, 4U);
      EXPECT_STREQ(image.record().Part.PixelFormatName, "Mono8");
      EXPECT_EQ(static_cast<const uint8_t*>(image.record().Data)[127], static_cast<uint8_t>(i));
    }
    camera.stop();
  }
  camera["Fire"].execute();
  const auto event = camera.nextEvent(5s);
  ASSERT_TRUE(event);
  EXPECT_EQ(event->id, "9001");
  EXPECT_EQ(camera["Told"].integer(), 77);
  EXPECT_FALSE(camera.nextEvent(0ms));
}

TEST_F(GenTL, OldAndOddProducersAreWorkedAround) {
  for (const char* words : {"GCGetNumPortURLs=-1003", "manyurls", "oldsmall", "noend", "shared", "vanish", "many",
                            "binary", "TLUpdateInterfaceList=-1011", "IFUpdateDeviceList=-1011", "GCRegisterEvent=0",
                            "TLGetInterfaceInfo=-1006", "DevGetInfo=-1014", "GCGetLastError=-1001", "info19=0"}) {
    SCOPED_TRACE(words);
    behave(words);
    const Camera camera = Camera::open("P1");
    camera["Width"].set(16);
    EXPECT_EQ(camera.grab(5s).record().Size, 64U);
  }
}

TEST_F(GenTL, WhatAProducerRefusesIsToldInItsWords) {
  struct Case {
    const char* words;
    const char* text;
    void (*use)(const Camera&);
  };
  const auto read = [](const Camera& camera) {
    char bytes[4];
    camera.read(bytes, 0, 4);
  };
  const auto start = [](const Camera& camera) { camera.start(); };
  const auto grab = [](const Camera& camera) { camera.grab(300ms); };
  const auto event = [](const Camera& camera) { camera.nextEvent(10ms); };
  const Case cases[] = {
      {"GCReadPort=-1010", "GCReadPort failed with GC_ERR_IO (-1010): the producer's own words", read},
      {"GCReadPort=-4711", "GCReadPort failed with code -4711", read},
      {"short", "GCReadPort moved 3 of 4 bytes", read},
      {"DSStartAcquisition=-1002", "DSStartAcquisition failed with GC_ERR_NOT_INITIALIZED", start},
      {"DSAnnounceBuffer=-1021", "DSAnnounceBuffer failed with GC_ERR_OUT_OF_MEMORY", start},
      {"DSQueueBuffer=-1006", "DSQueueBuffer failed with GC_ERR_INVALID_HANDLE", start},
      {"GCRegisterEvent=-1004", "GCRegisterEvent failed with GC_ERR_RESOURCE_IN_USE", start},
      {"DevGetNumDataStreams=-1003", "DevGetNumDataStreams failed with GC_ERR_NOT_IMPLEMENTED", start},
      {"DevOpenDataStream=-1005", "DevOpenDataStream failed with GC_ERR_ACCESS_DENIED", start},
      {"minimum", "asks for at least 100 buffers, there are 8", start},
      {"never", "No image", grab},
      {"EventGetData=-1010", "EventGetData failed with GC_ERR_IO", grab},
      {"foreign", "delivers a buffer that it was not given", grab},
      {"GCRegisterEvent=-1003", "carries no event messages", event},
      {"EventGetDataInfo=-1008", "", event},
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(each.words);
    behave("");
    const Camera camera = Camera::open("P1");
    camera["Width"].set(16);
    behave(each.words);
    Outcome outcome = outcomeOf([&] { each.use(camera); });
    if (outcome.code == OXCAMERA_E_TIMEOUT) outcome.text += camera.advice();
    EXPECT_THAT(outcome.text, HasSubstr(each.text));
    behave("");
    if (camera.state() == CS_Open) {
      outcomeOf([&] { camera.stop(); });
      EXPECT_EQ(camera.grab(5s).record().Part.Width, 16U) << "afterwards all is well";
    }
  }
}

TEST_F(GenTL, ListsThatCannotBeAreNotes) {
  const struct {
    const char* words;
    const char* text;
  } cases[] = {
      {"TLUpdateInterfaceList=-1010", "TLUpdateInterfaceList failed with GC_ERR_IO (-1010): the producer's own words"},
      {"TLGetNumInterfaces=-1001", "TLGetNumInterfaces failed with GC_ERR_ERROR"},
      {"TLGetInterfaceID=-1017", "TLGetInterfaceID failed with GC_ERR_INVALID_INDEX"},
      {"IFUpdateDeviceList=-1006", "IFUpdateDeviceList failed with GC_ERR_INVALID_HANDLE"},
      {"IFGetNumDevices=-1001", "IFGetNumDevices failed"},
      {"IFGetDeviceID=-1001", "IFGetDeviceID failed"},
      {"hugesize", "claims a text of 9223372036854775807 bytes"},
      {"moresize", "bytes in a buffer of"},
      {"many", "says 4294967295 entries"},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.words);
    behave(each.words);
    EXPECT_THAT(notes(), HasSubstr(each.text));
  }
  behave("hang");
  EXPECT_LT(timeOf([] { EXPECT_THAT(notes(), HasSubstr("TestProducer.cti did not answer in time")); }), 5s);
}

TEST_F(GenTL, BadDescriptionUrlsCostOnlyTheFeatures) {
  for (const char* url : {"", "local:", "local:x", "local:x;zz;10", "local:x;10000;7fffffffffffffff", "local:x;0;0",
                          "file:///nonexistent/x.xml", "FILE:relative", "ftp://x", "local:;;", "http://a;b;c"}) {
    SCOPED_TRACE(url);
    behave("url=" + std::string(url));
    const Camera camera = Camera::open("P1");
    EXPECT_EQ(outcomeOf([&] { camera.map(); }).text.empty(), *url == '\0');
    char bytes[4];
    camera.read(bytes, 0, 4);
  }
}

TEST_F(GenTL, FramesThatAreNotAsAnnouncedAreMarked) {
  const Camera camera = Camera::open("P1");
  camera["Width"].set(16);
  behave("larger");
  EXPECT_EQ(camera.grab(5s).record().State, IS_TooSmall);
  behave("incomplete");
  camera.grab(5s);
  EXPECT_EQ(camera.grab(5s).record().State, IS_Incomplete);
  behave("info18=999999999 info27=888888888");  // offset and size of the image
  camera.grab(5s);
  EXPECT_EQ(camera.grab(5s).record().Part.Size, 0U);
  behave("info19=10");  // several parts
  camera.grab(5s);
  EXPECT_EQ(camera.grab(5s).record().PartCount, 256U);
  behave("twice");
  const Image held = camera.grab(5s);
  EXPECT_TRUE(becomes(5s, [&] { return camera.advice().find("delivers a buffer twice") != std::string::npos; }));
  camera.stop();
  behave("payload=4096");
  camera.start();
  EXPECT_EQ(camera.statistics().PayloadSize, 4096U);
}
