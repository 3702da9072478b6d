/* Base library: counted handles, interface ids, the calling thread's last error.
 *
 * 1. Handles. A handle (OxHandle) names an interface container: a counted box that owns exactly one object and knows
 *    the interfaces that the object offers. It is an opaque value; only the functions below may look at it.
 * 2. Validity. Every function that takes a handle is safe on any 64-bit value: zero, a handle released long ago, a
 *    pointer to something else, a random number. Such a value is refused with OX_E_INVALID_HANDLE and nothing changes.
 *    A released handle stays refused for at least 16,384 later releases of other handles.
 * 3. Counts. Use counts keep the object alive, weak counts keep only the handle value from being given to another
 *    object. A caller gives back what it took, once. Giving back more than one owns takes it from someone else and
 *    cannot be detected.
 * 4. Results. Functions return a signed 32-bit status: 0 for success, negative for failure. None throws. The functions
 *    of this header never change the last error, except OxSetLastError.
 * 5. Threads. Every function may be called from any thread at any time.
 */
#ifndef OXBASE_OXBASE_H
#define OXBASE_OXBASE_H

#include <stddef.h>
#include <stdint.h>

#if defined(__GNUC__)
#define OXBASE_API __attribute__((visibility("default")))
#else
#define OXBASE_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Address of an interface container; zero is never valid. */
typedef void* OxHandle;

/* Statuses that functions of this header return. */
#define OX_OK ((int32_t)0)
#define OX_E_INVALID_ARGUMENT ((int32_t)0x80000002)
#define OX_E_OUT_OF_MEMORY ((int32_t)0x80000005)
#define OX_E_INVALID_HANDLE ((int32_t)0x8000001d)
#define OX_E_INVALID_STATE ((int32_t)0x8000001e)
#define OX_E_NOT_PRESENT ((int32_t)0x8000002e)

/* Fixed interface ids. OxRegisterInterface never returns one of them. */
#define OX_INTERFACE_NODE_MAP ((uint64_t)45)
#define OX_INTERFACE_NODE ((uint64_t)46)

/* Replaces the calling thread's last error.
 *   Code  any value; 0 means "no error".
 *   Text  zero-terminated, copied; null counts as an empty text.
 * Never fails: when there is no memory for a text of more than 255 bytes, its first 255 bytes are kept.
 * Returns OX_OK. */
OXBASE_API int32_t OxSetLastError(uint32_t Code, const char* Text);

/* Reads the calling thread's last error; a thread that has set none has code 0 and an empty text.
 *   Code    receives the code; may be null.
 *   Buffer  null: *Size receives the bytes needed for the text including its terminating zero (at least 1).
 *           Otherwise at most *Size - 1 bytes of the text and a terminating zero are written; a text that is too long
 *           is cut. *Size keeps its value; when it is 0 nothing is written.
 *   Size    capacity of Buffer in bytes; may be null while Buffer is null.
 * Returns OX_OK, or OX_E_INVALID_ARGUMENT for a buffer without a size (nothing is written then). */
OXBASE_API int32_t OxGetLastError(uint32_t* Code, char* Buffer, size_t* Size);

/* Creates a container with storage for one object.
 *   Size     bytes of storage, 0 counts as 1; the storage is aligned to 16 bytes and holds no defined bytes.
 *   Storage  receives the address of the storage, null on failure.
 * Returns the container, which carries one use count owned by the caller, or null when there is no memory, too many
 * containers are alive, or Storage is null. Until OxIfaceContainerAdd has published an object, the container refuses
 * OxIfaceContainerCheckedAddUseCounter; releasing it frees the storage without touching what was built there. */
OXBASE_API OxHandle OxCreatePlacementIfaceContainer(size_t Size, void** Storage);

/* Publishes the object built in the container's storage: asks it for its interfaces and makes the handle usable by
 * others. From then on the container ends the object when the last use count goes.
 *   Object  an ORX::IDisposableType* (OxBase/IDisposableType.h), handed over as void*. Must be valid.
 * Returns OX_OK, or
 *   OX_E_INVALID_HANDLE    the handle is not alive;
 *   OX_E_INVALID_ARGUMENT  Object is null, or an interface of the object is already present in the container;
 *   OX_E_INVALID_STATE     the container already holds an object (with other interfaces);
 *   OX_E_OUT_OF_MEMORY     no memory for the list of interfaces;
 *   or the negative status of the object's own ListInterfaces.
 * After a failure the container is as before, and the object is still the caller's to destroy. */
OXBASE_API int32_t OxIfaceContainerAdd(OxHandle Container, void* Object);

/* Looks up an interface of the container's object. The caller must own a use count for the result to stay valid.
 *   Id         interface id.
 *   Interface  receives the interface pointer, null when the call fails. Must be valid.
 * Returns OX_OK, OX_E_NOT_PRESENT when the object does not offer the interface, OX_E_INVALID_HANDLE when the handle is
 * not alive, OX_E_INVALID_ARGUMENT when Interface is null. */
OXBASE_API int32_t OxIfaceContainerQuery(OxHandle Container, uint64_t Id, void** Interface);

/* Takes a use count if the container holds a published object that is still alive.
 * Returns OX_OK, OX_E_INVALID_HANDLE when it is not, OX_E_INVALID_STATE when 2,147,483,647 counts are taken. */
OXBASE_API int32_t OxIfaceContainerCheckedAddUseCounter(OxHandle Container);

/* Takes another use count of a container of which the caller already owns one, published or not.
 * Returns as OxIfaceContainerCheckedAddUseCounter. */
OXBASE_API int32_t OxIfaceContainerAddUseCounter(OxHandle Container);

/* Gives a use count back. The last one destroys the object on this thread, before the function returns.
 * Returns OX_OK, or OX_E_INVALID_HANDLE when the handle is not alive. */
OXBASE_API int32_t OxIfaceContainerReleaseUseCounter(OxHandle Container);

/* Takes a weak count: the handle value is not given to another object before it is given back, so a later
 * OxIfaceContainerCheckedAddUseCounter tells for certain whether this object still lives. The caller owns a use count
 * or another weak count. Returns as OxIfaceContainerCheckedAddUseCounter. */
OXBASE_API int32_t OxIfaceContainerAddWeakCounter(OxHandle Container);

/* Gives a weak count back. Returns OX_OK, or OX_E_INVALID_HANDLE when no count is held on this handle. */
OXBASE_API int32_t OxIfaceContainerReleaseWeakCounter(OxHandle Container);

/* Turns an interface name into an id that is unique in the process; the same name always gives the same id.
 *   Name  zero-terminated, copied, compared byte for byte.
 * Returns the id (65536 or above), or 0 when Name is null or empty or there is no memory. */
OXBASE_API uint64_t OxRegisterInterface(const char* Name);

#ifdef __cplusplus
}
#endif

#endif
