/*
 * LAN discovery: finding cameras by UDP broadcast without logging in,
 * changing their network settings, rebooting and restoring them by serial
 * number, and finding a free IPv4 address for one. Included by quorvel.h
 * (needs QV_STATIC_ASSERT and the records of config_types.h).
 *
 * How a search works: IP_NET_DVR_StartSearchIPC starts one thread that
 * broadcasts a search request (UDP, 255.255.255.255 port 3001) on every
 * usable network interface each search interval (3000 ms unless
 * IP_NET_DVR_SetSearchInterval says otherwise) and collects the cameras'
 * answers into a table of at most 100 cameras, keyed by serial number. A
 * camera that answers again replaces its entry, so the table shows the
 * latest answer; recorders (device type containing "NVR") never enter it.
 * The table is read by index (0 .. count - 1) and survives
 * IP_NET_DVR_StopSearchIPC; it is emptied by IP_NET_DVR_SearchIPCReleaseInfo
 * or by the next start. Interfaces that appear while a search runs are used
 * from the next start on.
 *
 * Changes (modify, reboot, restore) are broadcast to every camera and
 * addressed by serial number inside the message: while a search runs they
 * go out through the search thread, otherwise at once. The camera's answer
 * is not awaited; a result of 0 means the message went out (or was queued).
 *
 * Loopback and interfaces named lo*, stf*, gif*, dummy* and vmnet* are never
 * used. A host without any other interface searches through one socket on
 * the wildcard address.
 */
#ifndef QUORVEL_DISCOVERY_H
#define QUORVEL_DISCOVERY_H

#include <stddef.h>

#define QV_MAX_SEARCH_ENTRIES 100

/* One camera found by a search; copied whole to the host. */
typedef struct IPC_ENTRY {
  char interface_name[32];   /* local interface that received the answer */
  char serial[32];           /* SerialNumber: the table's key */
  char device_type[32];      /* DeviceType */
  char p2p_id[48];           /* peer-to-peer identifier */
  unsigned char osd[256];    /* the camera's OSD text, always terminated */
  UserConfig user;           /* accounts: user name, password, group */
  MediaStreamConfig stream;  /* stream access: Auth, VideoPort, RTPOverRTSP, PTZPort, WEBPort */
  LANConfig lan;             /* wired network: MAC, DHCP, address, mask, gateway, DNS */
  long found_time;           /* seconds since the epoch when the answer came in */
} IPC_ENTRY;
QV_STATIC_ASSERT(offsetof(IPC_ENTRY, serial) == 32, "IPC_ENTRY layout");
QV_STATIC_ASSERT(offsetof(IPC_ENTRY, device_type) == 64, "IPC_ENTRY layout");
QV_STATIC_ASSERT(offsetof(IPC_ENTRY, p2p_id) == 96, "IPC_ENTRY layout");
QV_STATIC_ASSERT(offsetof(IPC_ENTRY, osd) == 144, "IPC_ENTRY layout");
QV_STATIC_ASSERT(offsetof(IPC_ENTRY, user) == 400, "IPC_ENTRY layout");
QV_STATIC_ASSERT(offsetof(IPC_ENTRY, stream) == 1604, "IPC_ENTRY layout");
QV_STATIC_ASSERT(offsetof(IPC_ENTRY, lan) == 2368, "IPC_ENTRY layout");
QV_STATIC_ASSERT(offsetof(IPC_ENTRY, lan.IPAddress) == 2390, "IPC_ENTRY layout");
QV_STATIC_ASSERT(offsetof(IPC_ENTRY, found_time) == 2784, "IPC_ENTRY layout");
QV_STATIC_ASSERT(sizeof(IPC_ENTRY) == 2792, "IPC_ENTRY layout");

/* ------------------------------------------------------------------ */
/* Search and the table of found cameras                               */
/* ------------------------------------------------------------------ */

/* The interval between search requests of the next search, in ms; values
 * below 200 are taken as 200. 0. */
QV_API long IP_NET_DVR_SetSearchInterval(unsigned int interval_ms);

/* Also accept answers whose root element is `name` (surrounding blanks are
 * dropped; an empty or null name goes back to the two built-in roots). While
 * a name is set, only answers that hold "</name>" are taken. 0. */
QV_API long IP_NET_DVR_Set_Search_ROOTNAME(const char* name);

/* Empties the table and starts searching (a running search is restarted).
 * 0, or QV_E_THREAD when the search thread cannot be started. */
QV_API long IP_NET_DVR_StartSearchIPC(void);

/* Stops the search thread and waits for it; the table stays. 0, or -1 when
 * the thread could not be joined. */
QV_API long IP_NET_DVR_StopSearchIPC(void);

/* Number of cameras in the table (0 .. 100). */
QV_API long IP_NET_DVR_GetSearchIPCCount(void);

/* Copies the camera at index into *entry. 0, or QV_E_INVALID_ARG for an
 * index outside 0 .. count - 1 or a null entry. */
QV_API long IP_NET_DVR_GetIPCInfo(long index, IPC_ENTRY* entry);

/* Empties the table. 0. */
QV_API long IP_NET_DVR_SearchIPCReleaseInfo(void);

/* ------------------------------------------------------------------ */
/* Remote changes                                                      */
/* ------------------------------------------------------------------ */

/* Sends new wired-network settings (lan) and/or new stream ports (stream:
 * Auth, VideoPort, RTPOverRTSP, PTZPort, WEBPort) to the camera with this
 * serial number; either may be null, not both. With both, two messages go
 * out, the network one first. A gateway of 0.0.0.0 or 255.255.255.255 (or
 * one that is not an address) is sent as the first address of the camera's
 * subnet, or 192.168.1.1 when address and mask give none. 0; QV_E_INVALID_ARG
 * without a serial number or without any settings; QV_E_NO_MEMORY when a
 * message cannot be built. */
QV_API long IP_NET_DVR_ModifyIPCBySN(const char* serial, LANConfig* lan,
                                     MediaStreamConfig* stream);

/* Replaces the table entry at index with *entry (the table shows it at
 * once) and sends its wired-network settings to the camera with its serial
 * number. 0, QV_E_INVALID_ARG or QV_E_NO_MEMORY. */
QV_API long IP_NET_DVR_ModifyIPCByIndex(long index, IPC_ENTRY* entry);

/* Reads a LANConfig element from xml and sends it to the camera at index;
 * the entry takes the new settings, and its new address is kept out of
 * IP_NET_DVR_GetOneIPAddress's answers. 0 (also for a null xml, which sends
 * nothing), QV_E_INVALID_ARG for a bad index, QV_E_BAD_REPLY when xml holds
 * no usable LANConfig, QV_E_NO_MEMORY. */
QV_API long IP_NET_DVR_ModifyIPCXML(long index, const char* xml);

/* The camera at index as XML: "<IPC_INFO>\n" serial and LANConfig elements,
 * MediaStreamConfig, UserConfig "</IPC_INFO>". With a null buffer: the size
 * needed (length + 1). Otherwise the length written (terminated), or
 * QV_E_BUFFER_TOO_SMALL when size is not above the length. QV_E_INVALID_ARG
 * for a bad index. */
QV_API long IP_NET_DVR_GetIPCInfoXML(long index, char* buffer, int size);

/* One setting of this host's default interface, refreshed at each call:
 * 0 a second address field (always empty), 1 netmask, 2 gateway, 3 first
 * DNS server, 4 second DNS server, 5 IPv4 address. With a null buffer: 33.
 * Otherwise the length written (terminated), QV_E_BUFFER_TOO_SMALL when size
 * is not above it, QV_E_INVALID_ARG for an index outside 0 .. 5. */
QV_API long IP_NET_DVR_GetNetworkParam(int index, char* buffer, int size);

/* Orders the camera with this serial number to reboot, or to go back to its
 * factory settings. 0, QV_E_INVALID_ARG for a null serial, QV_E_NO_MEMORY. */
QV_API long IP_NET_DVR_RebootIPCBySN(const char* serial);
QV_API long IP_NET_DVR_RestoreIPCBySN(const char* serial);

/* ------------------------------------------------------------------ */
/* Free address                                                        */
/* ------------------------------------------------------------------ */

/* Looks for an address that no one answers with an ICMP echo, from .254
 * downwards, skipping the gateway, the addresses of found cameras and those
 * given out by IP_NET_DVR_ModifyIPCXML. The scan is based on the second
 * address field of IP_NET_DVR_GetNetworkParam, which is always empty, so
 * the answer is an empty text: 0, with buffer[0] = 0. Needs raw-socket
 * rights for its probes. With a null buffer: 33; size below 33:
 * QV_E_BUFFER_TOO_SMALL. */
QV_API long IP_NET_DVR_GetOneIPAddress(char* buffer, int size);

#endif /* QUORVEL_DISCOVERY_H */
