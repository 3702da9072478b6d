// The content of control.xml: which updates there are, what each says about itself, and the steps that apply it. The
// only place that knows how the file spells all this.
#pragma once
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "FirmwareUpdate/FirmwareUpdateExceptions.h"
#include "GenApi/Types.h"
#include "firmware/WholePattern.h"

namespace GENAPI_NAMESPACE {

// control.xml is not well-formed XML, as opposed to well-formed and wrong.
class NotWellFormedException : public FormatException {
  using FormatException::FormatException;
};

struct LocalizedText {
  std::string language;  // two letters as the file writes them, or empty
  std::string text;
};

struct UpdateInfoText {
  std::string key;
  std::vector<LocalizedText> values;  // each language once, in file order
};

struct UpdateCondition {
  std::string feature;
  WholePattern pattern;
};

struct UpdateStep {
  EFirmwareUpdateProgressStepType type = ProgressStepType_Invalid;
  const char* element = "";  // the step's element name, for texts
  std::string feature;       // of FeatureWrite, FeatureExecute, FeatureAssert; the device file of FileUpload
  std::string value;         // of FeatureWrite
  std::string file;          // the package's member that FileUpload writes
  WholePattern pattern;      // of FeatureAssert
  uint32_t estimatedMs = 0;
  uint32_t delayEnumerationMs = 0;  // of DeviceReset
  std::vector<LocalizedText> descriptions;
};

struct UpdateProcedure {
  std::string name;
  std::vector<UpdateStep> steps;
  // Sum of all estimates in milliseconds; the largest 32-bit number when it is larger.
  uint32_t estimatedMs() const;
};

struct UpdateEntry {
  std::string procedure;
  std::vector<UpdateInfoText> infos;  // in order of first mention
  std::vector<UpdateCondition> conditions;
};

class UpdateControl {
 public:
  // `where` names the file in texts. Throws NotWellFormedException, FormatException.
  UpdateControl(const std::string& text, const std::string& where);

  const std::vector<UpdateEntry>& updates() const { return updates_; }
  const std::vector<UpdateProcedure>& procedures() const { return procedures_; }
  // Null when there is none.
  const UpdateProcedure* procedure(std::string_view name) const;

 private:
  friend class UpdateControlReader;
  std::vector<UpdateEntry> updates_;
  std::vector<UpdateProcedure> procedures_;
};

// The text in the preferred language, else in English, else without language, else the first; null for an empty list.
// Languages compare without regard to case; of a preferred "de-AT" the first two letters count.
const LocalizedText* chooseLanguage(const std::vector<LocalizedText>& texts, const char* preferred);

}  // namespace GENAPI_NAMESPACE
