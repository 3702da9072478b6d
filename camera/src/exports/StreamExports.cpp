#include <OxCamera/Stream.h>

#include <string>
#include <vector>

#include "ExportFrame.h"

using namespace ox::camera;

namespace {

template <class Record>
Record& checked(Record* record, const char* name) {
  if (record == nullptr) throw CameraError(OXGENAPI_E_INVALID_ARGUMENT, std::string("There is no ") + name);
  return *record;
}

template <class Call>
uint32_t onStream(OXCAMERA handle, Call&& call) noexcept {
  return onCamera(handle, [&](Session& session) { call(session.acquisition()); });
}

}  // namespace

uint32_t OxCameraStart(OXCAMERA Camera, size_t BufferCount) {
  return onStream(Camera, [&](Acquisition& acquisition) {
    TStreamOptions options{};
    options.BufferCount = BufferCount;
    acquisition.start(options);
  });
}

uint32_t OxCameraStartEx(OXCAMERA Camera, const TStreamOptions* Options) {
  return onStream(Camera, [&](Acquisition& acquisition) {
    const TStreamOptions& options = checked(Options, "TStreamOptions");
    const char* const wrong = options.StructSize != sizeof options ? "StructSize is not sizeof(TStreamOptions)"
                              : options.PacketSize > PS_Number     ? "PacketSize is no value of TPacketSize"
                              : options.Receive > RM_Packet        ? "Receive is no value of TReceiveMethod"
                                                                   : nullptr;
    if (wrong != nullptr) throw CameraError(OXGENAPI_E_INVALID_ARGUMENT, std::string("Options: ") + wrong);
    acquisition.start(options);
  });
}

uint32_t OxCameraStop(OXCAMERA Camera) {
  return onStream(Camera, [](Acquisition& acquisition) { acquisition.stop(); });
}

uint32_t OxCameraNextImage(OXCAMERA Camera, uint32_t TimeMs, TImage* Image) {
  return onStream(Camera, [&](Acquisition& acquisition) { acquisition.next(TimeMs, checked(Image, "TImage")); });
}

uint32_t OxCameraGrabImage(OXCAMERA Camera, uint32_t TimeMs, TImage* Image) {
  return onStream(Camera, [&](Acquisition& acquisition) { acquisition.grab(TimeMs, checked(Image, "TImage")); });
}

uint32_t OxCameraReturnImage(OXCAMERA Camera, const TImage* Image) {
  return onStream(Camera, [&](Acquisition& acquisition) { acquisition.giveBack(checked(Image, "TImage")); });
}

uint32_t OxCameraImagePart(OXCAMERA Camera, const TImage* Image, size_t Index, TImagePart* Part) {
  return onStream(Camera, [&](Acquisition& acquisition) {
    acquisition.part(checked(Image, "TImage"), Index, checked(Part, "TImagePart"));
  });
}

uint32_t OxCameraCancelWait(OXCAMERA Camera) {
  return onStream(Camera, [](Acquisition& acquisition) { acquisition.cancel(); });
}

uint32_t OxCameraStreamStatistics(OXCAMERA Camera, TStreamStatistics* Statistics) {
  return onStream(Camera, [&](Acquisition& acquisition) {
    if (checked(Statistics, "TStreamStatistics").StructSize != sizeof *Statistics)
      throw CameraError(OXGENAPI_E_INVALID_ARGUMENT, "Statistics: StructSize is not sizeof(TStreamStatistics)");
    *Statistics = acquisition.statistics();
    Statistics->StructSize = sizeof *Statistics;
  });
}

uint32_t OxCameraStreamAdvice(OXCAMERA Camera, char* Text, size_t& TextSize) {
  return onStream(Camera, [&](Acquisition& acquisition) { giveText(acquisition.advice(), Text, TextSize); });
}

uint32_t OxCameraEnableChunks(OXCAMERA Camera, const char* const* Names, size_t Count) {
  return onStream(Camera, [&](Acquisition& acquisition) {
    std::vector<std::string> names;
    for (size_t i = 0; i < Count; ++i) {
      checked(Names, "list of names");
      checked(Names[i], "name");
      names.emplace_back(Names[i]);
    }
    acquisition.enableChunks(names);
  });
}

uint32_t OxCameraAttachChunks(OXCAMERA Camera, const TImage* Image) {
  return onCamera(Camera, [&](Session& session) {
    const bool bigEndian = session.camera().text(CI_Protocol) != "USB3Vision";
    session.acquisition().attachChunks(checked(Image, "TImage"), bigEndian);
  });
}
