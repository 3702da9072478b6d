#include "OxSimulatedCamera.h"

#include <OxBase/OxBase.h>
#include <OxSimulation/ChunkLayout.h>
#include <OxSimulation/SimulatedCamera.h>

#include <string>
#include <vector>

using ox::simulation::RegisterDevice;
using ox::simulation::SimulatedCamera;

struct OxSimulatedCamera {
  SimulatedCamera device;
  ox::simulation::CameraEvent event;  // the last one handed out
  ox::simulation::Frame frame;
  std::vector<TChunkData> chunks;
};

namespace {

SimulatedCamera& deviceOf(void* camera) { return static_cast<OxSimulatedCamera*>(camera)->device; }

// From the last error the library carries the reason to whoever asked for the feature.
int finished(int result) {
  if (result < 0) OxSetLastError(static_cast<uint32_t>(result), RegisterDevice::lastFailureText().c_str());
  return result;
}

}  // namespace

OxSimulatedCamera* OxSimulatedCameraCreate(void) {
  try {
    return new OxSimulatedCamera;
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

void OxSimulatedCameraDestroy(OxSimulatedCamera* Camera) { delete Camera; }

const char* OxSimulatedCameraDescription(const OxSimulatedCamera* Camera) {
  // Both views are whole strings of the simulation, so a zero follows their text.
  return (Camera == nullptr ? SimulatedCamera::description() : Camera->device.currentDescription()).data();
}

int OxSimulatedCameraRead(void* pBuffer, int64_t Address, int64_t Length, void* pUserData) {
  return finished(deviceOf(pUserData).read(pBuffer, Address, Length));
}

int OxSimulatedCameraWrite(const void* pBuffer, int64_t Address, int64_t Length, void* pUserData) {
  return finished(deviceOf(pUserData).write(pBuffer, Address, Length));
}

TAccessMode OxSimulatedCameraAccess(void* pUserData) {
  return static_cast<TAccessMode>(deviceOf(pUserData).accessMode());
}

bool OxSimulatedCameraNextEvent(OxSimulatedCamera* Camera, TEventData* Event) {
  if (!Camera->device.nextEvent(Camera->event)) return false;
  *Event = {Camera->event.id, Camera->event.payload.data(), Camera->event.payload.size()};
  return true;
}

bool OxSimulatedCameraNextImage(OxSimulatedCamera* Camera, OxSimulatedImage* Image) {
  try {
    Camera->frame = Camera->device.acquireFrame();
    std::vector<uint8_t>& data = Camera->frame.data;
    Camera->chunks.clear();
    for (const ox::simulation::ChunkEntry& chunk : ox::simulation::ChunkLayout(data))
      Camera->chunks.push_back({chunk.id, data.data(), chunk.offset, chunk.length});
    if (data.empty()) return false;
    *Image = {data.data(), data.size(), Camera->frame.frameId, Camera->chunks.data(), Camera->chunks.size()};
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

void OxSimulatedCameraReset(OxSimulatedCamera* Camera) { Camera->device.reset(); }
