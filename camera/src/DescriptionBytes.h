// Fetching a description, and loading it into a node map.
#pragma once

#include <OxCameraTransport/Transport.h>
#include <OxGenApi/OxGenApi.h>

#include <functional>
#include <string>

namespace ox::camera {

using ReadRegisters = std::function<void(void* buffer, uint64_t address, size_t length)>;

inline constexpr uint64_t kMaxDescriptionBytes = 64 << 20;  // what a device may claim; the largest known has 6 MB

// The bytes of one source: those that came with it, or those at its URL. Throws CameraError, TransportError.
std::string fetchDescription(const DescriptionSource& source, const ReadRegisters& read);

// XML or zip. Throws CameraError with the reason.
void loadDescription(NODEMAP map, const std::string& bytes);

}  // namespace ox::camera
