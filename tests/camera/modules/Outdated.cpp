// A module that was built for another version.
extern "C" __attribute__((visibility("default"))) void* oxCameraTransport(int) { return nullptr; }
