/// @file
/// An image of a camera as a C++ object that gives itself back.
#ifndef OXCAMERA_CPP_IMAGE_HPP
#define OXCAMERA_CPP_IMAGE_HPP

#include <OxGenApi/oxgenapi.hpp>

#include <string>
#include <utility>

#include "OxCamera/OxCamera.h"

namespace oxgenapi {

/// Moves, does not copy: its buffer goes back to the camera with the last owner. Keeps the camera alive.
class Image {
 public:
  /// Takes over what a wait has filled in.
  Image(Handle<OXCAMERA> camera, const TImage& record) : camera_(std::move(camera)), record_(record) {}
  Image(Image&& other) noexcept : camera_(std::move(other.camera_)), record_(std::exchange(other.record_, TImage{})) {}
  Image& operator=(Image&& other) noexcept {
    if (this != &other) {
      giveBack();
      camera_ = std::move(other.camera_);
      record_ = std::exchange(other.record_, TImage{});
    }
    return *this;
  }
  ~Image() { giveBack(); }

  const TImage& record() const noexcept { return record_; }
  bool complete() const noexcept { return record_.State == IS_Complete; }
  const void* data() const noexcept { return record_.Part.Data; }  ///< of the first part; null if no data arrived
  uint32_t width() const noexcept { return record_.Part.Width; }
  uint32_t height() const noexcept { return record_.Part.Height; }
  std::string pixelFormat() const { return record_.Part.PixelFormatName; }
  uint64_t frameId() const noexcept { return record_.FrameId; }

  TImagePart part(size_t index) const {
    TImagePart part{};
    check(OxCameraImagePart(camera_.get(), &record_, index, &part));
    return part;
  }
  /// Lets the camera's chunk features show this image's values until it is given back.
  void attachChunks() const { check(OxCameraAttachChunks(camera_.get(), &record_)); }
  /// Saves the first part; see OxCameraSaveImage. Sets options.Camera to the image's camera.
  std::string save(const std::string& path, TSaveOptions options = defaultSaveOptions()) const {
    options.Camera = camera_.get();
    char saved[4096];
    size_t size = sizeof saved;
    check(OxCameraSaveImage(&record_, path.c_str(), &options, saved, size), path);
    return saved;
  }
  static TSaveOptions defaultSaveOptions() {
    TSaveOptions options{};
    options.StructSize = sizeof options;
    options.PngLevel = 1;
    return options;
  }

  /// Early; data() is null afterwards.
  void giveBack() noexcept {
    if (record_.Serial != 0) OxCameraReturnImage(camera_.get(), &record_);
    record_ = TImage{};
  }

 private:
  Handle<OXCAMERA> camera_;
  TImage record_;
};

}  // namespace oxgenapi

#endif
