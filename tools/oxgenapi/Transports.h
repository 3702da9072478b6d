// The transport modules beside the program: how real cameras are found and opened.
#pragma once

#include <OxTransport/Transport.h>

#include <memory>
#include <string>
#include <vector>

namespace tool {

// Every transport that loads, from the folders (separated by colons) of the environment variable OXGENAPI_TRANSPORTS,
// else from where they are installed. The modules stay loaded. Throws Failure where there is none, saying what to do.
std::vector<std::unique_ptr<ox::transport::Transport>> openTransports();

}  // namespace tool
