// A module that ends the process that loads it.
#include <cstdlib>

namespace {
__attribute__((constructor)) void crash() { std::abort(); }
}  // namespace
