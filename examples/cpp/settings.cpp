// Saves settings as text, changes a feature, and loads them again with each value read back.
#include <iostream>

#include "Camera.h"

int main() {
  const Camera camera;
  camera.map["Width"].set(320);
  const std::string settings = camera.map.settings({"Width", "Gain"});
  std::cout << settings;

  camera.map["Width"].set(640);
  const oxgenapi::Problems problems = camera.map.loadSettingsText(settings, true);
  for (const oxgenapi::Error& problem : problems) std::cout << "problem: " << problem.what() << '\n';
  std::cout << problems.size() << " problems, Width = " << camera.map["Width"].integer() << '\n';
}
