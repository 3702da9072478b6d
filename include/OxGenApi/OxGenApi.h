/* The whole flat interface of libOxGenApi: node maps, nodes, firmware updates, versions.
 *
 * 1. Handles and owners. NODEMAP, NODE, NODEMAPSTREAM and FWUPDATER are opaque values; zero is never valid. Whoever
 *    is given a handle by an out-parameter owns one reference and gives it back with
 *    OxIfaceContainerReleaseUseCounter(handle) of libOxBase; there is no release function here. The last reference
 *    ends the object. A NODE keeps its node map alive, a proxy and a stream keep theirs. Zero, stale, foreign and
 *    random values may be passed anywhere: they are refused with OXGENAPI_E_INVALID_HANDLE "Invalid NODEMAP handle"
 *    (NODE, NODEMAPSTREAM, FWUPDATER), before any other check unless the function says otherwise, and nothing is
 *    written but what the function names. Giving back more references than one owns is the caller's error and cannot
 *    be detected. A handle released on another thread during a call stays usable until that call returns.
 *
 * 2. Strings and buffers. Narrow text is UTF-8, wide text (functions ending in W) has one code point per wchar_t; both
 *    end with a zero. A W function does what its narrow twin does, with the text converted; text that is not UTF-8
 *    shows as U+FFFD. Text is returned into a caller's buffer with an in/out size counted in elements (bytes, or
 *    wchar_t), terminating zero included:
 *      - buffer null: the size needed is stored; nothing else is written;
 *      - size 0: nothing is written;
 *      - otherwise up to size - 1 elements and a zero are written. Text that is too long is cut without an error (at
 *        an element, which may split a UTF-8 sequence) and the size keeps its value.
 *    A function that fails after its handle was accepted returns an empty text in this way. The settings and file
 *    functions state their own rules. Lengths and addresses are in bytes.
 *
 * 3. Pointers. Output pointers, in/out sizes and records must be valid; where null is allowed the function says so. A
 *    null input text stands for an empty one. OX_OUT(T) is a reference in C++ and a pointer in C, the same at machine
 *    level. A failing call leaves outputs as they were, except that functions that create an object set their output
 *    to zero where they say so, unless it is their own handle that is invalid.
 *
 * 4. Results and the last error. A function returns 0 or a code (OXGENAPI_E_..., Types.h) with the top bit set. A
 *    failing function also leaves code and text as the calling thread's last error; read it with OxGetLastError of
 *    libOxBase before the next call on that thread. Success leaves the last error alone. Comments name codes without
 *    their prefix. Not repeated there, because every function can report them: INVALID_HANDLE (above),
 *    OUT_OF_MEMORY "Unspecified error" when memory ran out, UNSPECIFIED "Unspecified error" for a failure that is none
 *    of the known kinds. "Description" stands for the text of the GenApi failure: one line that names the feature, the
 *    register below it, and the reason. No exception leaves any function.
 *
 * 5. Threads. Every function may be called from any thread. Each node map has one recursive lock; operations on its
 *    nodes take it, so they wait for one another, and two node maps never wait for each other. Loading a description
 *    is the exception: no other thread may use that node map meanwhile. The library has no threads of its own.
 *
 * 6. Callbacks. They run on the thread whose call caused them, before that call returns; port, node update, event and
 *    polling callbacks run while the node map's lock is held. They may call back into the library, also for the same
 *    node map, but must not wait for another thread that needs that lock. A C++ exception that leaves a callback goes
 *    no further: after a port callback the access fails with "Unspecified error" (a file transfer or firmware update
 *    with the text of a standard exception), after a node update callback it is dropped.
 */
#ifndef OXGENAPI_OXGENAPI_H
#define OXGENAPI_OXGENAPI_H

#include "OxGenApi/FirmwareUpdate.h"
#include "OxGenApi/Node.h"
#include "OxGenApi/NodeMap.h"
#include "OxGenApi/Types.h"
#include "OxGenApi/Version.h"

#endif
