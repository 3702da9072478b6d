#include <OxCamera/oxcamera.hpp>
#include <algorithm>
#include <array>

#include "Commands.h"
#include "Progress.h"

namespace tool {
namespace {

using oxgenapi::CameraList;
using oxgenapi::CameraNote;
using oxgenapi::FoundCamera;

struct Choice {
  bool verbose = false;
  uint32_t time = 1000;  // milliseconds
};

const char* reachText(TCameraReach reach) {
  constexpr std::array kTexts{"unknown", "free", "busy", "wrong subnet", "no permission"};
  return reach < kTexts.size() ? kTexts[reach] : "unknown";
}

const char* kindText(TCameraNote kind) {
  constexpr std::array kTexts{"module", "module failed", "interface", "interface failed", "answer", "advice"};
  return kind < kTexts.size() ? kTexts[kind] : "note";
}

// "1 Gbit/s"
std::string speedText(int64_t bits) {
  if (bits == 0) return "";
  const bool giga = bits % 1'000'000'000 == 0;
  return std::to_string(bits / (giga ? 1'000'000'000 : 1'000'000)) + (giga ? " Gbit/s" : " Mbit/s");
}

Json toJson(const FoundCamera& camera) {
  return {{"id", camera.id},
          {"vendor", camera.vendor},
          {"model", camera.model},
          {"serial", camera.serial},
          {"userName", camera.userName},
          {"version", camera.version},
          {"address", camera.address},
          {"interface", camera.interface},
          {"interfaceAddress", camera.interfaceAddress},
          {"protocol", camera.protocol},
          {"transport", camera.transport},
          {"ways", camera.ways},
          {"identity", camera.identity},
          {"linkSpeed", camera.linkSpeed},
          {"state", reachText(camera.reach)},
          {"obstacle", camera.obstacle}};
}

Json toJson(const CameraNote& note) { return {{"kind", kindText(note.kind)}, {"text", note.text}}; }

// One line for each camera, columns as wide as they have to be.
void print(const Output& output, const std::vector<FoundCamera>& cameras, bool verbose) {
  using Row = std::array<std::string, 7>;
  std::vector<Row> rows;
  Row::size_type columns = std::tuple_size_v<Row>;
  std::array<size_t, std::tuple_size_v<Row>> widths{};
  for (const FoundCamera& camera : cameras) {
    rows.push_back({camera.id, reachText(camera.reach), camera.protocol, camera.address, camera.interface,
                    speedText(camera.linkSpeed), camera.userName.empty() ? "" : "\"" + camera.userName + "\""});
    for (size_t i = 0; i < columns; ++i) widths[i] = std::max(widths[i], rows.back()[i].size());
  }
  for (size_t row = 0; row < rows.size(); ++row) {
    std::string line;
    for (size_t i = 0; i < columns; ++i) {
      const std::string& cell = rows[row][i];
      if (widths[i] == 0) continue;
      line += (i == 0 ? output.name(cell) : cell) + std::string(widths[i] - cell.size() + 2, ' ');
    }
    line.erase(line.find_last_not_of(' ') + 1);
    output.line(line);
    const FoundCamera& camera = cameras[row];
    if (!camera.obstacle.empty()) output.line("  " + camera.obstacle);
    if (verbose) {
      output.line(output.dim(
          "  " + camera.vendor + " " + camera.model + (camera.version.empty() ? "" : " " + camera.version) +
          ", serial number " + camera.serial + ", " + (camera.identity.empty() ? "" : camera.identity + ", ") +
          (camera.interfaceAddress.empty() ? "" : "on " + camera.interfaceAddress + ", ") + "ways: " + camera.ways));
    }
  }
}

void listCameras(Session& session, const Choice& choice) {
  Progress progress(session.output(), "looking for cameras", 0, "");
  progress.begin();
  const CameraList list{std::chrono::milliseconds(choice.time)};
  progress.clear();
  const Output& output = session.output();
  const std::vector<FoundCamera> cameras = list.cameras();
  const std::vector<CameraNote> notes = list.notes();
  if (output.json()) {
    Json found = Json::array(), tried = Json::array();
    for (const FoundCamera& camera : cameras) found.push_back(toJson(camera));
    for (const CameraNote& note : notes) tried.push_back(toJson(note));
    output.document(choice.verbose ? Json{{"cameras", found}, {"notes", tried}} : found);
  } else {
    print(output, cameras, choice.verbose);
    if (cameras.empty()) output.line("No camera was found. This was tried:");
    for (const CameraNote& note : notes) {
      const bool fault = note.kind == CN_ModuleFailed || note.kind == CN_InterfaceFailed || note.kind == CN_Answer;
      if (choice.verbose || cameras.empty()) output.line(std::string(fault ? "  failed: " : "  ") + note.text);
    }
  }
  if (cameras.empty()) session.fail(kNoCamera);
}

}  // namespace

void addCameras(const Command& program) {
  const Command command = program.subcommand("cameras", "List the cameras on the network, on USB and in simulation");
  auto choice = std::make_shared<Choice>();
  command.flag("-v,--verbose", choice->verbose,
               "Show all ways to each camera, modules and interfaces, and what failed");
  command.option("--time", choice->time, "Collect answers for so many milliseconds").showDefault();
  command.footer("Example:\n  oxgenapi cameras\n  oxgenapi --camera 192.168.0.20 tree --values");
  command.runs([choice](Session& session) { listCameras(session, *choice); });
}

}  // namespace tool
