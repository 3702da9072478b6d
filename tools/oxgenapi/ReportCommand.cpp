#include <sys/utsname.h>

#include <cstdint>

#include "Commands.h"
#include "FileReplacement.h"
#include "Hexadecimal.h"
#include "Lint.h"
#include "Value.h"
#include "Versions.h"

namespace tool {
namespace {

std::string systemText() {
  utsname names{};
  return uname(&names) == 0 ? std::string(names.sysname) + " " + names.release + " " + names.machine : "unknown";
}

// 64 bits that tell two descriptions apart (FNV-1a): a report needs no copy of the description.
std::string fingerprint(std::string_view text) {
  uint64_t hash = 0xcbf29ce484222325;
  for (const char character : text) hash = (hash ^ static_cast<unsigned char>(character)) * 0x100000001b3;
  return hexadecimal(hash, 16);
}

Json findingsOf(const std::string& description) {
  Json list = Json::array();
  for (const Problem& problem : lintBytes(description)) {
    if (problem.severity != Severity::note) {
      list.push_back(
          {{"line", problem.line}, {"node", problem.node}, {"element", problem.element}, {"reason", problem.reason}});
    }
  }
  return list;
}

struct Features {
  size_t readable = 0;
  size_t unavailable = 0;
  Json failing = Json::array();
};

// Reads every feature once.
Features readAll(const NodeMap& map) {
  Features features;
  for (const std::string& name : map.nodeNames()) {
    try {
      const Node node = map.node(name);
      if (!hasValue(node.type()) || !node.infoBoolean(NI_IsFeature)) continue;
      if (!node.readable()) {
        ++features.unavailable;
        continue;
      }
      valueJson(node);
      ++features.readable;
    } catch (const Failure& failure) {
      if (failure.code() != OXGENAPI_E_NOT_PRESENT) {  // a helper of the description has no handle
        features.failing.push_back(
            {{"name", name}, {"code", codeText(failure.code())}, {"text", std::string(failure.what())}});
      }
    }
  }
  return features;
}

Json report(Session& session) {
  const NodeMap& map = session.map();
  const std::string description = session.device().description();
  Features features = readAll(map);
  return {{"library", libraryVersion()},
          {"genApi", genApiVersion()},
          {"system", systemText()},
          {"vendor", map.infoText(NMI_VendorName)},
          {"model", map.infoText(NMI_ModelName)},
          {"description", {{"bytes", description.size()}, {"fingerprint", fingerprint(description)}}},
          {"nodes", map.nodeCount()},
          {"featuresRead", features.readable},
          {"featuresNotReadable", features.unavailable},
          {"failing", std::move(features.failing)},
          {"findings", findingsOf(description)}};
}

std::string plainText(const Json& report) {
  std::string text = "oxgenapi report\n";
  for (const auto& [key, value] : report.items()) {
    if (!value.is_array()) {
      text += key + ": " + (value.is_string() ? value.get<std::string>() : value.dump()) + "\n";
      continue;
    }
    text += key + ": " + std::to_string(value.size()) + "\n";
    for (const Json& item : value) {
      text += " ";
      for (const auto& [member, content] : item.items())
        text += " " + (content.is_string() ? content.get<std::string>() : member + " " + content.dump());
      text += "\n";
    }
  }
  return text;
}

void writeReport(Session& session, const std::string& path) {
  const Json document = report(session);
  const std::string text = session.output().json() ? document.dump(2, ' ', false, Json::error_handler_t::replace) + "\n"
                                                   : plainText(document);
  if (path.empty()) {
    session.output().data(text);
    return;
  }
  FileReplacement file(path);
  file.write(text);
  file.commit();
}

}  // namespace

void addReport(const Command& program) {
  auto path = std::make_shared<std::string>();
  const Command command =
      program.subcommand("report", "Gather what a bug report needs: versions, findings, features that fail");
  command.option("-o,--output", *path, "Write it here instead of standard output").type("FILE");
  command.footer(
      "It reads every feature once and writes none; the description itself is not part of it.\n"
      "Example:\n  oxgenapi --camera 192.168.0.20 report -o report.txt");
  command.runs([path](Session& session) { writeReport(session, *path); });
}

}  // namespace tool
