// Reads the elements of control.xml one by one, each with its place for texts.
#pragma once
#include <pugixml.hpp>
#include <string>
#include <unordered_map>

#include "firmware/UpdateControl.h"

namespace GENAPI_NAMESPACE {

class UpdateControlReader {
 public:
  UpdateControlReader(UpdateControl& control, std::string where) : control_(control), where_(std::move(where)) {}
  void read(const std::string& text);

 private:
  void readRoot(pugi::xml_node root);
  UpdateEntry readUpdate(pugi::xml_node element, const std::string& place);
  void readInfo(pugi::xml_node element, const std::string& place, UpdateEntry& entry,
                std::unordered_map<std::string, size_t>& keys) const;
  void checkInfos(const UpdateEntry& entry, const std::string& place);
  UpdateCondition readCondition(pugi::xml_node element, const std::string& place);
  UpdateProcedure readProcedure(pugi::xml_node element, const std::string& place);
  UpdateStep readStep(pugi::xml_node element, const std::string& place);
  // The element's text. What is not understood may be left out of a description, but not of a condition or a step.
  enum class Strange { isIgnored, isRefused };
  std::string textOf(pugi::xml_node element, const std::string& place, Strange elements) const;
  WholePattern pattern(const std::string& text, const std::string& place);
  std::string language(pugi::xml_node element, const std::string& place) const;
  void addLocalized(std::vector<LocalizedText>& texts, LocalizedText added, const std::string& place) const;
  // A required attribute that is not empty.
  std::string required(pugi::xml_node element, const char* attribute, const std::string& place) const;
  uint32_t milliseconds(pugi::xml_node element, const char* attribute, const std::string& place) const;
  std::string memberName(std::string name, const std::string& place) const;
  [[noreturn]] void refuseAt(const std::string& place, const std::string& what) const;

  UpdateControl& control_;
  std::string where_;
  size_t programSteps_ = 0;  // of all expressions so far
};

}  // namespace GENAPI_NAMESPACE
