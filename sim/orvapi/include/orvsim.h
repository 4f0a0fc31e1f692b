/*
 * orvsim.h - control of the simulated management API library, for tests,
 * hosts and the sibling stand-ins. Not part of the array's API: the module
 * never includes it.
 *
 * The simulator starts on its embedded default model, or on the JSON file
 * named by ORV_SIM_MODEL, at the first call into the library. ORV_SIM_FAULTS
 * ("call=status[@after][*times][:alloc],...") arms faults at the same time.
 * The model format is described in sim/orvapi/README.md.
 */
#ifndef ORV_SIM_ORVSIM_H
#define ORV_SIM_ORVSIM_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Model ------------------------------------------------------------- */

/* Replace the model with a JSON file or text. 0 on success; on failure the
 * previous model stays and orvsim_last_error() tells why. Faults listed in
 * the model replace the armed ones. */
int orvsim_load_model_file(const char* path);
int orvsim_load_model_json(const char* jsonText);

/* Text of the last load failure ("" when none). Valid until the next load. */
const char* orvsim_last_error(void);

/* Embedded default model, faults cleared, counters reset, wall clock, log
 * threshold back to its default, log capture off. */
void orvsim_reset(void);

/* Element counts of the current model. */
uint32_t orvsim_volume_count(void);
uint32_t orvsim_vlun_count(void);
uint32_t orvsim_disk_count(void);
uint32_t orvsim_port_count(void);
uint32_t orvsim_node_count(void);

/* ---- Identity of the storage system ------------------------------------ */

typedef struct orvsim_identity_t
{
    char systemName[64];
    char hostName[256];
    uint32_t systemID;
    int32_t systemType;
    char address[64];    /* management address as text (IPv4) */
    uint8_t quadPort;    /* 1 when the array has four or more nodes */
    char ipv4[16];       /* dotted IPv4 management address */
    char ipv6[46];       /* IPv6 management address, "" when none */
    char vendor[64];
    char model[64];
    char serialNumber[64];
    char firmwareVersion[64];
} orvsim_identity_t;

/* Fills *out from the current model. 0 on success. */
int orvsim_get_identity(orvsim_identity_t* out);

/* ---- Descriptive data of elements, for the element providers ----------- */

typedef struct orvsim_disk_info_t
{
    char diskDeviceID[65];
    char diskName[32];
    uint32_t diskID;
    char deviceClass[8]; /* "FC10K", "NL", "FC15K", "SSD" */
    uint32_t rpm;        /* 0 for solid-state */
    uint32_t blockSize;
    uint64_t capacityMiB;
    uint8_t failed;
} orvsim_disk_info_t;

typedef struct orvsim_port_info_t
{
    char portDeviceID[65];
    char nodeDeviceID[65];
    char portName[32];
    uint16_t portID;
    int32_t type;         /* api_port_type_e */
    int32_t protocol;     /* port_prot_e */
    char wwn[17];         /* port WWN for FC/FCoE/SAS, "" otherwise */
    char mac[18];         /* "aa:bb:cc:dd:ee:ff" for iSCSI/IP, "" otherwise */
    uint64_t speedBps;    /* link speed, bits per second */
    uint8_t linkUp;
} orvsim_port_info_t;

/* Lookup by device ID (exact); the first match. 0 found, non-zero not. */
int orvsim_get_disk_info(const char* diskDeviceID, orvsim_disk_info_t* out);
int orvsim_get_port_info(const char* portDeviceID, orvsim_port_info_t* out);

/* ---- Clock -------------------------------------------------------------- */

/* Fix the simulated clock (seconds or microseconds since the epoch);
 * 0 returns to the wall clock. */
void orvsim_set_time(int64_t seconds);
void orvsim_set_time_us(int64_t microseconds);

/* ---- Faults ------------------------------------------------------------- */

/* Make the named call (e.g. "api_getDiskStats", "cim_sem_wait") return
 * status once after_n calls have succeeded, then on every call (or for
 * `times` calls with orvsim_set_fault_times). leave_alloc: a failing list
 * call still hands out a malloc'd array, which the caller must free.
 * Returns 0, or non-zero for an unknown call name or status 0. */
int orvsim_set_fault(const char* call, int status, int after_n, int leave_alloc);
int orvsim_set_fault_times(const char* call, int status, int after_n, int times, int leave_alloc);
/* Parse "call=status[@after][*times][:alloc],..." as ORV_SIM_FAULTS does.
 * For the chunked calls "call=empty[@after][*times]" makes the call succeed
 * with no records and a cursor moved on but never 0. */
int orvsim_set_faults_spec(const char* spec);
void orvsim_clear_faults(void);

/* ---- Call accounting ---------------------------------------------------- */

/* Calls made to the named function since the last reset (failures included). */
unsigned long orvsim_call_count(const char* call);
/* Arguments of the latest call of the named function, as text such as
 * "api_getVLunStats(0,\"vol1\",7,-3,-7,-8)"; malloc'd, caller frees;
 * null when it was not called. */
char* orvsim_last_call(const char* call);
void orvsim_reset_call_counts(void);

/* ---- Semaphore debug counters ------------------------------------------ */

int orvsim_sem_depth(void);        /* holders right now (0 or 1) */
int orvsim_sem_max_depth(void);    /* deepest hold by one thread; 2 = a nested wait */
unsigned long orvsim_sem_waits(void);  /* successful waits */
unsigned long orvsim_sem_posts(void);  /* successful posts */
unsigned long orvsim_sem_bad_posts(void); /* posts by a thread not holding it */
/* Queries that must be bracketed but were made by a thread not holding the
 * semaphore, and CPU queries made by a thread holding it. */
unsigned long orvsim_unbracketed_calls(void);
void orvsim_reset_sem_counters(void);

/* ---- Logging ------------------------------------------------------------ */

/* Lines with a level at or below the threshold are written out. */
void orvsim_set_log_level(int level);
int orvsim_get_log_level(void);
/* Start keeping every formatted line (all levels), dropping older ones. */
void orvsim_log_capture_begin(void);
/* The lines kept since begin or the last take, concatenated; malloc'd,
 * caller frees. Capturing continues. */
char* orvsim_log_capture_take(void);
void orvsim_log_capture_end(void);

#ifdef __cplusplus
}
#endif

#endif /* ORV_SIM_ORVSIM_H */
