/* Node maps: loading descriptions, finding nodes, connecting ports, events and chunks, settings, streams, files.
 *
 * The conventions of OxGenApi.h hold: every function that takes a NODEMAP can also report INVALID_HANDLE "Invalid
 * NODEMAP handle", and every function OUT_OF_MEMORY and UNSPECIFIED "Unspecified error". "Description" is the text of
 * the GenApi failure; "nothing loaded" is INVALID_STATE "No NodeMap object available". Any thread may call. */
#ifndef OXGENAPI_NODEMAP_H
#define OXGENAPI_NODEMAP_H

#include "OxGenApi/Types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Creating and loading ----------------------------------------------------------------------------------------*/

/* Creates an empty node map. NodeMap receives a handle with one reference owned by the caller, zero on failure.
 * Errors: RUNTIME with the reason; OUT_OF_MEMORY for any other failure. */
OXGENAPI_EXPORT uint32_t CreateNodeMap(OX_OUT(NODEMAP) NodeMap);

/* Creates a second handle that stands for InternalNodeMap (which may be a proxy itself): all calls are carried out
 * there. The proxy keeps that node map alive. When its last reference goes, ReleaseNotify (may be null) is called with
 * pUserData on that thread, while the internal node map can still be used; it must not throw. It is not called when the
 * proxy could not be created.
 *   ProxyNodeMap  out: the handle, one reference owned by the caller; zero on failure
 * Errors: OUT_OF_MEMORY for every failure to create. */
OXGENAPI_EXPORT uint32_t CreateNodeMapProxy(NODEMAP InternalNodeMap, TReleaseNotify ReleaseNotify, void* pUserData,
                                            NODEMAP* ProxyNodeMap);

/* Whether a handle is a live node map or proxy. Sets no error. */
OXGENAPI_EXPORT bool IsNodeMap(NODEMAP Object);

/* Loads a description from a file, plain or zipped, in place of what was loaded before; ports are connected anew
 * afterwards. Nodes of the earlier description stay valid handles without a port. A failed load changes nothing. No
 * other thread may use the node map meanwhile.
 * Errors: RUNTIME with the description, which names file, line, node and element. */
OXGENAPI_EXPORT uint32_t NMLoadXMLFile(NODEMAP NodeMap, const char* FileName);
OXGENAPI_EXPORT uint32_t NMLoadXMLFileW(NODEMAP NodeMap, const wchar_t* FileName);

/* The same from a zero-terminated description text. Errors as for NMLoadXMLFile. */
OXGENAPI_EXPORT uint32_t NMLoadXMLString(NODEMAP NodeMap, const char* XMLData);
OXGENAPI_EXPORT uint32_t NMLoadXMLStringW(NODEMAP NodeMap, const wchar_t* XMLData);

/* Kept for old callers: these always fail with NOT_SUPPORTED "Unspecified error" and look at no argument. */
OXGENAPI_EXPORT uint32_t NMLoadXML(NODEMAP NodeMap, ...);
OXGENAPI_EXPORT uint32_t NMConnectRegisterPort(NODEMAP NodeMap, ...);
OXGENAPI_EXPORT uint32_t NMConnectMultiRegisterPort(NODEMAP NodeMap, ...);

/* ---- Nodes and information ---------------------------------------------------------------------------------------*/

/* How many nodes the description has, enumeration entries included. Errors: nothing loaded. */
OXGENAPI_EXPORT uint32_t NMNodeCount(NODEMAP NodeMap, OX_OUT(uint32_t) NodeCount);

/* Finds a node by name. While a handle of it is held, further calls hand out the same object.
 *   Node  out: a handle with one reference owned by the caller; zero on failure
 * Errors: nothing loaded; NOT_PRESENT "Node 'Name' not present in NodeMap"; FEATURE_TYPE "Feature 'Name' is not a value
 *         or port type"; RUNTIME with the description. */
OXGENAPI_EXPORT uint32_t NMGetNode(NODEMAP NodeMap, const char* NodeName, OX_OUT(NODE) Node);
OXGENAPI_EXPORT uint32_t NMGetNodeW(NODEMAP NodeMap, const wchar_t* NodeName, OX_OUT(NODE) Node);

/* The name of the node at an index, in description order, below NMNodeCount.
 *   NodeName, NodeNameSize  text buffer (may be null) and its in/out size in elements
 * Errors: nothing loaded; INVALID_ARGUMENT "Index out of range: 0 <= 7 < 5". */
OXGENAPI_EXPORT uint32_t NMListNode(NODEMAP NodeMap, uint32_t Index, char* NodeName, OX_OUT(size_t) NodeNameSize);
OXGENAPI_EXPORT uint32_t NMListNodeW(NODEMAP NodeMap, uint32_t Index, wchar_t* NodeName, OX_OUT(size_t) NodeNameSize);

/* What the description says about the device. The text form answers every command (numbers in decimal), integer and
 * float form only the version numbers; no command has a boolean form.
 *   Info, InfoSize  text buffer (may be null) and its in/out size in elements
 * Errors: nothing loaded; NOT_SUPPORTED "Unknown info command" for a command that the form does not answer;
 *         NOT_SUPPORTED "No NodeMap information available". */
OXGENAPI_EXPORT uint32_t NMInfoAsBoolean(NODEMAP NodeMap, TNodeMapInfo Cmd, bool* Info);
OXGENAPI_EXPORT uint32_t NMInfoAsInteger(NODEMAP NodeMap, TNodeMapInfo Cmd, int64_t* Info);
OXGENAPI_EXPORT uint32_t NMInfoAsFloat(NODEMAP NodeMap, TNodeMapInfo Cmd, double* Info);
OXGENAPI_EXPORT uint32_t NMInfoAsString(NODEMAP NodeMap, TNodeMapInfo Cmd, char* Info, OX_OUT(size_t) InfoSize);
OXGENAPI_EXPORT uint32_t NMInfoAsStringW(NODEMAP NodeMap, TNodeMapInfo Cmd, wchar_t* Info, OX_OUT(size_t) InfoSize);

/* Advances the clocks of polled nodes by DeltaMS milliseconds, the time since the last call, and invalidates the nodes
 * that are due; their update callbacks run inside this call.
 * Errors: nothing loaded; UNSPECIFIED with the description (a negative time among others), or "Unknown error while
 *         polling nodes". */
OXGENAPI_EXPORT uint32_t NMPollNodes(NODEMAP NodeMap, int32_t DeltaMS);

/* ---- Ports -------------------------------------------------------------------------------------------------------*/

/* Connects register access to a port node of the loaded description; NMConnectPort uses the name "Device". A port
 * connected before under that name is replaced. The callbacks stay in use until then, until the next load or until the
 * node map ends; each may be null:
 *   ReadMem, WriteMem  access to the device's memory; without one such access fails as not supported
 *   AccessMode         the access at the moment; without one it follows from which of the other two exist. Features
 *                      keep what it told: after a change invalidate the port node (NInvalidate)
 *   pUserData          given to each callback
 * Errors: INVALID_STATE "No NodeMap available to connect to"; NOT_PRESENT "Node 'Name' not present in NodeMap", or
 *         "Node 'Name' is not a port" (what was connected before stays); NOT_WRITABLE, INVALID_ARGUMENT or RUNTIME with
 *         the description. */
OXGENAPI_EXPORT uint32_t NMConnectPort(NODEMAP NodeMap, TReadMem ReadMem, TWriteMem WriteMem,
                                       TPortAccessMode AccessMode, void* pUserData);
OXGENAPI_EXPORT uint32_t NMConnectPortEx(NODEMAP NodeMap, TReadMem ReadMem, TWriteMem WriteMem,
                                         TPortAccessMode AccessMode, void* pUserData, const char* PortName);
OXGENAPI_EXPORT uint32_t NMConnectPortExW(NODEMAP NodeMap, TReadMem ReadMem, TWriteMem WriteMem,
                                          TPortAccessMode AccessMode, void* pUserData, const wchar_t* PortName);

/* ---- Events and chunks -------------------------------------------------------------------------------------------*/

/* Delivers an event message: every node with that event ID takes the payload, is invalidated and calls its callbacks,
 * inside this call. An ID that no node has is no error. Payloads are passed on with the low 32 bits of their size.
 * Errors, in this order: INVALID_ARGUMENT "Event data buffer invalid" for a null or empty payload; nothing loaded;
 *         UNSPECIFIED with the description, for instance for an ID that is not hexadecimal. */
OXGENAPI_EXPORT uint32_t NMDeliverEvent(NODEMAP NodeMap, const TEventData* pData);
OXGENAPI_EXPORT uint32_t NMDeliverEventEx(NODEMAP NodeMap, const TEventDataEx* pData);
OXGENAPI_EXPORT uint32_t NMDeliverEventExW(NODEMAP NodeMap, const TEventDataExW* pData);

/* Attaches one chunk of an image buffer to every chunk port with that ID. Chunk features show the new data at their
 * next read; update callbacks wait for NMUpdateChunks. An ID that no port has, or that is not hexadecimal, is no error.
 * Errors, in this order: INVALID_ARGUMENT "Chunk data buffer invalid" for length 0, a negative offset or a null base;
 *         nothing loaded; UNSPECIFIED with the description when the chunk is refused; UNSPECIFIED "Unspecified error"
 *         for a null ID where the description has chunk ports. */
OXGENAPI_EXPORT uint32_t NMAttachChunk(NODEMAP NodeMap, const TChunkData* pData);
OXGENAPI_EXPORT uint32_t NMAttachChunkEx(NODEMAP NodeMap, const TChunkDataEx* pData);
OXGENAPI_EXPORT uint32_t NMAttachChunkExW(NODEMAP NodeMap, const TChunkDataExW* pData);

/* Attaches Length chunks one after the other, then does NMUpdateChunks with a null base. The first failure ends the
 * list; what was attached before stays attached. Length 0 does nothing.
 * Errors: INVALID_ARGUMENT "Invalid DataList" for a null list with a length (checked before the handle); those of
 *         NMAttachChunk and NMUpdateChunks. */
OXGENAPI_EXPORT uint32_t NMAttachChunkList(NODEMAP NodeMap, const TChunkData* DataList, size_t Length);
OXGENAPI_EXPORT uint32_t NMAttachChunkListEx(NODEMAP NodeMap, const TChunkDataEx* DataList, size_t Length);
OXGENAPI_EXPORT uint32_t NMAttachChunkListExW(NODEMAP NodeMap, const TChunkDataExW* DataList, size_t Length);

/* Moves every attached chunk to the buffer pBase, offsets and lengths unchanged; with null, chunk features only forget
 * what they have read.
 * Errors: nothing loaded; UNSPECIFIED with the description. */
OXGENAPI_EXPORT uint32_t NMUpdateChunks(NODEMAP NodeMap, void* pBase);

/* Detaches every chunk. Errors: nothing loaded; UNSPECIFIED with the description. */
OXGENAPI_EXPORT uint32_t NMDetachAllChunks(NODEMAP NodeMap);

/* ---- Settings ----------------------------------------------------------------------------------------------------
 * Feature values as lines of text: Gain[GainSelector(All)] = "1.5". Callback (may be null) is called with pPrivate for
 * each problem and decides whether to go on; without it the operation goes on. Problems that were passed over do not
 * change the result. A call works to its end on the description that was loaded when it began.
 * Errors of all: INVALID_STATE "No nodemap loaded" (saving: "No nodemap loaded."); the code and text of the problem at
 * which Callback said stop. */

/* Applies the lines of a file in their order. Validate: read each value back and compare it with the line.
 * NMLoadSet(W) does not validate.
 * Errors: RUNTIME "Filename not readable". */
OXGENAPI_EXPORT uint32_t NMLoadSet(NODEMAP NodeMap, const char* Filename, TSettingsCallback Callback, void* pPrivate);
OXGENAPI_EXPORT uint32_t NMLoadSetW(NODEMAP NodeMap, const wchar_t* Filename, TSettingsCallback Callback,
                                    void* pPrivate);
OXGENAPI_EXPORT uint32_t NMLoadSetEx(NODEMAP NodeMap, const char* Filename, bool Validate, TSettingsCallback Callback,
                                     void* pPrivate);
OXGENAPI_EXPORT uint32_t NMLoadSetExW(NODEMAP NodeMap, const wchar_t* Filename, bool Validate,
                                      TSettingsCallback Callback, void* pPrivate);

/* Applies the lines of a text. Errors: RUNTIME "String not readable". */
OXGENAPI_EXPORT uint32_t NMLoadSetString(NODEMAP NodeMap, const char* Settings, bool Validate,
                                         TSettingsCallback Callback, void* pPrivate);
OXGENAPI_EXPORT uint32_t NMLoadSetStringW(NODEMAP NodeMap, const wchar_t* Settings, bool Validate,
                                          TSettingsCallback Callback, void* pPrivate);

/* Saves all streamable features, or those named in FeatureNames (separated by "|", in that order), to a file. The file
 * is created or emptied before anything else: a save that fails loses what it held. Selectors are set to each of their
 * values and stay at the last one. A feature with more than 262,144 combinations of selector values is a problem
 * (INVALIDATE_FAILED "Name: 4294967296 selector combinations, more than 262144") and is passed over.
 * Errors: INVALID_ARGUMENT "No feature names" (no file is made); RUNTIME "Filename not readable" when the file cannot
 *         be opened; RUNTIME "Filename not writable" when it does not take every byte (a full disk). */
OXGENAPI_EXPORT uint32_t NMSaveSet(NODEMAP NodeMap, const char* Filename, TSettingsCallback Callback, void* pPrivate);
OXGENAPI_EXPORT uint32_t NMSaveSetW(NODEMAP NodeMap, const wchar_t* Filename, TSettingsCallback Callback,
                                    void* pPrivate);
OXGENAPI_EXPORT uint32_t NMSaveSetEx(NODEMAP NodeMap, const char* Filename, const char* FeatureNames,
                                     TSettingsCallback Callback, void* pPrivate);
OXGENAPI_EXPORT uint32_t NMSaveSetExW(NODEMAP NodeMap, const wchar_t* Filename, const wchar_t* FeatureNames,
                                      TSettingsCallback Callback, void* pPrivate);

/* The same into a buffer. Settings null: SettingsSize receives the size needed, zero included. Otherwise SettingsSize
 * receives the smaller of itself and that size, and as many elements of the text are copied as fit; no zero is written
 * after them, so hand in a buffer filled with zeros. Saving moves selectors, so the text may be longer the second time:
 * hand in more than the first call said, and repeat with still more when SettingsSize comes back unchanged, because the
 * text may have been cut then. The wide forms widen byte by byte, without decoding UTF-8.
 * Errors: INVALID_ARGUMENT "No feature names", or "Invalid buffer" for a null SettingsSize. */
OXGENAPI_EXPORT uint32_t NMSaveSetString(NODEMAP NodeMap, char* Settings, size_t* SettingsSize,
                                         TSettingsCallback Callback, void* pPrivate);
OXGENAPI_EXPORT uint32_t NMSaveSetStringW(NODEMAP NodeMap, wchar_t* Settings, size_t* SettingsSize,
                                          TSettingsCallback Callback, void* pPrivate);
OXGENAPI_EXPORT uint32_t NMSaveSetStringEx(NODEMAP NodeMap, char* Settings, size_t* SettingsSize,
                                           const char* FeatureNames, TSettingsCallback Callback, void* pPrivate);
OXGENAPI_EXPORT uint32_t NMSaveSetStringExW(NODEMAP NodeMap, wchar_t* Settings, size_t* SettingsSize,
                                            const wchar_t* FeatureNames, TSettingsCallback Callback, void* pPrivate);

/* ---- Stream ------------------------------------------------------------------------------------------------------*/

/* Creates an empty document of node snapshots for a node map, which it keeps alive.
 *   Stream  out: a handle with one reference owned by the caller; zero on failure
 * Errors: INVALID_HANDLE "Invalid TStreamType handle" for a type other than ST_Json. */
OXGENAPI_EXPORT uint32_t NMCreateStream(NODEMAP NodeMap, TStreamType StreamType, NODEMAPSTREAM* Stream);

/* Appends a node as it is now: "Name", "Display Name", "Type" and "Value", all texts. The value of categories and
 * commands, and one that cannot be read, is empty. Devices may hold texts that are not UTF-8, which JSON cannot carry:
 * each malformed sequence in them becomes one U+FFFD, so a push or a dump never fails for them. The node may belong to
 * another node map. Pushes and dumps may come from several threads; a slow device holds up no dump.
 * Errors: INVALID_HANDLE "Invalid NODEMAPSTREAM handle", then "Invalid NODE handle"; UNSPECIFIED "not a valid node
 * type" for entries, ports, registers and plain nodes. */
OXGENAPI_EXPORT uint32_t NMStreamPush(NODEMAPSTREAM NodeMapStream, NODE Node);

/* The document as compact JSON text; it stays and may grow further. A buffer that is too short gets the beginning of
 * the text, as everywhere: a cut document is no JSON, so ask for the size while nobody pushes.
 *   Settings, SettingsSize  text buffer (may be null) and its in/out size in elements
 * Errors: INVALID_HANDLE "Invalid NODEMAPSTREAM handle"; INVALID_ARGUMENT "invalid buffer size to read string through
 *         c-interface" for a size that cannot be used: none given (null), or a buffer with size 0 or with more elements
 *         than any object can have (half the address space and above). */
OXGENAPI_EXPORT uint32_t NMStreamDump(NODEMAPSTREAM NodeMapStream, char* Settings, size_t* SettingsSize);
OXGENAPI_EXPORT uint32_t NMStreamDumpW(NODEMAPSTREAM NodeMapStream, wchar_t* Settings, size_t* SettingsSize);

/* ---- Device files ------------------------------------------------------------------------------------------------
 * FileSelectorEntryName is the device file's name, an entry of the feature FileSelector. A transfer uses the device's
 * file features for its whole length; keep other threads off them.
 * Errors of all: INVALID_STATE "Invalid nodemap state" when nothing is loaded. */

/* Copies a host file, or BufferSize bytes of memory, to a device file, which is replaced: the device empties it first.
 * Where the device's FileAccessLength has an increment, zeros fill the last block up to it.
 * Errors: RUNTIME "Filename not readable", or the reason when the host file fails later; INVALID_ARGUMENT "Buffer must
 *         not be empty" (checked before the handle); UPLOAD_FAILED with the reason: the device file is then as the
 *         device left it; UPLOAD_FAILED "INTEGRAL_CAST failed", before the device is touched, for a BufferSize of 2^63
 *         and above. */
OXGENAPI_EXPORT uint32_t NMUploadFile(NODEMAP NodeMap, const char* FileSelectorEntryName, const char* Filename);
OXGENAPI_EXPORT uint32_t NMUploadFileW(NODEMAP NodeMap, const wchar_t* FileSelectorEntryName, const wchar_t* Filename);
OXGENAPI_EXPORT uint32_t NMUploadFileMemory(NODEMAP NodeMap, const char* FileSelectorEntryName, const void* pBuffer,
                                            size_t BufferSize);
OXGENAPI_EXPORT uint32_t NMUploadFileMemoryW(NODEMAP NodeMap, const wchar_t* FileSelectorEntryName, const void* pBuffer,
                                             size_t BufferSize);

/* Copies a device file to a host file. The host file is created or emptied before the device is asked: a download that
 * fails loses what it held.
 * Errors: RUNTIME "Filename not writable", or the reason when the host file fails later; DEVICE_FILE when the device
 *         file cannot be opened (the last error is left alone); ACCESS_DENIED with the reason, also when the device
 *         stops below the FileSize that it tells: the host file is then cut short. */
OXGENAPI_EXPORT uint32_t NMDownloadFile(NODEMAP NodeMap, const char* FileSelectorEntryName, const char* Filename);
OXGENAPI_EXPORT uint32_t NMDownloadFileW(NODEMAP NodeMap, const wchar_t* FileSelectorEntryName,
                                         const wchar_t* Filename);

/* Copies a device file to memory, at most BufferSize bytes; a longer file is cut without an error.
 *   pBuffer     null: BufferSize receives the file's size as the device tells it; the file stays selected
 *   BufferSize  in: bytes of room; out: bytes read
 * Errors: INVALID_ARGUMENT "Buffer must not be empty" for a buffer of size 0 (checked before the handle); DEVICE_FILE
 *         as above; ACCESS_DENIED with the reason as above; asking the size: NOT_PRESENT "FileSelector not present",
 *         NOT_WRITABLE "FileSelector not writable", UNSPECIFIED when FileSize is not readable (last error kept). */
OXGENAPI_EXPORT uint32_t NMDownloadFileMemory(NODEMAP NodeMap, const char* FileSelectorEntryName, void* pBuffer,
                                              size_t* BufferSize);
OXGENAPI_EXPORT uint32_t NMDownloadFileMemoryW(NODEMAP NodeMap, const wchar_t* FileSelectorEntryName, void* pBuffer,
                                               size_t* BufferSize);

#ifdef __cplusplus
}
#endif

#endif
