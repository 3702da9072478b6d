/// @file
/// The flat interface as C++ objects (C++17, header-only). One idea: an object owns a handle, and a call that fails
/// throws.
///
///     oxgenapi::NodeMap camera;
///     camera.loadFile("camera.xml");
///     camera.connect(registers);                 // your class derived from oxgenapi::Registers
///     camera["ExposureTime"].set(5000);
///     double gain = camera["Gain"].real();
///     int64_t widest = camera.integer("Width").max();
///
/// 1. Owning. Copies share the object behind a handle, the last one ends it. handle() lends it to flat calls, whose
///    comments hold here too: what fails and when, threads, callbacks.
/// 2. Failing. Error carries the result code, the line of text and the feature's name. Where a failure is ordinary,
///    the try... twin returns a Result instead: the code, and the value if there is one. lastError() has its text.
/// 3. Cost. A value call compiles to the flat call and one test; it allocates nothing but texts and lists.
/// 4. Callbacks are std::function; what they throw does not cross the library.
#ifndef OXGENAPI_OXGENAPI_HPP
#define OXGENAPI_OXGENAPI_HPP

// A header that does not exist ends the compilation with this one line, which #error would not.
#if __cplusplus < 201703L
#include <OxGenApi/oxgenapi.hpp needs C++17 or newer: compile with -std=c++17>
#endif

#include "OxGenApi/OxGenApi.h"
#include "OxGenApi/cpp/Error.hpp"
#include "OxGenApi/cpp/Features.hpp"
#include "OxGenApi/cpp/FirmwareUpdater.hpp"
#include "OxGenApi/cpp/Handle.hpp"
#include "OxGenApi/cpp/Node.hpp"
#include "OxGenApi/cpp/NodeMap.hpp"
#include "OxGenApi/cpp/Registers.hpp"
#include "OxGenApi/cpp/Settings.hpp"

#endif
