/* The C interface of GenTL 1.6 between a program (consumer) and a camera's driver (producer, a library *.cti). Sizes
 * are in and out: a null buffer asks for the size; texts count their ending zero. Times are milliseconds.
 *
 * A producer defines GENTL_FUNCTION so that the declarations are its exports; a consumer uses only the types, for
 * example decltype(&GCInitLib), and looks the functions up by name. */
#ifndef GENTL_H
#define GENTL_H

#include "GenTLTypes.h"

#ifndef GENTL_FUNCTION
#define GENTL_FUNCTION GC_ERROR
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Library, ports, events. */
GENTL_FUNCTION GCGetInfo(TL_INFO_CMD infoCmd, INFO_DATATYPE* type, void* buffer, size_t* size);
GENTL_FUNCTION GCGetLastError(GC_ERROR* errorCode, char* errText, size_t* size);
GENTL_FUNCTION GCInitLib(void);
GENTL_FUNCTION GCCloseLib(void);
GENTL_FUNCTION GCReadPort(PORT_HANDLE port, uint64_t address, void* buffer, size_t* size);
GENTL_FUNCTION GCWritePort(PORT_HANDLE port, uint64_t address, const void* buffer, size_t* size);
GENTL_FUNCTION GCGetPortURL(PORT_HANDLE port, char* url, size_t* size);
GENTL_FUNCTION GCGetPortInfo(PORT_HANDLE port, PORT_INFO_CMD infoCmd, INFO_DATATYPE* type, void* buffer, size_t* size);
GENTL_FUNCTION GCRegisterEvent(EVENTSRC_HANDLE eventSrc, EVENT_TYPE eventID, EVENT_HANDLE* event);
GENTL_FUNCTION GCUnregisterEvent(EVENTSRC_HANDLE eventSrc, EVENT_TYPE eventID);
GENTL_FUNCTION GCGetNumPortURLs(PORT_HANDLE port, uint32_t* numURLs);
GENTL_FUNCTION GCGetPortURLInfo(PORT_HANDLE port, uint32_t index, URL_INFO_CMD infoCmd, INFO_DATATYPE* type,
                                void* buffer, size_t* size);
GENTL_FUNCTION GCReadPortStacked(PORT_HANDLE port, PORT_REGISTER_STACK_ENTRY* entries, size_t* numEntries);
GENTL_FUNCTION GCWritePortStacked(PORT_HANDLE port, PORT_REGISTER_STACK_ENTRY* entries, size_t* numEntries);

/* Event data. */
GENTL_FUNCTION EventGetData(EVENT_HANDLE event, void* buffer, size_t* size, uint64_t timeout);
GENTL_FUNCTION EventGetDataInfo(EVENT_HANDLE event, const void* inBuffer, size_t inSize, EVENT_DATA_INFO_CMD infoCmd,
                                INFO_DATATYPE* type, void* outBuffer, size_t* outSize);
GENTL_FUNCTION EventGetInfo(EVENT_HANDLE event, EVENT_INFO_CMD infoCmd, INFO_DATATYPE* type, void* buffer,
                            size_t* size);
GENTL_FUNCTION EventFlush(EVENT_HANDLE event);
GENTL_FUNCTION EventKill(EVENT_HANDLE event);

/* System. */
GENTL_FUNCTION TLOpen(TL_HANDLE* system);
GENTL_FUNCTION TLClose(TL_HANDLE system);
GENTL_FUNCTION TLGetInfo(TL_HANDLE system, TL_INFO_CMD infoCmd, INFO_DATATYPE* type, void* buffer, size_t* size);
GENTL_FUNCTION TLGetNumInterfaces(TL_HANDLE system, uint32_t* numIfaces);
GENTL_FUNCTION TLGetInterfaceID(TL_HANDLE system, uint32_t index, char* id, size_t* size);
GENTL_FUNCTION TLGetInterfaceInfo(TL_HANDLE system, const char* ifaceID, INTERFACE_INFO_CMD infoCmd,
                                  INFO_DATATYPE* type, void* buffer, size_t* size);
GENTL_FUNCTION TLOpenInterface(TL_HANDLE system, const char* ifaceID, IF_HANDLE* iface);
GENTL_FUNCTION TLUpdateInterfaceList(TL_HANDLE system, bool8_t* changed, uint64_t timeout);

/* Interface. */
GENTL_FUNCTION IFClose(IF_HANDLE iface);
GENTL_FUNCTION IFGetInfo(IF_HANDLE iface, INTERFACE_INFO_CMD infoCmd, INFO_DATATYPE* type, void* buffer, size_t* size);
GENTL_FUNCTION IFGetNumDevices(IF_HANDLE iface, uint32_t* numDevices);
GENTL_FUNCTION IFGetDeviceID(IF_HANDLE iface, uint32_t index, char* deviceID, size_t* size);
GENTL_FUNCTION IFUpdateDeviceList(IF_HANDLE iface, bool8_t* changed, uint64_t timeout);
GENTL_FUNCTION IFGetDeviceInfo(IF_HANDLE iface, const char* deviceID, DEVICE_INFO_CMD infoCmd, INFO_DATATYPE* type,
                               void* buffer, size_t* size);
GENTL_FUNCTION IFOpenDevice(IF_HANDLE iface, const char* deviceID, DEVICE_ACCESS_FLAGS openFlag, DEV_HANDLE* device);
GENTL_FUNCTION IFGetParentTL(IF_HANDLE iface, TL_HANDLE* system);

/* Device. */
GENTL_FUNCTION DevGetPort(DEV_HANDLE device, PORT_HANDLE* remoteDevice);
GENTL_FUNCTION DevGetNumDataStreams(DEV_HANDLE device, uint32_t* numDataStreams);
GENTL_FUNCTION DevGetDataStreamID(DEV_HANDLE device, uint32_t index, char* dataStreamID, size_t* size);
GENTL_FUNCTION DevOpenDataStream(DEV_HANDLE device, const char* dataStreamID, DS_HANDLE* dataStream);
GENTL_FUNCTION DevGetInfo(DEV_HANDLE device, DEVICE_INFO_CMD infoCmd, INFO_DATATYPE* type, void* buffer, size_t* size);
GENTL_FUNCTION DevClose(DEV_HANDLE device);
GENTL_FUNCTION DevGetParentIF(DEV_HANDLE device, IF_HANDLE* iface);

/* Data stream. */
GENTL_FUNCTION DSAnnounceBuffer(DS_HANDLE dataStream, void* buffer, size_t size, void* userPointer,
                                BUFFER_HANDLE* bufferHandle);
GENTL_FUNCTION DSAllocAndAnnounceBuffer(DS_HANDLE dataStream, size_t size, void* userPointer,
                                        BUFFER_HANDLE* bufferHandle);
GENTL_FUNCTION DSFlushQueue(DS_HANDLE dataStream, ACQ_QUEUE_TYPE operation);
GENTL_FUNCTION DSStartAcquisition(DS_HANDLE dataStream, ACQ_START_FLAGS startFlags, uint64_t numToAcquire);
GENTL_FUNCTION DSStopAcquisition(DS_HANDLE dataStream, ACQ_STOP_FLAGS stopFlags);
GENTL_FUNCTION DSGetInfo(DS_HANDLE dataStream, STREAM_INFO_CMD infoCmd, INFO_DATATYPE* type, void* buffer,
                         size_t* size);
GENTL_FUNCTION DSGetBufferID(DS_HANDLE dataStream, uint32_t index, BUFFER_HANDLE* bufferHandle);
GENTL_FUNCTION DSClose(DS_HANDLE dataStream);
GENTL_FUNCTION DSRevokeBuffer(DS_HANDLE dataStream, BUFFER_HANDLE bufferHandle, void** buffer, void** userPointer);
GENTL_FUNCTION DSQueueBuffer(DS_HANDLE dataStream, BUFFER_HANDLE bufferHandle);
GENTL_FUNCTION DSGetBufferInfo(DS_HANDLE dataStream, BUFFER_HANDLE bufferHandle, BUFFER_INFO_CMD infoCmd,
                               INFO_DATATYPE* type, void* buffer, size_t* size);
GENTL_FUNCTION DSGetBufferChunkData(DS_HANDLE dataStream, BUFFER_HANDLE bufferHandle, SINGLE_CHUNK_DATA* chunkData,
                                    size_t* numChunks);
GENTL_FUNCTION DSGetParentDev(DS_HANDLE dataStream, DEV_HANDLE* device);
GENTL_FUNCTION DSGetNumBufferParts(DS_HANDLE dataStream, BUFFER_HANDLE bufferHandle, uint32_t* numParts);
GENTL_FUNCTION DSGetBufferPartInfo(DS_HANDLE dataStream, BUFFER_HANDLE bufferHandle, uint32_t partIndex,
                                   BUFFER_PART_INFO_CMD infoCmd, INFO_DATATYPE* type, void* buffer, size_t* size);
GENTL_FUNCTION DSAnnounceCompositeBuffer(DS_HANDLE dataStream, size_t numSegments, void** segments, size_t* sizes,
                                         void* userPointer, BUFFER_HANDLE* bufferHandle);
GENTL_FUNCTION DSGetBufferInfoStacked(DS_HANDLE dataStream, BUFFER_HANDLE bufferHandle,
                                      DS_BUFFER_INFO_STACKED* infoStacked, size_t numInfos);
GENTL_FUNCTION DSGetBufferPartInfoStacked(DS_HANDLE dataStream, BUFFER_HANDLE bufferHandle,
                                          DS_BUFFER_PART_INFO_STACKED* infoStacked, size_t numInfos);
GENTL_FUNCTION DSGetNumFlows(DS_HANDLE dataStream, uint32_t* numFlows);
GENTL_FUNCTION DSGetFlowInfo(DS_HANDLE dataStream, uint32_t flowIndex, FLOW_INFO_CMD infoCmd, INFO_DATATYPE* type,
                             void* buffer, size_t* size);
GENTL_FUNCTION DSGetNumBufferSegments(DS_HANDLE dataStream, BUFFER_HANDLE bufferHandle, uint32_t* numSegments);
GENTL_FUNCTION DSGetBufferSegmentInfo(DS_HANDLE dataStream, BUFFER_HANDLE bufferHandle, uint32_t segmentIndex,
                                      SEGMENT_INFO_CMD infoCmd, INFO_DATATYPE* type, void* buffer, size_t* size);
/* Calls F with the name of every function. */
/* clang-format off */
#define GENTL_FUNCTIONS(F)                                                                                             \
  F(GCGetInfo) F(GCGetLastError) F(GCInitLib) F(GCCloseLib) F(GCReadPort) F(GCWritePort) F(GCGetPortURL)               \
  F(GCGetPortInfo) F(GCRegisterEvent) F(GCUnregisterEvent) F(GCGetNumPortURLs) F(GCGetPortURLInfo)                     \
  F(GCReadPortStacked) F(GCWritePortStacked) F(EventGetData) F(EventGetDataInfo) F(EventGetInfo) F(EventFlush)         \
  F(EventKill) F(TLOpen) F(TLClose) F(TLGetInfo) F(TLGetNumInterfaces) F(TLGetInterfaceID) F(TLGetInterfaceInfo)       \
  F(TLOpenInterface) F(TLUpdateInterfaceList) F(IFClose) F(IFGetInfo) F(IFGetNumDevices) F(IFGetDeviceID)              \
  F(IFUpdateDeviceList) F(IFGetDeviceInfo) F(IFOpenDevice) F(IFGetParentTL) F(DevGetPort) F(DevGetNumDataStreams)      \
  F(DevGetDataStreamID) F(DevOpenDataStream) F(DevGetInfo) F(DevClose) F(DevGetParentIF) F(DSAnnounceBuffer)           \
  F(DSAllocAndAnnounceBuffer) F(DSFlushQueue) F(DSStartAcquisition) F(DSStopAcquisition) F(DSGetInfo)                  \
  F(DSGetBufferID) F(DSClose) F(DSRevokeBuffer) F(DSQueueBuffer) F(DSGetBufferInfo) F(DSGetBufferChunkData)            \
  F(DSGetParentDev) F(DSGetNumBufferParts) F(DSGetBufferPartInfo) F(DSAnnounceCompositeBuffer)                         \
  F(DSGetBufferInfoStacked) F(DSGetBufferPartInfoStacked) F(DSGetNumFlows) F(DSGetFlowInfo)                            \
  F(DSGetNumBufferSegments) F(DSGetBufferSegmentInfo)
/* clang-format on */

#ifdef __cplusplus
}
#endif

#endif
