// The tool's commands. Each file adds its own command to the command line: options, help, an example, and the function
// that runs it. Parsing only chooses that function; main() calls it afterwards.
#pragma once

#include "CommandLine.h"
#include "Session.h"

namespace tool {

void addInfo(const Command& program);
void addTree(const Command& program);
void addGet(const Command& program);
void addSet(const Command& program);
void addExec(const Command& program);
void addNodes(const Command& program);
void addDescribe(const Command& program);
void addWatch(const Command& program);
void addPeek(const Command& program);
void addPoke(const Command& program);
void addRegister(const Command& program);
void addSave(const Command& program);
void addLoad(const Command& program);
void addDiff(const Command& program);
void addSnapshot(const Command& program);
void addFiles(const Command& program);
void addFirmware(const Command& program);
void addGuf(const Command& program);
void addEvents(const Command& program);
void addChunks(const Command& program);
void addGrab(const Command& program);
void addLint(const Command& program);
void addDoc(const Command& program);
void addReport(const Command& program);
void addCompletion(const Command& program);
void addCameras(const Command& program);
void addHelp(const Command& program);
void addStubs(const Command& program);
void addNetwork(const Command& program);
void addXml(const Command& program);

}  // namespace tool
