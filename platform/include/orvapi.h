/*
 * orvapi.h - the array's management API as the CIM providers see it.
 *
 * Conventions shared by every call:
 *  - A status of 0 (API_SUCCESS) means success; any other value is a failure.
 *  - Result sets ({count, pointer}) are zeroed by the caller before the call.
 *    The library allocates the record array with malloc and the caller
 *    releases it with free, also after a failed call: a failure may leave an
 *    array behind.
 *  - Every list or statistics query (api_getVolumeStats_chunk,
 *    api_getVVs_chunk, api_getDiskStats, api_getPortStats, api_getNodes,
 *    api_getNodeStats, api_getVLunStats) is made while holding the
 *    process-wide semaphore (cim_sem_wait / cim_sem_post), one call per
 *    hold. api_getNodeCPUStats is made without it.
 *  - Strings in records are NUL-terminated and never overflow their arrays.
 *
 * Counters in api_stats_t: count = number of I/Os, bytes = bytes moved,
 * ticks = accumulated I/O time in microseconds. begin/now/busyticks are in
 * microseconds since the epoch (busyticks is a duration).
 */
#ifndef ORV_PLATFORM_ORVAPI_H
#define ORV_PLATFORM_ORVAPI_H

#include <stddef.h>
#include <stdint.h>
#include <time.h>

#ifdef __cplusplus
#define ORVAPI_STATIC_ASSERT(cond, msg) static_assert(cond, msg)
#else
#define ORVAPI_STATIC_ASSERT(cond, msg) _Static_assert(cond, msg)
#endif

#if defined(__GNUC__)
#define ORVAPI_PRINTF(fmtIndex, argIndex) __attribute__((format(printf, fmtIndex, argIndex)))
#define ORVAPI_NORETURN __attribute__((noreturn))
#define ORVAPI_UNUSED __attribute__((unused))
#else
#define ORVAPI_PRINTF(fmtIndex, argIndex)
#define ORVAPI_NORETURN
#define ORVAPI_UNUSED
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ------------------------------------------------------------------------ */
/* Status codes                                                              */
/* ------------------------------------------------------------------------ */

enum
{
    API_SUCCESS = 0,
    API_ERR_NOT_FOUND = 2,     /* no such element (node, disk, ...) */
    API_ERR_IO = 5,            /* the array did not answer */
    API_ERR_NO_MEMORY = 12,    /* allocation of a result array failed */
    API_ERR_ACCESS = 13,       /* user unknown or not allowed */
    API_ERR_BUSY = 16,         /* semaphore could not be taken */
    API_ERR_INVALID_ARG = 22,  /* null pointer, malformed text, bad selector */
    API_ERR_DEADLOCK = 35      /* semaphore waited on by the thread holding it */
};

/* Answers of api_authorizeCIMUser. */
enum
{
    API_AUTH_GRANTED = 0,
    API_AUTH_NO_RIGHTS = 1,   /* the user has no rights in the operation's domain */
    API_AUTH_DENIED = 2,      /* the user's role does not grant this operation */
    API_AUTH_UNSUPPORTED = 3  /* the user's role is not handled for generic operations */
};

/* ------------------------------------------------------------------------ */
/* Sizes of the fixed character arrays (including the terminating NUL)      */
/* ------------------------------------------------------------------------ */

enum
{
    API_VOL_DEVICE_ID_LEN = 33, /* 32 hexadecimal digits of a volume WWN */
    API_WWN_TEXT_LEN = 33,      /* text buffer of api_wwnIntToString */
    API_NAME_LEN = 32,          /* vvName, diskName, portName, node name */
    API_DEVICE_ID_LEN = 65,     /* diskDeviceID, portDeviceID, nodeDeviceID */
    API_HOST_HWID_LEN = 224,    /* host WWN or iSCSI name of a VLUN */
    API_MAX_NODES = 8,          /* node numbers 0 to 7 */
    API_CMP_DEV_CLASSES = 7,    /* device classes of cmp_cdev */
    API_MAX_CPUS = 32,          /* CPUs per node in cpustats */
    API_LRU_SUBLISTS = 8,       /* per-list arrays of cmp_lru_lens */
    API_ERROR_TEXT_LEN = 128    /* text of api_error_t */
};

/* Device-class index of cmp_cdev (0, 5 and 6 are not reported). */
enum
{
    API_DEV_CLASS_FC10K = 1,
    API_DEV_CLASS_NL = 2,
    API_DEV_CLASS_FC15K = 3,
    API_DEV_CLASS_SSD = 4
};

/* ------------------------------------------------------------------------ */
/* Selectors                                                                 */
/* ------------------------------------------------------------------------ */

/* Volume selector meaning every volume (minus ten in two's complement).
 * Only the wwn word is tested; wwn_re is ignored when wwn holds it. */
static const uint64_t API_WWN_ALL_VOLUMES ORVAPI_UNUSED = 0xFFFFFFFFFFFFFFF6ULL;

/* api_getDiskStats: sel1 = drive number, or one of these for every drive. */
static const uint32_t API_DISK_ALL ORVAPI_UNUSED = 0xFFFFFFFEU;
/* Any value of an unsigned 32-bit selector (api_getDiskStats sel1/sel3..5,
 * api_getPortStats node/slot/port). */
static const uint32_t API_SEL_ANY ORVAPI_UNUSED = 0xFFFFFFFFU;

/* api_getVLunStats: every LUN number, and every node/slot/port. */
static const int32_t API_LUN_ALL ORVAPI_UNUSED = -5;
static const int32_t API_NSP_ALL ORVAPI_UNUSED = -1;

/* portID value of a path not bound to a physical port. */
static const uint16_t API_PORTID_NONE ORVAPI_UNUSED = 0xFFFC;

/* ------------------------------------------------------------------------ */
/* Enumerations                                                              */
/* ------------------------------------------------------------------------ */

/* Port position: node = bits 7..9, slot = bits 3..6, port = bits 0..2. */
typedef uint16_t lpid_t;

typedef enum api_port_type_e
{
    API_PORT_TYPE_ALL = 0,
    API_PORT_TYPE_TARGET = 1, /* front-end, hosts log in to it */
    API_PORT_TYPE_INIT = 2    /* initiator, towards the drives */
} api_port_type_e;

typedef enum port_prot_e
{
    PORT_PROTOCOL_UNKNOWN = 0,
    PORT_PROTOCOL_FC = 1,
    PORT_PROTOCOL_ISCSI = 2,
    PORT_PROTOCOL_FCOE = 3,
    PORT_PROTOCOL_IP = 4, /* remote copy over IP */
    PORT_PROTOCOL_SAS = 5
} port_prot_e;

/* Transport of the host side of a VLUN. */
typedef enum port_type_t
{
    PORT_TYPE_UNKNOWN = 0,
    PORT_TYPE_FC = 1,
    PORT_TYPE_ISCSI = 2,
    PORT_TYPE_SAS = 3
} port_type_t;

/* Drive enclosure types. */
typedef enum jb_type_e
{
    JB_TYPE_UNKNOWN = 0,
    JB_TYPE_FC_4U40 = 1,
    JB_TYPE_SAS_2U24 = 2,
    JB_TYPE_SAS_4U24 = 3,
    JB_TYPE_SAS_2U12 = 4
} jb_type_e;

/* Kinds of VLUN. Kinds 1 to 4 are bound to a host and a port; every other
 * kind (0, 5, ...) is a template without a host identifier. */
enum
{
    API_VLUN_TYPE_TEMPLATE = 0,  /* export rule not bound to a host */
    API_VLUN_TYPE_ACTIVE = 1,    /* host seen through one port */
    API_VLUN_TYPE_HOST = 2,      /* host, any port */
    API_VLUN_TYPE_HOSTSET = 3,   /* member of a host set */
    API_VLUN_TYPE_MATCHED = 4,   /* host bound to a given port */
    API_VLUN_TYPE_PORT = 5       /* port template, any host */
};

/* IP_TYPE_VER of the management address. */
typedef enum IP_TYPE_VER
{
    IP_TYPE_UNKNOWN = 0,
    IP_TYPE_V4 = 1,
    IP_TYPE_V6 = 2
} IP_TYPE_VER;

/* dual_flag of api_ipaddr_t: above 2 means an IPv6 address is present. */
enum
{
    API_DUAL_IP_NONE = 0,
    API_DUAL_IP_V4 = 1,
    API_DUAL_IP_V4_LINKLOCAL = 2, /* IPv6 only link-local: not reported */
    API_DUAL_IP_V4_V6 = 3
};

/* ------------------------------------------------------------------------ */
/* Statistics records                                                        */
/* ------------------------------------------------------------------------ */

typedef struct api_stats_data_t
{
    uint64_t count; /* I/Os */
    uint64_t bytes; /* bytes moved */
    uint64_t ticks; /* accumulated I/O time, microseconds */
} api_stats_data_t;

typedef struct api_stats_t
{
    api_stats_data_t read;
    api_stats_data_t write;
    uint64_t begin;     /* start of the counting interval, microseconds */
    uint64_t now;       /* sample time, microseconds */
    uint64_t busyticks; /* busy time within [begin, now], microseconds */
    uint32_t qlen;      /* current queue length */
} api_stats_t;

typedef struct api_cache_stats_t
{
    uint64_t hit;
    uint64_t miss;
} api_cache_stats_t;

/* One virtual volume. */
typedef struct api_VolumeStats_t
{
    char volDeviceID[API_VOL_DEVICE_ID_LEN]; /* WWN, 32 hex digits */
    time_t time;                             /* sample time, seconds */
    uint32_t vvID;                           /* volume number */
    char vvName[API_NAME_LEN];
    uint8_t vvStarted;
    uint32_t stats_gen;
    api_stats_t stats;
    api_cache_stats_t cacheRead;
    api_cache_stats_t cacheWrite;
} api_VolumeStats_t;

typedef struct api_VolumesStats_t
{
    uint32_t count;
    api_VolumeStats_t* stats; /* malloc'd, caller frees */
} api_VolumesStats_t;

/* One physical drive. */
typedef struct api_DiskStats_t
{
    jb_type_e cageType;
    char diskDeviceID[API_DEVICE_ID_LEN]; /* drive WWN */
    char diskName[API_NAME_LEN];          /* position "cage:magazine:disk" */
    time_t time;
    uint32_t diskID;
    uint32_t loopID;
    api_stats_t stats;
} api_DiskStats_t;

typedef struct api_DisksStats_t
{
    uint32_t count;
    api_DiskStats_t* stats; /* malloc'd, caller frees */
} api_DisksStats_t;

/* One controller port. */
typedef struct api_PortStats_t
{
    char portDeviceID[API_DEVICE_ID_LEN]; /* port WWN (FC, FCoE, SAS) or MAC (iSCSI, IP) */
    char nodeDeviceID[API_DEVICE_ID_LEN]; /* name of the node holding the port */
    char portName[API_NAME_LEN];          /* position "node:slot:port" */
    api_port_type_e type;
    time_t time;
    port_prot_e portProtocol;
    lpid_t portID;
    api_stats_t dataStats;
    api_stats_t ctlStats;
    unsigned int unused : 7;
} api_PortStats_t;

typedef struct api_PortsStats_t
{
    uint32_t count;
    api_PortStats_t* stats; /* malloc'd, caller frees */
} api_PortsStats_t;

/* Cache counters of one node; index 0 = read, 1 = write. */
typedef struct cmp_stats
{
    uint64_t cmp_total_ios[2];
    uint64_t cmp_hits[2];
    uint64_t cmp_blklck[2];
} cmp_stats;

/* Cache page list lengths of one node. */
typedef struct cmp_lru_lens
{
    int32_t lru_free_anon_len;
    int32_t lru_tmp_anon_len;
    int32_t lru_clean_len;
    int32_t lru_w1_len;
    int32_t lru_wn_len;
    int32_t lru_ws_len;
    int32_t lru_ldwrt_len;
    int32_t lru_dcow_pend_len;
    int32_t lru_dcow_proc_len;
    int32_t lru_cr_len[API_LRU_SUBLISTS];
    int32_t lru_crc_dirty_len;
    int32_t lru_crc_clean_len;
    int32_t lru_ddd_dirty_len[API_LRU_SUBLISTS];
    int32_t lru_ddd_clean_len[API_LRU_SUBLISTS];
    int32_t lru_ddd_proc_len[API_LRU_SUBLISTS];
    int32_t lru_dedup_dirty_len;
    int32_t lru_dedup_clean_len;
    int32_t lru_dedup_proc_len;
    int32_t lru_rcpy_primary_len;
    int32_t lru_rcpy_secondary_len;
    int32_t lru_rcpy_reserve_len;
} cmp_lru_lens;

/* Cache flush state of one device class on one node. */
typedef struct cmp_dev_stat
{
    int32_t cdev_cfc_dirty;
    int32_t cdev_cfc_max;
    int32_t cdev_dack;
} cmp_dev_stat;

/* Cache statistics of all nodes, indexed by node number. */
typedef struct api_NodeStats_t
{
    uint32_t cmp_online; /* bit n set: node n online */
    uint32_t cmp_time[API_MAX_NODES];
    cmp_stats cmp_cst[API_MAX_NODES];
    cmp_lru_lens cmp_lru[API_MAX_NODES];
    cmp_dev_stat cmp_cdev[API_MAX_NODES][API_CMP_DEV_CLASSES];
} api_NodeStats_t;

/* CPU statistics of one node (1080 bytes). Times are cumulative jiffies
 * (100 per second) per CPU; intr and ctxt are cumulative counts since boot. */
typedef struct cpustats
{
    uint32_t cpustat_now;   /* sample time, seconds */
    uint32_t cpustat_ns;    /* nanoseconds part of the sample time */
    uint32_t cpustat_ncpus; /* CPUs filled in the arrays below */
    uint32_t cpustat_reserved0;
    uint64_t cpustat_user[API_MAX_CPUS];
    uint64_t cpustat_nice[API_MAX_CPUS];
    uint64_t cpustat_sys[API_MAX_CPUS];
    uint64_t cpustat_idle[API_MAX_CPUS];
    uint64_t cpustat_intr;
    uint64_t cpustat_ctxt;
    uint64_t cpustat_btime; /* boot time, seconds since the epoch */
    uint64_t cpustat_procs; /* processes created since boot */
    uint64_t cpustat_reserved1;
} cpustats;

/* Error detail of api_getNodeCPUStats. */
typedef struct api_error_t
{
    int32_t code; /* same value as the call's status */
    char text[API_ERROR_TEXT_LEN];
} api_error_t;

/* One VLUN: a volume exported to a host through a port under a LUN. */
typedef struct api_VLunStats_t
{
    time_t time;
    uint32_t lunID;
    char vvName[API_NAME_LEN];
    lpid_t portID;    /* API_PORTID_NONE when not bound to a port */
    uint32_t vlunType;
    port_type_t portType;
    char host_hwid[API_HOST_HWID_LEN]; /* empty for template kinds */
    api_stats_t stats;
} api_VLunStats_t;

typedef struct api_VLunsStats_t
{
    uint32_t count;
    api_VLunStats_t* stats; /* malloc'd, caller frees */
} api_VLunsStats_t;

/* ------------------------------------------------------------------------ */
/* Configuration records                                                     */
/* ------------------------------------------------------------------------ */

/* One controller node of api_getNodes; the name comes first. */
typedef struct api_NodeInfo_t
{
    char nodeName[API_NAME_LEN]; /* node number as text, e.g. "0" */
    uint16_t nodeID;             /* node number 0..7 */
    uint8_t online;
    uint8_t master;
    uint32_t ncpus;
    uint64_t memoryMiB;
    uint64_t cacheMiB;
    char serial[API_NAME_LEN];
} api_NodeInfo_t;

typedef struct api_NodeList_t
{
    uint32_t count;
    api_NodeInfo_t* nodes; /* malloc'd, caller frees */
} api_NodeList_t;

/* One virtual volume of api_getVVs_chunk. */
typedef struct api_VVInfo_t
{
    char vvName[API_NAME_LEN];
    char vvWWN[API_VOL_DEVICE_ID_LEN]; /* same text as volDeviceID */
    uint32_t vvID;
    uint8_t started;
    uint8_t thin; /* 1 thinly provisioned */
    uint32_t blockSize;
    uint64_t sizeMiB;
    uint64_t usedMiB;
} api_VVInfo_t;

typedef struct api_VVsInfo_t
{
    uint32_t count;
    api_VVInfo_t* vvs; /* malloc'd, caller frees */
} api_VVsInfo_t;

/* Management addresses of the array. */
typedef struct api_ipaddr_t
{
    int32_t dual_flag;    /* API_DUAL_IP_...; above 2: ipv6_addr is valid */
    uint32_t ipv4_addr;   /* network byte order, as inet_ntoa takes it */
    uint8_t ipv6_addr[16];
} api_ipaddr_t;

/* Scratch area of api_wwnStringToInt. */
typedef struct api_wwn_scratch_t
{
    char text[64];
} api_wwn_scratch_t;

/* ------------------------------------------------------------------------ */
/* Calls                                                                     */
/* ------------------------------------------------------------------------ */

/* Opens the management connection for a user and checks that the user may
 * use the array. A null or empty name is the CIM server itself. 0 = allowed. */
int32_t api_orvOpenForCimserver(const char* userName);

/* Rights of a user, from address, for a lower-case operation name such as
 * "orv_blockstatisticsservice.getstatisticscollection". Answers
 * API_AUTH_GRANTED, API_AUTH_NO_RIGHTS, API_AUTH_DENIED or another value. */
int32_t api_authorizeCIMUser(const char* userName, const char* address, const char* operation);

/* Volume statistics. wwn/wwn_re select one volume (as api_wwnStringToInt
 * makes them) or, with wwn == API_WWN_ALL_VOLUMES, every volume.
 * chunkSize 0: every matching record in one call (cursor may be null and is
 * set to 0). chunkSize > 0: at most chunkSize records after *cursor_id; the
 * cursor advances and is 0 after the last chunk. A null cursor with a
 * positive chunk size is API_ERR_INVALID_ARG. */
int32_t api_getVolumeStats_chunk(api_VolumesStats_t* out, uint64_t wwn, uint64_t wwn_re,
                                 uint32_t* cursor_id, uint32_t chunkSize);

/* WWN text (1 to 32 hexadecimal digits, either case) to the two words: wwn
 * holds the upper 64 bits, wwn_re the lower 64 bits of the 128-bit number.
 * scratch may be null. Malformed text: API_ERR_INVALID_ARG, outputs untouched. */
int32_t api_wwnStringToInt(api_wwn_scratch_t* scratch, const char* text, uint64_t* wwn_re,
                           uint64_t* wwn);

/* The two words back to 32 upper-case hexadecimal digits and a NUL. */
int32_t api_wwnIntToString(uint64_t wwn_re, uint64_t wwn, char text[API_WWN_TEXT_LEN]);

/* Drive statistics. sel1: drive number or API_DISK_ALL/API_SEL_ANY;
 * sel2: reserved (pass API_WWN_ALL_VOLUMES); sel3: loop number or
 * API_SEL_ANY; sel4, sel5: reserved (pass API_SEL_ANY). */
int32_t api_getDiskStats(uint32_t sel1, uint64_t sel2, uint32_t sel3, uint32_t sel4, uint32_t sel5,
                         api_DisksStats_t* out);

/* Port statistics of the given type (API_PORT_TYPE_ALL = every type);
 * node, slot, port select a position, API_SEL_ANY = any. */
int32_t api_getPortStats(api_port_type_e portType, uint32_t node, uint32_t slot, uint32_t port,
                         api_PortsStats_t* out);

/* Controller nodes, in node-number order. */
int32_t api_getNodes(api_NodeList_t* out);

/* Cache statistics of every node. */
int32_t api_getNodeStats(api_NodeStats_t* out);

/* CPU statistics of one node; made without the semaphore. On failure err
 * (when not null) receives the status and a text. */
int32_t api_getNodeCPUStats(uint32_t node, cpustats* out, api_error_t* err);

/* VLUN statistics. sel1: reserved, 0. vvName: null or empty = every volume,
 * else the exact name. lunid: API_LUN_ALL or a LUN number. nsp_n, nsp_s,
 * nsp_p: node, slot, port of the record's portID, -1 = any; a record with
 * portID API_PORTID_NONE has node 253, slot -7, port -8, compared after the
 * same narrowing (so node 253 is selected by -3). */
int32_t api_getVLunStats(uint32_t sel1, const char* vvName, int32_t lunid, int8_t nsp_n,
                         int16_t nsp_s, int8_t nsp_p, api_VLunsStats_t* out);

/* Volume list in chunks; cursor and chunk size as api_getVolumeStats_chunk. */
int32_t api_getVVs_chunk(api_VVsInfo_t* out, uint32_t* cursor_id, uint32_t chunkSize);

/* Management addresses. */
int32_t api_getSystemDualIP(api_ipaddr_t* out);

/* ------------------------------------------------------------------------ */
/* Process services                                                          */
/* ------------------------------------------------------------------------ */

/* Process-wide semaphore serialising the list and statistics queries.
 * cim_sem_wait returns 0 when taken; a non-zero code means it was not
 * taken (and must not be posted). */
int cim_sem_wait(void);
int cim_sem_post(void);

/* Levels: 1 fatal, 2 error, 3 warning, 4 trace. Lines at or below the
 * threshold (ORV_LOG_LEVEL, default 2) go to ORV_LOG_FILE or stderr. */
void log_message(int level, const char* format, ...) ORVAPI_PRINTF(2, 3);

/* Prints to stderr without raising an event. */
void orv_print_no_evt(const char* format, ...) ORVAPI_PRINTF(1, 2);

/* Prints the message to stderr and aborts the process. */
void orv_panic(const char* format, ...) ORVAPI_PRINTF(1, 2) ORVAPI_NORETURN;

#ifdef __cplusplus
}
#endif

/* ------------------------------------------------------------------------ */
/* Layout checks                                                             */
/* ------------------------------------------------------------------------ */

#define ORVAPI_FIELD_SIZE(type, field) sizeof(((type*)0)->field)

ORVAPI_STATIC_ASSERT(sizeof(lpid_t) == 2, "lpid_t is 16 bits");
ORVAPI_STATIC_ASSERT(ORVAPI_FIELD_SIZE(api_VolumeStats_t, volDeviceID) == 33, "volDeviceID[33]");
ORVAPI_STATIC_ASSERT(ORVAPI_FIELD_SIZE(api_VolumeStats_t, vvName) == 32, "vvName[32]");
ORVAPI_STATIC_ASSERT(ORVAPI_FIELD_SIZE(api_VolumeStats_t, vvStarted) == 1, "vvStarted 8 bits");
ORVAPI_STATIC_ASSERT(ORVAPI_FIELD_SIZE(api_DiskStats_t, diskDeviceID) == 65, "diskDeviceID[65]");
ORVAPI_STATIC_ASSERT(ORVAPI_FIELD_SIZE(api_DiskStats_t, diskName) == 32, "diskName[32]");
ORVAPI_STATIC_ASSERT(ORVAPI_FIELD_SIZE(api_PortStats_t, portDeviceID) == 65, "portDeviceID[65]");
ORVAPI_STATIC_ASSERT(ORVAPI_FIELD_SIZE(api_PortStats_t, nodeDeviceID) == 65, "nodeDeviceID[65]");
ORVAPI_STATIC_ASSERT(ORVAPI_FIELD_SIZE(api_PortStats_t, portName) == 32, "portName[32]");
ORVAPI_STATIC_ASSERT(ORVAPI_FIELD_SIZE(api_VLunStats_t, vvName) == 32, "VLUN vvName[32]");
ORVAPI_STATIC_ASSERT(ORVAPI_FIELD_SIZE(api_VLunStats_t, host_hwid) == 224, "host_hwid[224]");
ORVAPI_STATIC_ASSERT(ORVAPI_FIELD_SIZE(api_NodeStats_t, cmp_time) == 8 * 4, "cmp_time[8]");
ORVAPI_STATIC_ASSERT(ORVAPI_FIELD_SIZE(api_NodeStats_t, cmp_cst) == 8 * sizeof(cmp_stats), "cmp_cst[8]");
ORVAPI_STATIC_ASSERT(ORVAPI_FIELD_SIZE(api_NodeStats_t, cmp_lru) == 8 * sizeof(cmp_lru_lens), "cmp_lru[8]");
ORVAPI_STATIC_ASSERT(ORVAPI_FIELD_SIZE(api_NodeStats_t, cmp_cdev) == 8 * 7 * sizeof(cmp_dev_stat),
                     "cmp_cdev[8][7]");
ORVAPI_STATIC_ASSERT(sizeof(cmp_stats) == 6 * 8, "cmp_stats: three pairs of 64-bit counters");
ORVAPI_STATIC_ASSERT(sizeof(cmp_lru_lens) == 49 * 4, "cmp_lru_lens: 49 signed 32-bit lengths");
ORVAPI_STATIC_ASSERT(sizeof(cmp_dev_stat) == 3 * 4, "cmp_dev_stat: three signed 32-bit values");
ORVAPI_STATIC_ASSERT(sizeof(cpustats) == 1080, "cpustats is 1080 bytes");
ORVAPI_STATIC_ASSERT(ORVAPI_FIELD_SIZE(cpustats, cpustat_user) == 32 * 8, "cpustat_user[32]");
ORVAPI_STATIC_ASSERT(ORVAPI_FIELD_SIZE(api_ipaddr_t, ipv6_addr) == 16, "ipv6_addr[16]");
ORVAPI_STATIC_ASSERT(ORVAPI_FIELD_SIZE(api_stats_t, qlen) == 4, "qlen 32 bits");

#undef ORVAPI_FIELD_SIZE

#endif /* ORV_PLATFORM_ORVAPI_H */
