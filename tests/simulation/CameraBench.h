// A camera on the bench: registers by the names of the description, time that passes only when told.
#pragma once

#include <gtest/gtest.h>

#include <bit>
#include <cstdlib>
#include <map>
#include <memory>
#include <pugixml.hpp>
#include <string>
#include <vector>

#include "OxSimulation/SimulatedCamera.h"

// The camera's own description as elements.
struct DescriptionDocument : pugi::xml_document {
  explicit DescriptionDocument(std::string_view xml) {
    if (!load_buffer(xml.data(), xml.size())) throw std::runtime_error("the description is not well-formed");
  }
  pugi::xml_node root() const { return document_element(); }
};

class CameraBench {
 public:
  explicit CameraBench(ox::simulation::CameraOptions options = {}) {
    options.clock = [now = now_] { return *now; };
    camera_ = std::make_unique<ox::simulation::SimulatedCamera>(options);
  }

  ox::simulation::SimulatedCamera* operator->() { return camera_.get(); }
  ox::simulation::SimulatedCamera& camera() { return *camera_; }

  void wait(int64_t milliseconds) { *now_ += milliseconds * 1'000'000; }

  uint64_t get(const std::string& name, int64_t element = 0) {
    const Place place = placeOf(name);
    std::vector<uint8_t> bytes(static_cast<std::size_t>(place.length));
    EXPECT_EQ(camera_->read(bytes.data(), place.address + element * place.length, place.length), 0)
        << name << ": " << camera_->lastFailureText();
    return number(bytes, place.little);
  }

  /// The result code of the write.
  int trySet(const std::string& name, uint64_t value, int64_t element = 0) {
    const Place place = placeOf(name);
    std::vector<uint8_t> bytes(static_cast<std::size_t>(place.length));
    for (std::size_t i = 0; i < bytes.size(); ++i, value >>= 8)
      bytes[place.little ? i : bytes.size() - 1 - i] = static_cast<uint8_t>(value);
    return camera_->write(bytes.data(), place.address + element * place.length, place.length);
  }
  void set(const std::string& name, uint64_t value, int64_t element = 0) {
    EXPECT_EQ(trySet(name, value, element), 0) << name << ": " << camera_->lastFailureText();
  }

  double getReal(const std::string& name, int64_t element = 0) {
    if (placeOf(name).length == 4) return std::bit_cast<float>(static_cast<uint32_t>(get(name, element)));
    return std::bit_cast<double>(get(name, element));
  }
  int trySetReal(const std::string& name, double value, int64_t element = 0) {
    if (placeOf(name).length == 4) return trySet(name, std::bit_cast<uint32_t>(static_cast<float>(value)), element);
    return trySet(name, std::bit_cast<uint64_t>(value), element);
  }

  std::string getText(const std::string& name) {
    const Place place = placeOf(name);
    std::string text(static_cast<std::size_t>(place.length), '\0');
    EXPECT_EQ(camera_->read(text.data(), place.address, place.length), 0) << name;
    return text.substr(0, text.find('\0'));
  }

  int64_t addressOf(const std::string& name) { return placeOf(name).address; }

  static uint64_t number(const std::vector<uint8_t>& bytes, bool little = false) {
    uint64_t value = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i) value = value << 8 | bytes[little ? bytes.size() - 1 - i : i];
    return value;
  }

 private:
  struct Place {
    int64_t address;
    int64_t length;
    bool little;
  };

  static Place placeOf(const std::string& name) {
    static const std::map<std::string, Place> places = [] {
      std::map<std::string, Place> result;
      const DescriptionDocument description(ox::simulation::SimulatedCamera::description());
      for (const auto& top : description.root())
        if (top.attribute("Name") && top.child("Address"))
          result[top.attribute("Name").value()] = {std::strtoll(top.child_value("Address"), nullptr, 0),
                                                   std::strtoll(top.child_value("Length"), nullptr, 0),
                                                   top.child_value("Endianess") == std::string("LittleEndian")};
      return result;
    }();
    return places.at(name);
  }

  std::shared_ptr<int64_t> now_ = std::make_shared<int64_t>(1'000'000'000'000);
  std::unique_ptr<ox::simulation::SimulatedCamera> camera_;
};
