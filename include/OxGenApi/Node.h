/* Nodes: the features of a loaded node map. Handles come from NMGetNode.
 *
 * The conventions of OxGenApi.h hold: every function below can also report INVALID_HANDLE "Invalid NODE handle",
 * OUT_OF_MEMORY and UNSPECIFIED "Unspecified error". "Description" is the text of the GenApi failure. Any thread may
 * call; calls on nodes of one node map wait for one another.
 *
 * After its node map was loaded anew a node still answers for the description it came from, but finds no port: whatever
 * needs the device fails as not readable or not writable. */
#ifndef OXGENAPI_NODE_H
#define OXGENAPI_NODE_H

#include "OxGenApi/Types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Whether a handle is a live node. Sets no error. */
OXGENAPI_EXPORT bool IsNode(NODE Object);

/* The kind of a node; fixed for its life. An invalid handle also stores NT_Invalid. */
OXGENAPI_EXPORT uint32_t NType(NODE Node, TNodeType* Type);

/* ---- Values ------------------------------------------------------------------------------------------------------
 * Every value call converts between the kinds that allow it. Reads are verified against the node's limits in the
 * verify modes read and read/write, writes in write and read/write (NSetVerifyMode).
 * Errors of all reads:  NOT_READABLE with the description; UNSPECIFIED with the description for any other failure
 *                       below (the port, a formula, a value outside its limits).
 * Errors of all writes: NOT_WRITABLE with the description; INVALID_ARGUMENT with the description for a value that is
 *                       out of range, does not parse or names no entry; UNSPECIFIED with the description otherwise. */

/* As boolean: a boolean's value; whether a command has finished; integer and float: not zero (a float cut to an integer
 * first).
 * Errors: NOT_SUPPORTED "Value of this feature can not be returned as boolean" for every other kind. */
OXGENAPI_EXPORT uint32_t NGetAsBoolean(NODE Node, bool* Value);

/* As integer: an integer's value; a float's cut towards zero; boolean and command as 0 or 1; the number of an
 * enumeration's current entry; an entry's own number.
 * Errors: NOT_SUPPORTED "Value of this feature can not be returned as integer" for every other kind. */
OXGENAPI_EXPORT uint32_t NGetAsInteger(NODE Node, int64_t* Value);

/* As float: a float's value; every other kind through its integer form.
 * Errors: NOT_SUPPORTED "Value of this feature can not be returned as float" for kinds without an integer form. */
OXGENAPI_EXPORT uint32_t NGetAsFloat(NODE Node, double* Value);

/* As text, in the C locale: integers in decimal; floats with six significant digits; an entry's symbolic name; any
 * other value as its own text.
 *   StringValue, StringValueSize  text buffer (may be null) and its in/out size in elements
 * Errors: NOT_SUPPORTED "Value of this feature can not be returned as string" for registers and nodes without value. */
OXGENAPI_EXPORT uint32_t NGetAsString(NODE Node, char* StringValue, OX_OUT(size_t) StringValueSize);
OXGENAPI_EXPORT uint32_t NGetAsStringW(NODE Node, wchar_t* StringValue, OX_OUT(size_t) StringValueSize);

/* Booleans, integers and floats receive 0 or 1. A command is executed by true; false does nothing and succeeds.
 * Errors: NOT_SUPPORTED "Value of this feature can not be set as boolean" for every other kind. */
OXGENAPI_EXPORT uint32_t NSetAsBoolean(NODE Node, bool Value);

/* Integers and floats receive the number, an enumeration the entry with that number; boolean and command: not zero is
 * true.
 * Errors: NOT_SUPPORTED "Value of this feature can not be set as integer" for every other kind. */
OXGENAPI_EXPORT uint32_t NSetAsInteger(NODE Node, int64_t Value);

/* Floats receive the number; integer, enumeration, boolean and command the number cut towards zero.
 * Errors: NOT_SUPPORTED "Value of this feature can not be set as float" for every other kind;
 *         INVALID_ARGUMENT "<name>: <value> does not fit a 64-bit integer" where one is needed. */
OXGENAPI_EXPORT uint32_t NSetAsFloat(NODE Node, double Value);

/* The value as text, as the node's own text form accepts it (an enumeration: the entry's name; a command: any text
 * that stands for true).
 * Errors: NOT_WRITABLE "Category is RO" for a category;
 *         NOT_SUPPORTED "Value of this feature can not be set as string" for nodes without value. */
OXGENAPI_EXPORT uint32_t NSetAsString(NODE Node, const char* StringValue);
OXGENAPI_EXPORT uint32_t NSetAsStringW(NODE Node, const wchar_t* StringValue);

/* ---- Information -------------------------------------------------------------------------------------------------
 * One item about a node, chosen by Info, in the form asked for. Reading an item may read the device (limits, access
 * mode, addresses).
 * Errors of all forms: NOT_SUPPORTED "Unknown info command"; NOT_SUPPORTED "Type does not support NI_..." when a node
 * of this kind has no such item; NOT_READABLE or UNSPECIFIED with the description when the device must be read and
 * cannot be. */

/* The integer form, not zero being true.
 * Errors: NOT_SUPPORTED "Strings can not be converted to boolean" for text items. */
OXGENAPI_EXPORT uint32_t NInfoAsBoolean(NODE Node, TNodeInfo Info, bool* Value);

/* The integer form; float limits and increments are cut towards zero, boolean items give 0 or 1.
 *   NI_AccessMode      0 not implemented, 1 not available, 2 read only, 3 write only, 4 read/write
 *   NI_CachingMode     0 no cache, 1 write through, 2 write around
 *   NI_Visibility      0 beginner, 1 expert, 2 guru, -1 invisible
 *   NI_Representation  0 to 6 as in TNodeInfo, -1 undefined
 * Errors: NOT_SUPPORTED "Strings can not be converted to integer" for text items; NOT_SUPPORTED "Type does not support
 *         NI_Increment" for floats without increment too. */
OXGENAPI_EXPORT uint32_t NInfoAsInteger(NODE Node, TNodeInfo Info, int64_t* Value);

/* The float form: limits and increments as they are, everything else through the integer form.
 * Errors: NOT_SUPPORTED "Strings can not be converted to float" for text items; NOT_SUPPORTED "Node does not support
 *         NI_INcrement" for a float without increment, "Type does not support NI_INcrement" for other kinds. */
OXGENAPI_EXPORT uint32_t NInfoAsFloat(NODE Node, TNodeInfo Info, double* Value);

/* The text form: text items as they are, numbers in the C locale, modes as words ("Read Only", "Write Through",
 * "Expert", "PureNumber"; representations 5 and above are "Undefined"). NI_Increment has none and is refused with
 * "Unknown info command".
 *   Value, InfoSize  text buffer (may be null) and its in/out size in elements */
OXGENAPI_EXPORT uint32_t NInfoAsString(NODE Node, TNodeInfo Info, char* Value, OX_OUT(size_t) InfoSize);
OXGENAPI_EXPORT uint32_t NInfoAsStringW(NODE Node, TNodeInfo Info, wchar_t* Value, OX_OUT(size_t) InfoSize);

/* The same about one entry of an enumeration, in integer and text form at once.
 *   InfoEnum      the item, asked of the entry
 *   FileIndex     the entry, counted from 0 in description order
 *   IntegerValue  out: the integer form, may be null; 0 for an item that has only a text form
 *   StringValue, StringValueSize  text buffer and its in/out size in elements; both may be null
 * Errors: INVALID_HANDLE "This is not an IEnum node"; INVALID_ARGUMENT "Index out of range: 0 <= 7 < 5"; those of
 *         NInfoAsInteger when an entry has no such item. */
OXGENAPI_EXPORT uint32_t NInfoEnum(NODE Node, TNodeInfo InfoEnum, int64_t FileIndex, int64_t* IntegerValue,
                                   char* StringValue, size_t* StringValueSize);
OXGENAPI_EXPORT uint32_t NInfoEnumW(NODE Node, TNodeInfo InfoEnum, int64_t FileIndex, int64_t* IntegerValue,
                                    wchar_t* StringValue, size_t* StringValueSize);

/* ---- Lists -------------------------------------------------------------------------------------------------------
 * Errors of both: INVALID_HANDLE "This is not a selected node" (selected features of a node that is no selector), "This
 * is not an IEnum node" (entries), "This is not an ISelector node" (selecting features); NOT_READABLE or UNSPECIFIED
 * with the description. */

/* How many nodes a list holds.
 * Errors: NOT_SUPPORTED "Given list type is unknown". */
OXGENAPI_EXPORT uint32_t NListCount(NODE Node, TNodeList List, int64_t* Count);

/* The name of the node at an index of a list.
 *   Index             counted from 0
 *   Entry, EntrySize  text buffer (may be null) and its in/out size in elements
 * Errors: NOT_SUPPORTED "Unknown list type"; INVALID_ARGUMENT "Index out of range: 0 <= 7 < 5". */
OXGENAPI_EXPORT uint32_t NList(NODE Node, TNodeList List, int64_t Index, char* Entry, OX_OUT(size_t) EntrySize);
OXGENAPI_EXPORT uint32_t NListW(NODE Node, TNodeList List, int64_t Index, wchar_t* Entry, OX_OUT(size_t) EntrySize);

/* ---- Memory ------------------------------------------------------------------------------------------------------
 * Errors of all: NOT_READABLE with the description when the access is refused, of a write too; UNSPECIFIED with the
 * description when it fails otherwise. */

/* Reads BufferSize bytes of a port's address space at Address; bytes are passed through unchanged.
 * Errors: NOT_SUPPORTED "Only port nodes support memory access"; INVALID_ARGUMENT "Invalid buffer" for a null buffer or
 *         size 0. */
OXGENAPI_EXPORT uint32_t NGetAsMemory(NODE Node, int64_t Address, void* pBuffer, int64_t BufferSize);

/* Writes BufferSize bytes to a port's address space at Address. Cached values of nodes are not touched: invalidate what
 * lies there (NInvalidate). Errors as for NGetAsMemory. */
OXGENAPI_EXPORT uint32_t NSetAsMemory(NODE Node, int64_t Address, const void* pBuffer, int64_t BufferSize);

/* Reads a register node's bytes.
 *   pBuffer     null: BufferSize receives the register's length, nothing is read
 *   BufferSize  in: how many bytes to read, at most the register's length
 * Errors: NOT_SUPPORTED "The node does not implement the IRegister interface" for every node that is not of kind
 *         NT_Register, integer, float and string registers included. */
OXGENAPI_EXPORT uint32_t NGetAsRegisterData(NODE Node, void* pBuffer, int64_t* BufferSize);

/* ---- Updates -----------------------------------------------------------------------------------------------------*/

/* Registers a callback that is called after every change of the node: a write to it or to something it depends on, an
 * invalidation, a poll that found it due, an event. It runs on the thread that made the change, while the node map's
 * lock is held. A registration ends with NDeregisterUpdate or with the node's last handle, whichever comes first; after
 * that the callback is not called any more.
 *   Callback, pPrivate  the function and the pointer it is given
 *   Handle              out: identifies the registration
 * Errors: INVALID_ARGUMENT "Callback function pointer must be set"; EXPIRED "shared object expired" from inside the end
 *         of the node's last handle. */
OXGENAPI_EXPORT uint32_t NRegisterUpdate(NODE Node, TNodeUpdate Callback, void* pPrivate, TCallbackHandle* Handle);

/* Ends a registration; allowed inside the callback.
 * Errors: NOT_PRESENT "Given callback handle not present". */
OXGENAPI_EXPORT uint32_t NDeregisterUpdate(NODE Node, TCallbackHandle Handle);

/* Drops the cached values of the nodes that this node names as its invalidators, then of the node itself and of all
 * that depends on them, and calls the callbacks. Errors: INVALIDATE_FAILED with the description. */
OXGENAPI_EXPORT uint32_t NInvalidate(NODE Node);

/* The node's verify mode; belongs to the node object, so all handles of the node see the same. */
OXGENAPI_EXPORT uint32_t NGetVerifyMode(NODE Node, TVerifyMode* AccessMode);

/* Errors: INVALID_ARGUMENT "Unknown validation mode" for a number above 3; the mode stays. */
OXGENAPI_EXPORT uint32_t NSetVerifyMode(NODE Node, TVerifyMode AccessMode);

#ifdef __cplusplus
}
#endif

#endif
