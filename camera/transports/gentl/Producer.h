// A producer: a vendor's library with the C interface of GenTL, loaded and initialised.
#pragma once

#include <OxCameraTransport/Transport.h>

#include <atomic>
#include <filesystem>
#include <string>

#include "Functions.h"

namespace ox::camera::gentl {

// "GC_ERR_IO (-1010)"; for a number of the vendor's own only that.
std::string codeName(GC_ERROR code);

// Bytes of foreign code as one line: up to the first zero, without what cannot be printed.
std::string printable(std::string_view text);

// The handle behind this code is dead, or the whole library is.
inline bool isDead(GC_ERROR code) { return code == GC_ERR_INVALID_HANDLE || code == GC_ERR_NOT_INITIALIZED; }

// Stays loaded until the process ends: many vendors' libraries do not survive being unloaded. Its functions may be
// called from any thread.
class Producer {
 public:
  // Loads the library with symbols of its own and initialises it; another part of this program may have done the second
  // already. Throws TransportError with the loader's text, or naming a function without which nothing works.
  explicit Producer(const std::filesystem::path& file);
  // Ends the library if this object has initialised it.
  ~Producer();
  Producer(const Producer&) = delete;
  Producer& operator=(const Producer&) = delete;

  const std::string& file() const { return file_; }
  const std::string& name() const { return name_; }  // the file's, without folder and ending
  Functions functions;

  // Initialises the library once more, after it has said that it is not. Throws TransportError.
  void initialise();

  // Calls a function; throws TransportError with what failed unless it succeeds.
  template <class... Arguments, class... Given>
  void call(const Function<GC_ERROR (*)(Arguments...)>& function, Given... given) const {
    const GC_ERROR code = function(given...);
    if (code != GC_ERR_SUCCESS) fail(function.name(), code, function.isThere());
  }
  // Throws TransportError: the function, the code's name, the producer's own text. To be called by the thread that got
  // the code, before it calls anything else of the producer.
  [[noreturn]] void fail(const char* function, GC_ERROR code, bool isThere = true) const;
  // The producer breaks the rules of the interface. Throws TransportError.
  [[noreturn]] void failAnswer(const char* function, const std::string& fault) const;

 private:
  std::string lastErrorText() const;

  std::string file_;
  std::string name_;
  std::atomic<bool> ours_ = false;  // initialised by this object
};

}  // namespace ox::camera::gentl
