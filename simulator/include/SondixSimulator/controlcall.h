/* SPDX-License-Identifier: MIT */
#pragma once

#include <stdint.h>

/**
 * \file
 * Controls the bench simulator from an application that must also run with the sensor maker's library, which has no such
 * function: the application looks SondixSimControl() up at run time in the library "Sondix" that it has loaded. Plain C,
 * for every compiler. Tests use control.h.
 */

#if defined(_WIN32)
#    if defined(SONDIX_BUILD_SIMULATOR)
#        define SONDIXSIMCALL_EXPORT __declspec(dllexport)
#    else
#        define SONDIXSIMCALL_EXPORT __declspec(dllimport)
#    endif
#else
#    define SONDIXSIMCALL_EXPORT __attribute__((visibility("default")))
#endif

#if defined(__cplusplus)
extern "C" {
#endif

/** The type of SondixSimControl(), for a look-up. */
typedef uint32_t (*SondixSimControlFunction)(const char *request, char *answer, uint32_t size);

/**
 * Carries out \a request and writes the answer, with a terminating zero, into \a answer, which has room for \a size
 * bytes. Returns the number of bytes that the whole answer needs; if that is more than \a size, the answer is cut. With
 * a null \a request the last answer of the calling thread is written once more. Returns 0 only if memory is exhausted.
 * May be called from any thread, and may wait for a command that the sensor is executing. No exception leaves it.
 *
 * Request and answer are JSON objects in UTF-8. The answer to a request that was carried out has the member "ok": true,
 * any other has "error", a text for users. A request with an unknown or missing member changes nothing.
 *
 * | Request                                          | Answer, effect                                               |
 * |--------------------------------------------------|--------------------------------------------------------------|
 * | {"do": "sensors"}                                | "bench": name, "time": bench time, "session": its name,      |
 * |                                                  | "sensors": [{"serialNumber", "model", "place", "plugged",    |
 * |                                                  | "open", "silent", "program", "inUse"}]. In a session         |
 * |                                                  | "program" names the process that has opened the sensor;      |
 * |                                                  | "inUse": not a process, but the bench file uses it           |
 * | {"do": "schema"}                                 | "schema": the JSON schema of bench files, a text             |
 * | {"do": "load", "file": path}                     | loads a bench file, or with "session:NAME" attaches to a     |
 * |                                                  | session; without "file" loads the built-in bench             |
 * | {"do": "start", "session": name, "file": path,   | starts a session with a bench file, or with the built-in     |
 * | "log": true}                                     | bench, and logs all calls but the transfers                  |
 * | {"do": "stop", "session": name}                  | ends a session for all programs                              |
 * | {"do": "sessions"}                               | "sessions": [{"session": name, "file", "age": seconds}]      |
 * | {"do": "plug", "sensor": serial number}          | plugs a sensor in                                            |
 * | {"do": "unplug", "sensor": serial number}        | unplugs it                                                   |
 * | {"do": "silent", "sensor": ..., "silent": true}  | lets it send no frames, or send them again                   |
 * | {"do": "trigger", "sensor": serial number}       | triggers it once                                             |
 * | {"do": "set", "sensor": ..., "values": pairs}    | changes settings at the sensor itself; "SA_Key=value" pairs  |
 * | {"do": "step", "seconds": ...}                   | "time": bench time after the step of a virtual clock         |
 * | {"do": "log", "follow": true}                    | "file": the log of calls of the session, "logged": whether   |
 * |                                                  | calls are logged; "follow" logs all for three more seconds   |
 * | {"do": "inject", ...}                            | "fault": its number. The members are those of the struct     |
 * |                                                  | Fault of control.h, by the same names; none is required, but |
 * |                                                  | one of "function", "command" and "parameter"                 |
 * | {"do": "faults"}                                 | "faults": [{"fault": number, ...}], those in effect          |
 * | {"do": "expectations"}                           | "expectations": [{"name", "sensor", "model", "expected",     |
 * |                                                  | "found", "met", "line"}], what the bench file expects and    |
 * |                                                  | what was found so far; in a session "users": how many        |
 * |                                                  | programs have created an instance of a sensor                |
 * | {"do": "clear", "fault": number}                 | removes a fault; without "fault" all of them, and hanging    |
 * |                                                  | calls return                                                 |
 */
SONDIXSIMCALL_EXPORT uint32_t SondixSimControl(const char *request, char *answer, uint32_t size);

#if defined(__cplusplus)
}
#endif
