// The tool's commands. Each file adds its own command to the command line: options, help, an example, and the function
// that runs it. Parsing only chooses that function; main() calls it afterwards.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>

#include "Session.h"

namespace tool {

using Action = std::function<void(Session&)>;

void addInfo(CLI::App& app, Action& chosen);
void addTree(CLI::App& app, Action& chosen);
void addGet(CLI::App& app, Action& chosen);
void addSet(CLI::App& app, Action& chosen);
void addExec(CLI::App& app, Action& chosen);
void addNodes(CLI::App& app, Action& chosen);
void addDescribe(CLI::App& app, Action& chosen);
void addWatch(CLI::App& app, Action& chosen);
void addPeek(CLI::App& app, Action& chosen);
void addPoke(CLI::App& app, Action& chosen);
void addRegister(CLI::App& app, Action& chosen);
void addSave(CLI::App& app, Action& chosen);
void addLoad(CLI::App& app, Action& chosen);
void addDiff(CLI::App& app, Action& chosen);
void addSnapshot(CLI::App& app, Action& chosen);
void addFiles(CLI::App& app, Action& chosen);
void addFirmware(CLI::App& app, Action& chosen);
void addGuf(CLI::App& app, Action& chosen);
void addEvents(CLI::App& app, Action& chosen);
void addChunks(CLI::App& app, Action& chosen);
void addLint(CLI::App& app, Action& chosen);
void addDoc(CLI::App& app, Action& chosen);
void addReport(CLI::App& app, Action& chosen);
void addCompletion(CLI::App& app, Action& chosen);
void addCameras(CLI::App& app, Action& chosen);
void addHelp(CLI::App& app, Action& chosen);
void addStubs(CLI::App& app, Action& chosen);
void addNetwork(CLI::App& app, Action& chosen);
void addXml(CLI::App& app, Action& chosen);

}  // namespace tool
