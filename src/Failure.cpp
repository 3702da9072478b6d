#include "Failure.h"

#include <exception>
#include <new>

#include "Base/GCException.h"
#include "CallTelemetry.h"
#include "OxBase/Exceptions.h"
#include "OxBase/OxBase.h"

namespace orxGenApi {

uint32_t failSilently(const Operation& operation, uint32_t code, const char* text) noexcept {
  if (operation.rules.reports) {
    Telemetry::_OxGenApi::sendRecord(OXT_LEVEL_ERROR, [&](Telemetry::_OxGenApi::Log& record) {
      if (operation.owner != nullptr) operation.appendOwner(record.message, operation.owner);
      record.message.append(operation.tag).append(": ").append(text);
      record["Code"] = int64_t{code};
    });
  }
  return code;
}

uint32_t fail(const Operation& operation, uint32_t code, const char* text) noexcept {
  failSilently(operation, code, text);
  OxSetLastError(code, text);
  return code;
}

uint32_t failWithCurrentException(const Operation& operation) noexcept {
  using namespace GENICAM_NAMESPACE;
  const FailureRules& rules = operation.rules;
  const auto genapiFailure = [&](uint32_t code, const GenericException& e) {
    return rules.describes ? fail(operation, code, e.GetDescription())
                           : fail(operation, rules.unknown, rules.unknownText);
  };
  const auto standardFailure = [&](const std::exception& e) {
    return rules.standard != 0 ? fail(operation, rules.standard, e.what())
                               : fail(operation, rules.unknown, rules.unknownText);
  };
  try {
    throw;
  } catch (const silent_error& e) {
    return failSilently(operation, e.code(), e.what());
  } catch (const orx_error& e) {
    return fail(operation, e.code(), e.what());
  } catch (const AccessException& e) {
    return genapiFailure(rules.access, e);
  } catch (const InvalidArgumentException& e) {
    return genapiFailure(rules.argument, e);
  } catch (const OutOfRangeException& e) {
    return genapiFailure(rules.argument, e);
  } catch (const BadAllocException& e) {
    return rules.memory != 0 ? fail(operation, rules.memory, kUnspecifiedError) : genapiFailure(rules.genapi, e);
  } catch (const GenericException& e) {
    return genapiFailure(rules.genapi, e);
  } catch (const orxBase::bad_alloc&) {
    return rules.memory != 0 ? fail(operation, rules.memory, kUnspecifiedError)
                             : fail(operation, rules.unknown, rules.unknownText);
  } catch (const std::bad_alloc& e) {
    if (rules.memory != 0) return fail(operation, rules.memory, kUnspecifiedError);
    return standardFailure(e);
  } catch (const std::exception& e) {
    return standardFailure(e);
  } catch (...) {
    return fail(operation, rules.unknown, rules.unknownText);
  }
}

}  // namespace orxGenApi
