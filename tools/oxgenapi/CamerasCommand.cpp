#include <algorithm>

#include "Commands.h"
#include "Progress.h"
#include "Transports.h"

namespace tool {
namespace {

using ox::transport::CameraEntry;

Json toJson(const CameraEntry& camera) {
  return {{"id", camera.id},         {"vendor", camera.vendor},   {"model", camera.model},
          {"serial", camera.serial}, {"address", camera.address}, {"protocol", camera.protocol}};
}

void listCameras(Session& session) {
  std::vector<CameraEntry> cameras;
  Progress progress(session.output(), "looking for cameras", 0, "");
  progress.begin();
  for (const auto& transport : openTransports()) {
    for (CameraEntry& camera : transport->cameras()) {
      cameras.push_back(std::move(camera));
    }
  }
  progress.clear();
  const Output& output = session.output();
  if (output.json()) {
    Json list = Json::array();
    for (const CameraEntry& camera : cameras) {
      list.push_back(toJson(camera));
    }
    output.document(list);
    return;
  }
  size_t widest = 0;
  for (const CameraEntry& camera : cameras) {
    widest = std::max(widest, camera.id.size());
  }
  for (const CameraEntry& camera : cameras) {
    output.line(output.name(camera.id) + std::string(widest - camera.id.size() + 2, ' ') + camera.protocol + "  " +
                camera.address + "  " + camera.vendor + " " + camera.model + output.dim("  " + camera.serial));
  }
  if (cameras.empty()) {
    output.line("No camera answered");
  }
}

}  // namespace

void addCameras(CLI::App& app, Action& chosen) {
  CLI::App* command = app.add_subcommand("cameras", "List the cameras on the network and on USB");
  command->footer("Example:\n  oxgenapi cameras\n  oxgenapi --camera 192.168.0.20 tree --values");
  command->callback([&chosen] { chosen = listCameras; });
}

}  // namespace tool
