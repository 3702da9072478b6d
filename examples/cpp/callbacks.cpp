// Is told of every change of a feature: by a write to it or to what it depends on, by an event, by an invalidation.
#include <iostream>

#include "Camera.h"

int main() {
  const Camera camera;
  const oxgenapi::Node pitch = camera.map["LinePitch"];
  int updates = 0;
  {
    // Runs inside the call that made the change, for as long as the registration lives.
    const auto registration = pitch.onUpdate([&](const oxgenapi::Node& node) {
      std::cout << "LinePitch is now " << node.integer() << '\n';
      ++updates;
    });
    camera.map["Width"].set(320);  // the line pitch depends on it
    camera.map["Width"].set(160);
  }
  camera.map["Width"].set(640);  // nobody is told
  std::cout << updates << " updates\n";
}
