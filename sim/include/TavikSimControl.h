/*
 * The camera simulator's control entry point, for tests and demos: reach it
 * with dlopen/dlsym("TavikSimControl") on the loaded TavikSim.cti.
 *
 * Commands (one per call, words separated by blanks):
 *   unplug <camera>              the camera leaves its interface
 *   plug <camera>                it comes back
 *   fail <Call> <status> [n]     the next n calls (0 or none: every call) of
 *                                the named entry point return status
 *   delay <Call> <ms>            the named entry point waits first
 *   clear                        forget all failures and delays
 *   document <camera> <a> <n>    the camera reports its document at hex
 *                                address a with hex size n (to test consumers)
 *   incomplete <camera> <n>      the next n frames come out incomplete
 *   invalidate <camera> <name>   a feature invalidation event
 *   event <camera> <id> [block]  a remote device event with that id (decimal)
 *                                and block id, stamped now
 * Returns 0, or -1 for a command it does not know.
 */
#ifndef TAVIK_SIM_CONTROL_H
#define TAVIK_SIM_CONTROL_H

#ifdef __cplusplus
extern "C" {
#endif

typedef int (*TavikSimControl_t)(const char* command);
int TavikSimControl(const char* command);

#ifdef __cplusplus
}
#endif

#endif
