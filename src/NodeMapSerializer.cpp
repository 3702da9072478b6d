#include "NodeMapSerializer.h"

#include <algorithm>
#include <exception>
#include <new>
#include <utility>

#include "Base/GCException.h"
#include "Failure.h"
#include "OxBase/Exceptions.h"
#include "SettingsText.h"

namespace orxGenApi {

using GENAPI_NAMESPACE::INode;
using GENICAM_NAMESPACE::BadAllocException;
using GENICAM_NAMESPACE::gcstring;
using GENICAM_NAMESPACE::GenericException;

void NodeMapSerializer::report(INode* feature, uint32_t code, std::string text) {
  // Bytes of a file that is no settings file: a zero would end the text before its reason.
  std::replace(text.begin(), text.end(), '\0', '?');
  if (!problems_.goOn(feature, code, text)) throw orx_error(code, text);
}

void NodeMapSerializer::reportCurrentException(INode* feature, const gcstring& name) {
  uint32_t code = OXGENAPI_E_UNSPECIFIED;
  std::string text = std::string(name.view()) + ": ";
  const auto outOfMemory = [&] {
    code = OXGENAPI_E_OUT_OF_MEMORY;
    text += kUnspecifiedError;
  };
  try {
    throw;
  } catch (const orx_error& fault) {
    code = fault.code();
    text += fault.what();
  } catch (const std::bad_alloc&) {
    outOfMemory();
  } catch (const orxBase::bad_alloc&) {
    outOfMemory();
  } catch (const BadAllocException&) {
    outOfMemory();
  } catch (const GenericException& fault) {
    code = kSettingDoesNotHold;
    text += fault.GetDescription();
  } catch (const std::exception& fault) {
    text += fault.what();
  } catch (...) {
    text += kUnspecifiedError;
  }
  report(feature, code, std::move(text));
}

}  // namespace orxGenApi
