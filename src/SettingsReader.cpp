#include <istream>
#include <new>

#include "Failure.h"
#include "NodeMapSerializer.h"
#include "SettingsText.h"

namespace orxGenApi {

using namespace GENAPI_NAMESPACE;
using GENICAM_NAMESPACE::gcstring;
using GENICAM_NAMESPACE::GenericException;

namespace {

// Longest line that is read. The text of a register of 128 MiB fits; a source that never ends its line does not eat all
// memory.
constexpr size_t kMaxSettingsLineBytes = size_t{256} << 20;

constexpr const char* kUnusableStream = "Error reading given stream";

// The bytes up to the next line feed, or up to the end of the stream. False when nothing is left.
bool readLine(std::streambuf& source, std::string& line) {
  using Traits = std::streambuf::traits_type;
  line.clear();
  for (;;) {
    const int byte = source.sbumpc();
    if (byte == Traits::eof()) return !line.empty();
    if (byte == '\n') return true;
    if (line.size() == kMaxSettingsLineBytes)
      throw orx_error(kMalformedLine, "line exceeds " + std::to_string(kMaxSettingsLineBytes) + " bytes");
    line += Traits::to_char_type(byte);
  }
}

// Runs one step of a line; what goes wrong in it becomes the line's own error.
template <class Step>
void inLine(int64_t number, const char* genApiFault, const char* unknownFault, Step step) {
  try {
    step();
  } catch (const orx_error&) {
    throw;
  } catch (const GenericException& fault) {
    throw orx_error(kSettingDoesNotHold, genApiFault + std::to_string(number) + ": " + fault.GetDescription());
  } catch (...) {
    throw orx_error(OXGENAPI_E_UNSPECIFIED, unknownFault + std::to_string(number) + ": Accessing node");
  }
}

}  // namespace

void NodeMapSerializer::LoadSet(std::istream& input, bool validate) {
  if (input.fail()) {
    problems_.note("NodeMapSerializer::LoadSet: Input stream not readable");
    throw orx_error(OXGENAPI_E_RUNTIME, kUnusableStream);
  }
  if (nodeMap_ == nullptr) {
    problems_.note("NodeMapSerializer::LoadSet: No nodemap loaded");
    throw orx_error(OXGENAPI_E_INVALID_STATE, "No nodemap loaded");
  }
  SettingsLine line;
  int64_t number = 1;
  try {
    for (; readLine(*input.rdbuf(), line_); ++number) loadLine(number, validate, line);
  } catch (const std::ios_base::failure&) {
    throw orx_error(OXGENAPI_E_RUNTIME, kUnusableStream);
  }
}

void NodeMapSerializer::loadLine(int64_t number, bool validate, SettingsLine& line) {
  try {
    if (!parseSettingsLine(line_, line)) return;
  } catch (const orx_error& fault) {
    report(nullptr, fault.code(), std::to_string(number) + ":  \"" + line_ + "\" : " + fault.what());
    return;
  }
  INode* feature = nodeMap_->GetNode(line.feature);
  try {
    inLine(number, "GenApi error in line ", "Unknown error in line ", [&] { apply(line); });
    if (validate) {
      inLine(number, "GenApi error while validating in line ", "Unknown error while validating in line ",
             [&] { compare(line, number); });
    }
  } catch (...) {
    reportCurrentException(feature, feature != nullptr ? feature->GetName(true) : line.feature);
  }
}

void NodeMapSerializer::apply(const SettingsLine& line) {
  // The pointers throw for names that the node map does not know.
  for (const SettingsLine::Selector& wanted : line.selectors) {
    const CValuePtr selector(nodeMap_->GetNode(wanted.name));
    if (selector->ToString(false, false) != wanted.value) selector->FromString(wanted.value, true);
  }
  const CValuePtr feature(nodeMap_->GetNode(line.feature));
  feature->FromString(line.value, true);
}

void NodeMapSerializer::compare(const SettingsLine& line, int64_t number) {
  const CValuePtr feature(nodeMap_->GetNode(line.feature));
  if (!IsAvailable(feature)) return;
  const gcstring actual = feature->ToString(false, false);
  if (actual == line.value) return;
  throw orx_error(kSettingDoesNotHold, "Validation failed in line " + std::to_string(number) + ": Actual value \"" +
                                           std::string(actual.view()) + "\" != \"" + std::string(line.value.view()) +
                                           "\"");
}

}  // namespace orxGenApi
