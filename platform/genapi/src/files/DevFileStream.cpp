#include "GenApi/Filestream.h"
#include "files/DeviceFile.h"

namespace GENAPI_NAMESPACE {

namespace {

// The bits are set without the exception that the mask would raise: another exception is on its way.
template <typename Stream>
void setSilently(Stream& stream, std::ios_base::iostate state) {
  const std::ios_base::iostate mask = stream.exceptions();
  stream.exceptions(std::ios_base::goodbit);
  stream.setstate(state);
  try {
    stream.exceptions(mask);  // raises when a bit of the mask is set, after the mask is in place
  } catch (const std::ios_base::failure&) {
  }
}

}  // namespace

template <typename Stream, typename Buffer>
DevFileStreamBase<Stream, Buffer>::DevFileStreamBase() : Stream(nullptr) {
  this->init(&buffer_);
  this->exceptions(std::ios_base::badbit);
}

template <typename Stream, typename Buffer>
DevFileStreamBase<Stream, Buffer>::DevFileStreamBase(INodeMap* pNodeMap, const char* pFileName,
                                                     std::ios_base::openmode mode)
    : DevFileStreamBase() {
  open(pNodeMap, pFileName, mode);
}

template <typename Stream, typename Buffer>
DevFileStreamBase<Stream, Buffer>::~DevFileStreamBase() = default;

template <typename Stream, typename Buffer>
void DevFileStreamBase<Stream, Buffer>::open(INodeMap* pNodeMap, const char* pFileName, std::ios_base::openmode mode) {
  if (buffer_.open(pNodeMap, pFileName, mode))
    this->clear();
  else
    this->setstate(std::ios_base::failbit);
}

template <typename Stream, typename Buffer>
void DevFileStreamBase<Stream, Buffer>::close() {
  if (!buffer_.close()) this->setstate(std::ios_base::failbit);
}

template <typename CharType, typename Traits>
ODevFileStreamBase<CharType, Traits>& ODevFileStreamBase<CharType, Traits>::operator<<(
    std::basic_streambuf<CharType, Traits>* source) {
  if (!source) {
    this->setstate(std::ios_base::badbit);
    return *this;
  }
  if (!this->good()) {
    this->setstate(std::ios_base::failbit);
    return *this;
  }
  try {
    if (this->rdbuf()->copyFrom(*source) == 0) this->setstate(std::ios_base::failbit);
  } catch (...) {
    setSilently(*this, std::ios_base::badbit);
    throw;
  }
  return *this;
}

template class DevFileStreamBase<std::ostream, ODevFileStreamBuf<char>>;
template class DevFileStreamBase<std::istream, IDevFileStreamBuf<char>>;
template class ODevFileStreamBase<char>;
template class IDevFileStreamBase<char>;

}  // namespace GENAPI_NAMESPACE
