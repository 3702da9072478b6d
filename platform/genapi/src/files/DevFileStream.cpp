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

// --- writing ---

template <typename CharType, typename Traits>
ODevFileStreamBase<CharType, Traits>::ODevFileStreamBase()
    : std::basic_ostream<CharType, Traits>(static_cast<std::basic_streambuf<CharType, Traits>*>(nullptr)) {
  this->init(&buffer_);
  this->exceptions(std::ios_base::badbit);
}

template <typename CharType, typename Traits>
ODevFileStreamBase<CharType, Traits>::ODevFileStreamBase(INodeMap* pNodeMap, const char* pFileName,
                                                         std::ios_base::openmode mode)
    : ODevFileStreamBase() {
  open(pNodeMap, pFileName, mode);
}

template <typename CharType, typename Traits>
ODevFileStreamBase<CharType, Traits>::~ODevFileStreamBase() = default;

template <typename CharType, typename Traits>
void ODevFileStreamBase<CharType, Traits>::open(INodeMap* pNodeMap, const char* pFileName,
                                                std::ios_base::openmode mode) {
  if (buffer_.open(pNodeMap, pFileName, mode))
    this->clear();
  else
    this->setstate(std::ios_base::failbit);
}

template <typename CharType, typename Traits>
void ODevFileStreamBase<CharType, Traits>::close() {
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
    if (buffer_.copyFrom(*source) == 0) this->setstate(std::ios_base::failbit);
  } catch (...) {
    setSilently(*this, std::ios_base::badbit);
    throw;
  }
  return *this;
}

// --- reading ---

template <typename CharType, typename Traits>
IDevFileStreamBase<CharType, Traits>::IDevFileStreamBase()
    : std::basic_istream<CharType, Traits>(static_cast<std::basic_streambuf<CharType, Traits>*>(nullptr)) {
  this->init(&buffer_);
  this->exceptions(std::ios_base::badbit);
}

template <typename CharType, typename Traits>
IDevFileStreamBase<CharType, Traits>::IDevFileStreamBase(INodeMap* pNodeMap, const char* pFileName,
                                                         std::ios_base::openmode mode)
    : IDevFileStreamBase() {
  open(pNodeMap, pFileName, mode);
}

template <typename CharType, typename Traits>
IDevFileStreamBase<CharType, Traits>::~IDevFileStreamBase() = default;

template <typename CharType, typename Traits>
void IDevFileStreamBase<CharType, Traits>::open(INodeMap* pNodeMap, const char* pFileName,
                                                std::ios_base::openmode mode) {
  if (buffer_.open(pNodeMap, pFileName, mode))
    this->clear();
  else
    this->setstate(std::ios_base::failbit);
}

template <typename CharType, typename Traits>
void IDevFileStreamBase<CharType, Traits>::close() {
  if (!buffer_.close()) this->setstate(std::ios_base::failbit);
}

template class ODevFileStreamBase<char>;
template class IDevFileStreamBase<char>;

}  // namespace GENAPI_NAMESPACE
