// The calling thread's last error.
#include <pthread.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "OxBase/OxBase.h"

namespace {

// Texts up to this length need no memory, so the fixed ones survive a failed allocation.
constexpr size_t kOwnTextBytes = 255;

// Has no destructor, so it can be set and read until the thread is gone, from other destructors too.
struct LastError {
  uint32_t code;
  size_t length;
  char* longText;  // a text that does not fit below, else null
  char ownText[kOwnTextBytes + 1];

  const char* text() const { return longText != nullptr ? longText : ownText; }
};

constinit thread_local LastError lastError{};

void keepShortText(LastError& error, const char* text, size_t length) {
  error.length = std::min(length, kOwnTextBytes);
  if (error.length > 0) std::memcpy(error.ownText, text, error.length);
  error.ownText[error.length] = '\0';
  std::free(error.longText);
  error.longText = nullptr;
}

extern "C" {

// Frees the long text of a thread that ends; called again if one is set after that.
static void endOfThread(void* record) {
  auto& error = *static_cast<LastError*>(record);
  if (error.longText != nullptr) keepShortText(error, error.longText, error.length);
}

static pthread_key_t threadKey;
static bool threadKeyMade = false;
static pthread_once_t threadKeyOnce = PTHREAD_ONCE_INIT;

static void makeThreadKey() { threadKeyMade = pthread_key_create(&threadKey, endOfThread) == 0; }
}

bool keepLongText(LastError& error, const char* text, size_t length) {
  pthread_once(&threadKeyOnce, makeThreadKey);
  if (!threadKeyMade || pthread_setspecific(threadKey, &error) != 0) return false;
  auto* copy = static_cast<char*>(std::malloc(length + 1));
  if (copy == nullptr) return false;
  std::memcpy(copy, text, length + 1);
  std::free(error.longText);
  error.longText = copy;
  error.length = length;
  return true;
}

}  // namespace

int32_t OxSetLastError(uint32_t Code, const char* Text) {
  LastError& error = lastError;
  const size_t length = Text == nullptr ? 0 : std::strlen(Text);
  error.code = Code;
  if (length <= kOwnTextBytes || !keepLongText(error, Text, length)) keepShortText(error, Text, length);
  return OX_OK;
}

int32_t OxGetLastError(uint32_t* Code, char* Buffer, size_t* Size) {
  const LastError& error = lastError;
  if (Buffer != nullptr && Size == nullptr) return OX_E_INVALID_ARGUMENT;
  if (Code != nullptr) *Code = error.code;
  if (Buffer == nullptr) {
    if (Size != nullptr) *Size = error.length + 1;
  } else if (*Size > 0) {
    const size_t copied = std::min(*Size - 1, error.length);
    std::memcpy(Buffer, error.text(), copied);
    Buffer[copied] = '\0';
  }
  return OX_OK;
}
