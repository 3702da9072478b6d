// A device of plain bytes for the peer, as CallCamera's is for us.
#pragma once
#include <arv.h>

#include <cstring>

struct PeerDevice {
  ArvDevice parent;
  uint8_t bytes[256];
};

inline gboolean readPeer(ArvDevice* device, guint64 address, guint32 size, void* buffer, GError**) {
  std::memcpy(buffer, reinterpret_cast<PeerDevice*>(device)->bytes + address, size);
  return TRUE;
}

inline gboolean writePeer(ArvDevice* device, guint64 address, guint32 size, void* buffer, GError**) {
  std::memcpy(reinterpret_cast<PeerDevice*>(device)->bytes + address, buffer, size);
  return TRUE;
}

inline ArvDevice* createPeerDevice() {
  static const GType type = g_type_register_static_simple(
      ARV_TYPE_DEVICE, "OxBenchDevice", sizeof(ArvDeviceClass),
      [](gpointer typeClass, gpointer) {
        auto* const operations = static_cast<ArvDeviceClass*>(typeClass);
        operations->read_memory = readPeer;
        operations->write_memory = writePeer;
      },
      sizeof(PeerDevice), nullptr, GTypeFlags{});
  return ARV_DEVICE(g_object_new(type, nullptr));
}
