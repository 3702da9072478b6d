// Stands between libOxGenApi.so and the libraries below it, and counts what it calls there on this thread.
#pragma once
#include "calls/Caller.h"

namespace interposed {

calls::Reports reports();
// What sending a record throws from now on, on this thread.
void throwWhenSending(bool throws);

}  // namespace interposed
