// Finding GigE Vision cameras: every interface is asked by broadcast, single addresses directly.
#pragma once

#include <OxCameraTransport/Transport.h>

#include <string>

#include "Ipv4.h"

namespace ox::camera::gige {

// Where a camera is and which of this machine's addresses it is talked to from.
struct Place {
  Ipv4 camera;
  Ipv4 own;
};
std::string placeText(Place place);
Place parsePlace(const std::string& text);  // throws TransportError

// Asks by broadcast on every interface, and at the addresses in OXGENAPI_ADDRESSES; or only at search.address. Never
// throws for an interface or an answer.
Findings discover(const Search& search);

}  // namespace ox::camera::gige
