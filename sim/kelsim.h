/* Control interface of the simulated transport (kelapi50.dll): tests and tools reach it
 * by looking the KelSim_ functions up in the loaded library. */
#ifndef KELSIM_H
#define KELSIM_H

#include <stdint.h>
#ifndef __cplusplus
#include <stdbool.h>
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Back to the start state: faults cleared, call log emptied. */
void KelSim_Reset(void);
/* The call log: one line per transport call, "Kel_Name(arg,arg)". Copies at most cap-1
 * bytes and a NUL; returns the full length. */
int32_t KelSim_CallLog(char* buf, int32_t cap);
void KelSim_ClearCallLog(void);
/* What Kel_SetDefaultInfo answers (true by default). */
void KelSim_SetDefaultInfoResult(bool ok);

#ifdef __cplusplus
}
#endif

#endif
