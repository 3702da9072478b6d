// Writes the feature values of a node map as settings text, and applies such a text to a node map.
//
// Both directions go feature by feature (line by line). What goes wrong with one of them is put to the caller, who
// decides whether the rest is still wanted. Nothing is undone: selectors keep the last value they were set to, and what
// was applied before a stop stays applied.
#pragma once
#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

#include "Base/GCString.h"
#include "GenApi/GenApi.h"

namespace orxGenApi {

struct SettingsLine;

// Who hears of each problem and decides.
class SettingsProblems {
 public:
  // `feature` is null when the problem has no node. `text` is complete. True: go on with the next feature or line.
  virtual bool goOn(GENAPI_NAMESPACE::INode* feature, uint32_t code, const std::string& text) = 0;
  // A remark for the log, made before the whole operation is refused.
  virtual void note(const char* text) = 0;

 protected:
  ~SettingsProblems() = default;
};

class NodeMapSerializer {
 public:
  using FeatureNames = std::vector<GENICAM_NAMESPACE::gcstring>;

  // `nodeMap` may be null: nothing loaded. Both must outlive the serializer.
  NodeMapSerializer(GENAPI_NAMESPACE::INodeMap* nodeMap, SettingsProblems& problems)
      : nodeMap_(nodeMap), problems_(problems) {}

  // Writes the features named, in that order, one line for each combination of their selectors' values.
  // Once the stream has failed nothing more is read from the device and SaveSet returns: the caller looks at the
  // stream. Throws orx_error: 0x80000003 stream not good at the start, 0x8000001e nothing loaded, and the code and text
  // of the problem at which it was stopped. Memory does not grow with the number of lines.
  void SaveSet(const FeatureNames& names, std::ostream& output);
  // The same for every streamable feature, in description order.
  void SaveSet(std::ostream& output);

  // Applies every line; with `validate` each value is read back and compared.
  // Throws orx_error: 0x80000003 stream not good at the start or not readable to its end, 0x8000001e nothing loaded,
  // and the code and text of the problem at which it was stopped.
  void LoadSet(std::istream& input, bool validate);

 private:
  // Puts a problem to the caller; throws it as orx_error when the answer is stop.
  void report(GENAPI_NAMESPACE::INode* feature, uint32_t code, std::string text);
  // To be called in a handler: reports the exception at hand under the feature's name.
  void reportCurrentException(GENAPI_NAMESPACE::INode* feature, const GENICAM_NAMESPACE::gcstring& name);

  void requireWritable(const std::ostream& output) const;
  void saveFeature(const GENICAM_NAMESPACE::gcstring& name, GENAPI_NAMESPACE::INode* node, std::ostream& output);
  void writeLines(GENAPI_NAMESPACE::INode& node, GENAPI_NAMESPACE::IValue& value, std::ostream& output);

  void loadLine(int64_t number, bool validate, SettingsLine& line);
  void apply(const SettingsLine& line);
  void compare(const SettingsLine& line, int64_t number);

  GENAPI_NAMESPACE::INodeMap* nodeMap_;
  SettingsProblems& problems_;
  std::string line_;  // the line at hand; kept so that its memory is
};

}  // namespace orxGenApi
