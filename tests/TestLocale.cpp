// Lets a whole suite run under the locale that OX_TEST_LOCALE names: nothing may depend on it.
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <locale>

namespace {

[[maybe_unused]] const bool isSet = [] {
  const char* const name = std::getenv("OX_TEST_LOCALE");
  if (name == nullptr) return false;
  if (std::setlocale(LC_ALL, name) == nullptr) {
    std::fprintf(stderr, "there is no locale %s\n", name);
    std::abort();
  }
  std::locale::global(std::locale(name));
  return true;
}();

}  // namespace
