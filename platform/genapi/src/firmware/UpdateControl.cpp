#include "firmware/UpdateControl.h"

#include <algorithm>

#include "firmware/UpdateControlReader.h"
#include "text/Characters.h"

namespace GENAPI_NAMESPACE {

namespace {

const LocalizedText* inLanguage(const std::vector<LocalizedText>& texts, std::string_view language) {
  for (const LocalizedText& each : texts)
    if (text::equalsIgnoringCase(each.language, language)) return &each;
  return nullptr;
}

}  // namespace

UpdateControl::UpdateControl(const std::string& text, const std::string& where) {
  UpdateControlReader(*this, where).read(text);
}

const UpdateProcedure* UpdateControl::procedure(std::string_view name) const {
  for (const UpdateProcedure& procedure : procedures_)
    if (procedure.name == name) return &procedure;
  return nullptr;
}

uint32_t UpdateProcedure::estimatedMs() const {
  uint64_t sum = 0;
  for (const UpdateStep& step : steps) sum += step.estimatedMs;
  return static_cast<uint32_t>(std::min<uint64_t>(sum, UINT32_MAX));
}

const LocalizedText* chooseLanguage(const std::vector<LocalizedText>& texts, const char* preferred) {
  if (texts.empty()) return nullptr;
  if (preferred && *preferred) {
    std::string_view wanted(preferred);
    if (wanted.size() > 2 && (wanted[2] == '-' || wanted[2] == '_')) wanted = wanted.substr(0, 2);
    if (const LocalizedText* found = inLanguage(texts, wanted)) return found;
  }
  if (const LocalizedText* found = inLanguage(texts, "en")) return found;
  if (const LocalizedText* found = inLanguage(texts, "")) return found;
  return &texts.front();
}

}  // namespace GENAPI_NAMESPACE
