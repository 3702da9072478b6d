// The functions of a producer that we use.
#pragma once

#include "Function.h"

namespace ox::camera::gentl {

// clang-format off
#define OX_GENTL_REQUIRED(F)                                                                                       \
  F(GCInitLib) F(GCCloseLib) F(GCReadPort) F(GCWritePort)                                                          \
  F(TLOpen) F(TLClose) F(TLUpdateInterfaceList) F(TLGetNumInterfaces) F(TLGetInterfaceID) F(TLOpenInterface)       \
  F(IFClose) F(IFUpdateDeviceList) F(IFGetNumDevices) F(IFGetDeviceID) F(IFOpenDevice) F(DevGetPort) F(DevClose)
#define OX_GENTL_OPTIONAL(F)                                                                                       \
  F(GCGetLastError) F(GCGetInfo) F(GCGetPortInfo) F(GCGetPortURL) F(GCGetNumPortURLs) F(GCGetPortURLInfo)          \
  F(GCRegisterEvent) F(GCUnregisterEvent) F(EventGetData) F(EventGetDataInfo) F(EventGetInfo) F(EventFlush)        \
  F(EventKill) F(TLGetInfo) F(TLGetInterfaceInfo) F(IFGetDeviceInfo) F(DevGetInfo) F(DevGetNumDataStreams)         \
  F(DevGetDataStreamID) F(DevOpenDataStream) F(DSAnnounceBuffer) F(DSFlushQueue) F(DSStartAcquisition)             \
  F(DSStopAcquisition) F(DSGetInfo) F(DSClose) F(DSRevokeBuffer) F(DSQueueBuffer) F(DSGetBufferInfo)               \
  F(DSGetBufferChunkData) F(DSGetNumBufferParts) F(DSGetBufferPartInfo)
// clang-format on

struct Functions {
#define OX_GENTL_MEMBER(name) Function<decltype(&::name)> name{#name};
  OX_GENTL_REQUIRED(OX_GENTL_MEMBER)
  OX_GENTL_OPTIONAL(OX_GENTL_MEMBER)
#undef OX_GENTL_MEMBER
};

}  // namespace ox::camera::gentl
