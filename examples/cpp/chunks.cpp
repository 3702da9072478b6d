// Takes pictures with the simulated camera and reads what their chunk trailers tell.
#include <OxBase/OxBase.h>
#include <OxGenApi/OxGenApi.h>
#include <OxSimulation/ChunkLayout.h>
#include <OxSimulation/SimulatedCamera.h>

#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

using ox::simulation::ChunkEntry;
using ox::simulation::ChunkLayout;
using ox::simulation::SimulatedCamera;

namespace {

void check(uint32_t result, const char* what) {
  if (result == OXGENAPI_OK) return;
  char text[256];
  size_t size = sizeof text;
  OxGetLastError(nullptr, text, &size);
  std::cerr << what << ": " << text << '\n';
  std::exit(1);
}

void set(NODEMAP map, const char* feature, const char* value) {
  NODE node = nullptr;
  check(NMGetNode(map, feature, node), feature);
  check(NSetAsString(node, value), feature);
  OxIfaceContainerReleaseUseCounter(node);
}

int readCamera(void* to, int64_t address, int64_t length, void* camera) {
  return static_cast<SimulatedCamera*>(camera)->read(to, address, length);
}

int writeCamera(const void* from, int64_t address, int64_t length, void* camera) {
  return static_cast<SimulatedCamera*>(camera)->write(from, address, length);
}

}  // namespace

int main() {
  SimulatedCamera camera;
  NODEMAP map = nullptr;
  check(CreateNodeMap(map), "CreateNodeMap");
  check(NMLoadXMLString(map, std::string(SimulatedCamera::description()).c_str()), "NMLoadXMLString");
  check(NMConnectPort(map, readCamera, writeCamera, nullptr, &camera), "NMConnectPort");
  set(map, "ChunkModeActive", "true");
  set(map, "ChunkSelector", "ExposureTime");
  set(map, "ChunkEnable", "true");
  set(map, "AcquisitionStart", "1");

  NODE exposure = nullptr;
  check(NMGetNode(map, "ChunkExposureTime", exposure), "ChunkExposureTime");
  for (int i = 0; i < 3; ++i) {
    ox::simulation::Frame frame = camera.acquireFrame();
    std::vector<TChunkData> chunks;
    for (const ChunkEntry& chunk : ChunkLayout(frame.data)) {
      chunks.push_back({chunk.id, frame.data.data(), chunk.offset, chunk.length});
    }
    check(NMAttachChunkList(map, chunks.data(), chunks.size()), "NMAttachChunkList");
    double microseconds = 0;
    check(NGetAsFloat(exposure, &microseconds), "ChunkExposureTime");
    std::cout << "frame " << frame.frameId << ": ChunkExposureTime = " << microseconds << '\n';
    NMDetachAllChunks(map);  // before the frame's memory goes
  }
  OxIfaceContainerReleaseUseCounter(exposure);
  OxIfaceContainerReleaseUseCounter(map);
}
