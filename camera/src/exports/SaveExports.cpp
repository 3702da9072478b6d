#include <OxCamera/Save.h>
#include <OxPixels/Convert.h>
#include <OxPixels/Save.h>

#include <nlohmann/json.hpp>

#include "ExportFrame.h"

using namespace ox;
using namespace ox::camera;

namespace {

uint32_t codeOf(pixels::Code code) {
  switch (code) {
    case pixels::Code::Ok: return OXGENAPI_OK;
    case pixels::Code::BadArgument:
    case pixels::Code::BadSize: return OXGENAPI_E_INVALID_ARGUMENT;
    case pixels::Code::Unsupported: return OXGENAPI_E_NOT_SUPPORTED;
    case pixels::Code::Exists: return OXGENAPI_E_ACCESS_DENIED;
    case pixels::Code::NoMemory: return OXGENAPI_E_OUT_OF_MEMORY;
    case pixels::Code::Io:
    case pixels::Code::BadFile: break;
  }
  return OXCAMERA_E_FAILED;
}

void require(const pixels::Result& result) {
  if (!result) throw CameraError(codeOf(result.code), result.text);
}

pixels::ImageView viewOf(const TImage* image) {
  if (image == nullptr || image->StructSize != sizeof *image)
    throw CameraError(OXGENAPI_E_INVALID_ARGUMENT,
                      "Image is null or its StructSize is wrong: take it from OxCameraNextImage");
  const TImagePart& part = image->Part;
  if (part.Data == nullptr) throw CameraError(OXGENAPI_E_INVALID_ARGUMENT, "The image has no pixels");
  pixels::ImageView view;
  view.data = part.Data;
  view.size = part.Size;
  view.format = part.PixelFormat;
  view.width = part.Width;
  view.height = part.Height;
  view.stride = part.Stride;
  view.significantBits = static_cast<uint8_t>(part.SignificantBits);
  view.bigEndian = part.BigEndian != 0;
  return view;
}

// The members for the JSON beside a raw file: the caller's, and from the image and its camera those that the caller
// does not give. A text that is no JSON object is passed on; saving refuses it.
std::string membersOf(const TImage& image, const TSaveOptions* options) {
  using Json = nlohmann::ordered_json;
  Json members = Json::object();
  if (options != nullptr && options->Members != nullptr && *options->Members != '\0')
    members = Json::parse(options->Members, nullptr, false);
  if (!members.is_object()) return options->Members;
  const auto add = [&](const char* name, const Json& value) {
    if (!members.contains(name)) members[name] = value;
  };
  if (options != nullptr && options->Camera != nullptr) {
    const auto camera = resolve<CameraObject>(options->Camera);
    if (!camera) throw CameraError(OXGENAPI_E_INVALID_HANDLE, CameraObject::kInvalid);
    add("camera", camera->session->camera().text(CI_Id));
    const std::string name = camera->session->camera().text(CI_UserName);
    if (!name.empty()) add("cameraName", name);
  }
  if (image.Serial != 0) add("frameId", image.FrameId);
  if (image.TimeKnown != 0) add("time", image.Time);
  if (image.FirstDataNs != 0) add("firstDataNs", image.FirstDataNs);
  if (image.CompleteNs != 0) add("completeNs", image.CompleteNs);
  return members.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace

uint32_t OxCameraSaveImage(const TImage* Image, const char* Path, const TSaveOptions* Options, char* SavedPath,
                           size_t& SavedSize) {
  return guarded([&] {
    if (Path == nullptr) throw CameraError(OXGENAPI_E_INVALID_ARGUMENT, "Path is null");
    if (Options != nullptr && Options->StructSize != sizeof *Options)
      throw CameraError(OXGENAPI_E_INVALID_ARGUMENT, "Options: StructSize is not sizeof(TSaveOptions)");
    pixels::SaveOptions options;
    if (Options != nullptr) {
      options.overwrite = Options->Overwrite != 0;
      options.eightBits = Options->EightBits != 0;
      options.pngLevel = static_cast<int>(std::min<uint32_t>(Options->PngLevel, INT32_MAX));
    }
    const pixels::ImageView view = viewOf(Image);
    const std::string members = membersOf(*Image, Options);
    options.members = members;
    pixels::Saved saved;
    require(pixels::save(view, Path, options, saved));
    giveText(saved.path, SavedPath, SavedSize);
  });
}

uint32_t OxCameraConvertImage(const TImage* Image, uint32_t Channels, uint32_t SampleBits, void* Buffer, size_t Size) {
  return guarded([&] {
    pixels::Picture picture;
    picture.data = Buffer;
    picture.size = Size;
    picture.channels = static_cast<uint8_t>(std::min<uint32_t>(Channels, UINT8_MAX));
    picture.sampleBits = static_cast<uint8_t>(std::min<uint32_t>(SampleBits, UINT8_MAX));
    require(pixels::convert(viewOf(Image), picture));
  });
}
