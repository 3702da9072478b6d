/* Telemetry library: modules report records, a file or a function receives them as lines of JSON.
 *
 * 1. Off by default. A module is enabled when, at its registration, a sink is installed (OxTSetSink) or the environment
 *    asks for it: OX_TELEMETRY_LEVEL=0..3 (the lowest level that is reported: 0 debug, 1 information, 2 warning,
 *    3 error). Lines go to the sink, else to the file named by OX_TELEMETRY_FILE (appended to, created when absent),
 *    else to the standard error stream.
 * 2. Fixed settings. Level and destination of a module are settled when it registers and never change after that.
 * 3. Lines. Each record becomes one line, a JSON object with the members "time" (UTC), "module", "version", "level",
 *    "text" and "attributes" (an object). Invalid UTF-8 is replaced by U+FFFD; a number that is not finite is written
 *    as "NaN", "Infinity" or "-Infinity", a string.
 * 4. Never in the way. No function throws, raises a signal or waits. A line that cannot be written at once is dropped
 *    and counted (OxTDroppedLineCount).
 * 5. Threads. Every function may be called from any thread; one record belongs to one thread at a time.
 */
#ifndef OXTELEMETRY_OXTELEMETRY_H
#define OXTELEMETRY_OXTELEMETRY_H

#include <stddef.h>
#include <stdint.h>

#if defined(__GNUC__)
#define OXTELEMETRY_API __attribute__((visibility("default")))
#else
#define OXTELEMETRY_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* A registered module; valid until the process ends. */
typedef struct OxTModuleRecord* OxTModule;
/* A record on its way; valid until OxTSendLog. */
typedef struct OxTLogRecord* OxTLog;

/* Levels of records. A configured level of OXT_LEVEL_OFF lets nothing pass. */
#define OXT_LEVEL_DEBUG ((uint32_t)0)
#define OXT_LEVEL_INFORMATION ((uint32_t)1)
#define OXT_LEVEL_WARNING ((uint32_t)2)
#define OXT_LEVEL_ERROR ((uint32_t)3)
#define OXT_LEVEL_OFF ((uint32_t)4)

/* Settings of a module. Before registration: Revision 2, Enabled 2, Level 0. */
typedef struct OxTSettings {
  uint32_t Revision; /* of this structure; set to 2 by the caller and left alone */
  uint32_t Enabled;  /* 1 enabled, 0 disabled, 2 not registered */
  uint32_t Level;    /* lowest level that is reported; OXT_LEVEL_OFF when disabled */
} OxTSettings;

#define OXT_SETTINGS_REVISION ((uint32_t)2)
#define OXT_DISABLED ((uint32_t)0)
#define OXT_ENABLED ((uint32_t)1)
#define OXT_NOT_REGISTERED ((uint32_t)2)

/* Type tags of attributes. */
#define OXT_TAG_STRING ((uint32_t)1)
#define OXT_TAG_BOOLEAN ((uint32_t)2)
#define OXT_TAG_INTEGER ((uint32_t)3)
#define OXT_TAG_DOUBLE ((uint32_t)4)

/* One attribute of a record. */
typedef struct OxTAttribute {
  const char* Name; /* zero-terminated */
  uint32_t Tag;     /* one of OXT_TAG_*, selects the member of Value */
  union {
    const char* String; /* zero-terminated */
    uint64_t Boolean;   /* 0 or not; eight bytes, all of them count */
    int64_t Integer;
    double Double;
  } Value;
} OxTAttribute;

/* Receives one line: Line points to Size bytes of JSON without a line break, and is zero-terminated; it is valid during
 * the call. Called on the thread that sends the record. What it throws is swallowed, and the line counts as dropped.
 * Records that are created on the same thread while it runs are not given. */
typedef void (*OxTSink)(const char* Line, size_t Size, void* UserData);

/* Installs the function that receives the lines of modules registered from now on; the environment does not matter
 * then. Modules that are registered already keep what they have.
 *   Sink      null: modules registered from now on follow the environment again.
 *   UserData  handed to Sink unchanged. Both must stay valid until the process ends or the modules are quiet.
 *   Level     0..3, the lowest level that is reported; OXT_LEVEL_OFF and above: modules are registered disabled.
 * Returns 0. */
OXTELEMETRY_API int32_t OxTSetSink(OxTSink Sink, void* UserData, uint32_t Level);

/* Registers a module and settles its settings. Registering a name and version again gives the same module.
 *   Name, Version  zero-terminated, copied; null counts as empty.
 *   Module         receives the module, null on failure. Must be valid.
 *   Settings       Revision must be 2; receives Enabled and Level. Must be valid.
 * Returns 0, 0x80000002 when a pointer is null or the revision unknown, 0x80000005 when out of memory; a failure leaves
 * Settings, where there are any, disabled. */
OXTELEMETRY_API int32_t OxTGetModule(const char* Name, const char* Version, OxTModule* Module, OxTSettings* Settings);

/* Creates a record.
 *   Level  0..3.
 *   Log    receives the record, or null when none is given: the module is disabled, the level lies below the configured
 *          one or above 3, or the call comes out of a sink. Every record that is given must be sent. Must be valid.
 * Returns 0 (also when no record is given), 0x80000002 when Log is null, 0x8000001d when Module is no module,
 * 0x80000005 when out of memory. */
OXTELEMETRY_API int32_t OxTCreateLog(OxTModule Module, uint32_t Level, OxTLog* Log);

/* Attaches attributes to a record; an attribute of the same name is replaced. Names and strings are copied. An entry
 * with a null string is skipped.
 *   Entries  Count entries; may be null when Count is 0.
 * Returns 0, 0x80000002 when Log or Entries is null or an entry has no name or an unknown tag (such entries are left
 * out, the others attached), 0x80000005 when out of memory (the entries before that point are attached). */
OXTELEMETRY_API int32_t OxTAttributeMapStore(OxTLog Log, const OxTAttribute* Entries, size_t Count);

/* Sends a record with its text and frees it: Log is invalid afterwards, whatever the result.
 *   Message  zero-terminated; null counts as empty.
 * Returns 0, 0x80000002 when Log is null, 0x80000003 when the line was dropped. */
OXTELEMETRY_API int32_t OxTSendLog(OxTLog Log, const char* Message);

/* The number of lines that this process has dropped so far, over all modules. */
OXTELEMETRY_API uint64_t OxTDroppedLineCount(void);

#ifdef __cplusplus
}
#endif

#endif
