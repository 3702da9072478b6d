// The exceptions that only firmware updates raise.
#pragma once

#include <Base/GCException.h>

namespace GENAPI_NAMESPACE {

// The update file, or a file named in it, does not exist.
class FileNotFoundException : public GENICAM_NAMESPACE::GenericException {
  using GENICAM_NAMESPACE::GenericException::GenericException;
};
// A file exists and cannot be read.
class FileIOException : public GENICAM_NAMESPACE::GenericException {
  using GENICAM_NAMESPACE::GenericException::GenericException;
};
// The update file's content is not what an update file must be.
class FormatException : public GENICAM_NAMESPACE::GenericException {
  using GENICAM_NAMESPACE::GenericException::GenericException;
};

}  // namespace GENAPI_NAMESPACE

// Builds a firmware exception object: throw FIRMWARE_EXCEPTION(FormatException)("member '%s' is missing", name);
#define FIRMWARE_EXCEPTION(type) \
  ::GENICAM_NAMESPACE::ExceptionReporter< ::GENAPI_NAMESPACE::type>(__FILE__, __LINE__).Report
