// The transport modules of this process.
#pragma once

#include <OxCameraTransport/Transport.h>

#include <string>
#include <vector>

namespace ox::camera {

struct LoadedTransports {
  std::vector<Transport*> transports;  // ordered by name; they stay for as long as the process
  std::vector<Note> notes;             // one for each file: loaded, or why not
};

// Loads every module of the folders in OXGENAPI_TRANSPORTS, or of the folder "oxgenapi" beside this library. A file is
// loaded once; one that was refused is not tried again. Modules of other folders than the installed one are foreign
// code, so another process loads them first: one that crashes there is named in a note and left out.
LoadedTransports loadTransports();

}  // namespace ox::camera
