#include <OxCamera/oxcamera.hpp>
#include <optional>

#include "Commands.h"
#include "NetworkCheck.h"
#include "Progress.h"

namespace tool {
namespace {

using oxgenapi::Camera;
using oxgenapi::CameraList;
using oxgenapi::FoundCamera;

// What is to be set; empty: what is proposed.
struct Wanted {
  std::string address;
  std::string mask = "255.255.255.0";
  std::string gateway = "0.0.0.0";
};

TNetworkAddress record(const Wanted& wanted) {
  TNetworkAddress address{};
  const auto store = [](auto& to, const std::string& text) { text.copy(to, sizeof to - 1); };
  store(address.Address, wanted.address);
  store(address.Mask, wanted.mask);
  store(address.Gateway, wanted.gateway);
  return address;
}

Json toJson(const TNetworkAddress& address) {
  return {{"address", address.Address}, {"mask", address.Mask}, {"gateway", address.Gateway}};
}

std::string text(const TNetworkAddress& address) {
  const std::string gateway = address.Gateway;
  return std::string(address.Address) + ", mask " + address.Mask + (gateway == "0.0.0.0" ? "" : ", gateway " + gateway);
}

std::string modesText(uint32_t modes) {
  std::string all;
  for (const auto& [bit, name] : {std::pair{OX_ADDRESS_STORED, "stored address"},
                                  {OX_ADDRESS_DHCP, "DHCP"},
                                  {OX_ADDRESS_LINK_LOCAL, "link local"}})
    if ((modes & bit) != 0) all += (all.empty() ? "" : ", then ") + std::string(name);
  return all.empty() ? "nothing" : all;
}

// A search, and the one network camera in it that is meant, also one that cannot be opened where it is.
struct Chosen {
  CameraList list;
  FoundCamera camera;
  size_t index = 0;
};

Chosen choose(Session& session) {
  Progress progress(session.output(), "looking for cameras", 0, "");
  progress.begin();
  const CameraList list;
  progress.clear();
  const std::string& name = session.cameraName();
  std::optional<Chosen> chosen;
  const std::vector<FoundCamera> cameras = list.cameras();
  for (size_t i = 0; i < cameras.size(); ++i) {
    const FoundCamera& camera = cameras[i];
    const bool meant = name.empty() || name == camera.id || name == camera.address || name == camera.serial ||
                       name == camera.userName || name == camera.identity;
    if (camera.protocol != "GigEVision" || !meant) continue;
    if (chosen)
      throw UsageError("several cameras fit, name one with --camera: " + chosen->camera.id + ", " + camera.id);
    chosen = Chosen{list, camera, i};
  }
  if (!chosen) {
    throw Failure(OXCAMERA_E_NOT_FOUND, name.empty() ? "No network camera was found, see oxgenapi cameras --verbose"
                                                     : "There is no network camera '" + name + "'");
  }
  return *std::move(chosen);
}

void show(Session& session) {
  const Chosen chosen = choose(session);
  const FoundCamera& found = chosen.camera;
  const Output& output = session.output();
  Json document{{"id", found.id},
                {"identity", found.identity},
                {"interface", found.interface},
                {"interfaceAddress", found.interfaceAddress},
                {"current", {{"address", found.address}}}};
  if (!output.json()) {
    output.line(output.name(found.id) + "  " + found.identity + " on " + found.interface + " (" +
                found.interfaceAddress + ")");
    output.line("  now     " + found.address);
  }
  if (found.reach == CR_WrongSubnet) {
    if (!output.json()) output.line("  " + found.obstacle);
  } else {
    const TNetworkConfiguration network = Camera::open(found.id, OX_READ_ONLY).network();
    document["current"] = toJson(network.Current);
    document["stored"] = toJson(network.Stored);
    document["modes"] = modesText(network.Modes);
    document["supported"] = modesText(network.Supported);
    if (!output.json()) {
      output.line("  stored  " + text(network.Stored));
      output.line("  at power on it tries " + modesText(network.Modes) +
                  (network.Modes & OX_ADDRESS_STORED ? "" : "; the stored address is switched off"));
    }
  }
  if (output.json()) output.document(document);
}

void propose(Session& session) {
  const Chosen chosen = choose(session);
  const TNetworkAddress address = chosen.list.proposeAddress(chosen.index);
  if (session.output().json())
    session.output().document(toJson(address));
  else
    session.output().line(text(address));
}

void force(Session& session, const Wanted& wanted) {
  const Chosen chosen = choose(session);
  const TNetworkAddress address = wanted.address.empty() ? chosen.list.proposeAddress(chosen.index) : record(wanted);
  chosen.list.forceAddress(chosen.index, address);
  session.output().line(chosen.camera.id + " has " + text(address) +
                        " until it is powered off; store it with 'network store'");
}

void store(Session& session, const Wanted& wanted) {
  const Chosen chosen = choose(session);
  const Camera camera = Camera::open(chosen.camera.id);
  camera.storeAddress(record(wanted));
  const TNetworkConfiguration network = camera.network();
  session.output().line(chosen.camera.id + " has stored " + text(network.Stored) +
                        "; it takes effect at the next power on");
}

void checkMachine(Session& session) {
  const Output& output = session.output();
  Json list = Json::array();
  for (const SettingCheck& setting : checkNetwork()) {
    list.push_back({{"setting", setting.subject},
                    {"value", setting.value},
                    {"needed", setting.needed},
                    {"ok", setting.ok()},
                    {"command", setting.command}});
    if (!output.json()) {
      const std::string facts = setting.subject + " is " + std::to_string(setting.value);
      output.line(setting.ok()
                      ? "ok       " + facts
                      : "too low  " + facts + ", better " + std::to_string(setting.needed) + ": " + setting.command);
    }
    if (!setting.ok()) session.fail();
  }
  if (output.json()) output.document(list);
}

}  // namespace

void addNetwork(const Command& program) {
  const Command command =
      program.subcommand("network", "Show and set the addresses of network cameras, check this machine");
  command.footer(
      "Example:\n  oxgenapi network\n  oxgenapi --camera GV01 network force 192.168.0.20\n  oxgenapi network check");
  command.runsAlone(show);
  const auto add = [&](const std::string& name, const char* help, const Action& action) {
    const Command part = command.subcommand(name, help);
    part.footer("Example:\n  oxgenapi " + std::string(name == "check" ? "" : "--camera GV01 ") + "network " + name +
                (name == "force" || name == "store" ? " 192.168.0.20" : ""));
    part.runs(action);
    return part;
  };
  add("show", "Show the address that the camera has and the one that it has stored; so does network alone", show);
  add("propose", "Find an address on the camera's interface that nobody uses; takes a second", propose);
  auto forced = std::make_shared<Wanted>(), stored = std::make_shared<Wanted>();
  const auto address = [](const Command& part, const std::shared_ptr<Wanted>& wanted, bool required) {
    part.option("address", wanted->address, required ? "IPv4 address" : "IPv4 address; without it the one proposed")
        .required(required);
    part.option("--mask", wanted->mask, "Subnet mask").showDefault();
    part.option("--gateway", wanted->gateway, "Gateway, 0.0.0.0 for none").showDefault();
  };
  address(add("force", "Give the camera an address until it is powered off, whatever it has now",
              [forced](Session& session) { force(session, *forced); }),
          forced, false);
  address(add("store", "Store the address that the camera uses from its next power on, and read it back",
              [stored](Session& session) { store(session, *stored); }),
          stored, true);
  add("check", "Print the settings of this machine that streaming depends on, and what mends them; changes nothing",
      checkMachine);
}

}  // namespace tool
