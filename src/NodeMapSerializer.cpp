#include "NodeMapSerializer.h"

#include <new>

#include "Failure.h"
#include "OxBase/Exceptions.h"
#include "SettingsText.h"

namespace orxGenApi {

using GENAPI_NAMESPACE::INode;
using GENICAM_NAMESPACE::gcstring;
using GENICAM_NAMESPACE::GenericException;

void NodeMapSerializer::report(INode* feature, uint32_t code, const std::string& text) {
  if (!problems_.goOn(feature, code, text)) throw orx_error(code, text);
}

void NodeMapSerializer::reportCurrentException(INode* feature, const gcstring& name) {
  uint32_t code = OXGENAPI_E_UNSPECIFIED;
  std::string text = std::string(name.view()) + ": ";
  try {
    throw;
  } catch (const orx_error& fault) {
    code = fault.code();
    text += fault.what();
  } catch (const GenericException& fault) {
    code = kSettingDoesNotHold;
    text += fault.GetDescription();
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const orxBase::bad_alloc&) {
    throw;
  } catch (const std::exception& fault) {
    text += fault.what();
  } catch (...) {
    text += "Unspecified error";
  }
  report(feature, code, text);
}

}  // namespace orxGenApi
