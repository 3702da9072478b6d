// --check-cache: prints every answer from memory that the device does not confirm.
#pragma once

namespace tool {

// To be called before a description is loaded.
void checkCache();

}  // namespace tool
