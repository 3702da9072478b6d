#include <algorithm>

#include "GenApi/Filestream.h"
#include "files/Cleanup.h"
#include "files/DeviceFile.h"

namespace GENAPI_NAMESPACE {

// --- writing ---

template <typename CharType, typename Traits>
ODevFileStreamBuf<CharType, Traits>::ODevFileStreamBuf() = default;

template <typename CharType, typename Traits>
ODevFileStreamBuf<CharType, Traits>::~ODevFileStreamBuf() {
  quietly([this] { close(); });  // close() reports failures to those who call it
}

template <typename CharType, typename Traits>
ODevFileStreamBuf<CharType, Traits>* ODevFileStreamBuf<CharType, Traits>::open(INodeMap* pNodeMap,
                                                                               const char* pFileName,
                                                                               std::ios_base::openmode mode) {
  static_assert(sizeof(CharType) == 1, "device files are bytes");
  if (file_) return nullptr;
  auto file = std::make_unique<DeviceFile>();
  file->openForWriting(pNodeMap, pFileName, mode | std::ios_base::out);
  file_ = std::move(file);
  this->setp(file_->block().data(), file_->block().data() + file_->block().size());
  return this;
}

template <typename CharType, typename Traits>
bool ODevFileStreamBuf<CharType, Traits>::is_open() const {
  return file_ != nullptr;
}

template <typename CharType, typename Traits>
ODevFileStreamBuf<CharType, Traits>* ODevFileStreamBuf<CharType, Traits>::close() {
  if (!file_) return nullptr;
  const std::unique_ptr<DeviceFile> file = std::move(file_);
  const std::streamsize rest = this->pptr() - this->pbase();
  this->setp(nullptr, nullptr);
  if (rest > 0 && !file->hasFailed())
    orCleanUp([&] { file->write(file->block().data(), rest); }, [&] { file->close(); });
  file->closeOrThrow();
  return this;
}

template <typename CharType, typename Traits>
void ODevFileStreamBuf<CharType, Traits>::flushBlock() {
  const std::streamsize count = this->pptr() - this->pbase();
  this->setp(this->pbase(), this->epptr());  // also when writing fails: what was tried once is not tried again
  if (count > 0) file_->write(this->pbase(), count);
}

template <typename CharType, typename Traits>
typename ODevFileStreamBuf<CharType, Traits>::int_type ODevFileStreamBuf<CharType, Traits>::overflow(int_type c) {
  if (!file_) return Traits::eof();
  flushBlock();
  if (!Traits::eq_int_type(c, Traits::eof())) {
    *this->pptr() = Traits::to_char_type(c);
    this->pbump(1);
  }
  return Traits::not_eof(c);
}

template <typename CharType, typename Traits>
std::streamsize ODevFileStreamBuf<CharType, Traits>::xsputn(const CharType* data, std::streamsize count) {
  if (!file_) return 0;
  std::streamsize done = 0;
  while (done < count) {
    const std::streamsize rest = count - done;
    if (this->pptr() == this->pbase() && rest >= file_->blockSize()) {
      // Whole blocks need no stop in our memory.
      const std::streamsize whole = rest - rest % file_->blockSize();
      file_->write(data + done, whole);
      done += whole;
      continue;
    }
    const std::streamsize part = std::min<std::streamsize>(rest, this->epptr() - this->pptr());
    Traits::copy(this->pptr(), data + done, static_cast<size_t>(part));
    this->pbump(static_cast<int>(part));
    done += part;
    if (this->pptr() == this->epptr()) flushBlock();
  }
  return done;
}

template <typename CharType, typename Traits>
std::streamsize ODevFileStreamBuf<CharType, Traits>::copyFrom(std::basic_streambuf<CharType, Traits>& source) {
  if (!file_) return 0;
  std::streamsize total = 0;
  for (;;) {
    if (this->pptr() == this->epptr()) flushBlock();
    const std::streamsize part = source.sgetn(this->pptr(), this->epptr() - this->pptr());
    if (part <= 0) return total;
    this->pbump(static_cast<int>(part));
    total += part;
  }
}

template <typename CharType, typename Traits>
int ODevFileStreamBuf<CharType, Traits>::sync() {
  if (!file_) return -1;
  flushBlock();
  return 0;
}

// --- reading ---

template <typename CharType, typename Traits>
IDevFileStreamBuf<CharType, Traits>::IDevFileStreamBuf() = default;

template <typename CharType, typename Traits>
IDevFileStreamBuf<CharType, Traits>::~IDevFileStreamBuf() {
  quietly([this] { close(); });  // close() reports failures to those who call it
}

template <typename CharType, typename Traits>
IDevFileStreamBuf<CharType, Traits>* IDevFileStreamBuf<CharType, Traits>::open(INodeMap* pNodeMap,
                                                                               const char* pFileName,
                                                                               std::ios_base::openmode mode) {
  static_assert(sizeof(CharType) == 1, "device files are bytes");
  if (file_) return nullptr;
  auto file = std::make_unique<DeviceFile>();
  if (!file->open(pNodeMap, pFileName, mode | std::ios_base::in)) return nullptr;
  file_ = std::move(file);
  this->setg(nullptr, nullptr, nullptr);
  return this;
}

template <typename CharType, typename Traits>
bool IDevFileStreamBuf<CharType, Traits>::is_open() const {
  return file_ != nullptr;
}

template <typename CharType, typename Traits>
IDevFileStreamBuf<CharType, Traits>* IDevFileStreamBuf<CharType, Traits>::close() {
  if (!file_) return nullptr;
  const std::unique_ptr<DeviceFile> file = std::move(file_);
  this->setg(nullptr, nullptr, nullptr);
  return file->close() ? this : nullptr;
}

template <typename CharType, typename Traits>
typename IDevFileStreamBuf<CharType, Traits>::int_type IDevFileStreamBuf<CharType, Traits>::underflow() {
  if (this->gptr() < this->egptr()) return Traits::to_int_type(*this->gptr());
  if (!file_) return Traits::eof();
  CharType* block = file_->block().data();
  this->setg(block, block, block);
  const int64_t count = file_->read(block, file_->blockSize());
  this->setg(block, block, block + count);
  return count > 0 ? Traits::to_int_type(*block) : Traits::eof();
}

template <typename CharType, typename Traits>
std::streamsize IDevFileStreamBuf<CharType, Traits>::xsgetn(CharType* data, std::streamsize count) {
  std::streamsize done = 0;
  while (done < count) {
    const std::streamsize held = this->egptr() - this->gptr();
    const std::streamsize rest = count - done;
    if (held > 0) {
      const std::streamsize part = std::min(held, rest);
      Traits::copy(data + done, this->gptr(), static_cast<size_t>(part));
      this->setg(this->eback(), this->gptr() + part, this->egptr());
      done += part;
    } else if (file_ && rest >= file_->blockSize()) {
      // Whole blocks need no stop in our memory.
      const std::streamsize whole = rest - rest % file_->blockSize();
      const int64_t got = file_->read(data + done, whole);
      done += got;
      if (got < whole) break;
    } else if (Traits::eq_int_type(underflow(), Traits::eof())) {
      break;
    }
  }
  return done;
}

template class ODevFileStreamBuf<char>;
template class IDevFileStreamBuf<char>;

}  // namespace GENAPI_NAMESPACE
