/*
 * File transfers with a logged-in camera: firmware upgrade, uploads,
 * downloads, the configuration file. Included by quorvel.h.
 *
 * A session runs one transfer at a time. Each function below only asks the
 * camera (a transfer request on the control link) and returns; the camera's
 * reply names how the file travels (over a data connection of its own or
 * inside the control link) and the transfer then runs on the session's
 * threads. Its end, and the progress of an upload over a data connection,
 * arrive as status events (IP_NET_DVR_SetStatusEventCallBack), whose data
 * is a RESPONSE_PARAM text:
 *   14 upload progress or success (Progress="100", or ErrorCode="0")
 *   15 upload failed
 *   16 download complete
 *   17 download failed
 * A download over a data connection is written to "<local>.tmp" and renamed
 * to the local name when it ends, also when it is incomplete: only the status
 * tells. A download inside the control link writes the local name directly
 * and removes it when it fails.
 *
 * These events are posted on the session's link thread, or on its file
 * send thread for transfers over a data connection.
 *
 * Results besides those common to every per-device function:
 *   -8999988 (QV_E_UPLOAD_BUSY)     an upload is running
 *   -8999987 (QV_E_DOWNLOAD_BUSY)   a download is running
 *   -8999986 (QV_E_TALK_BUSY)       voice talk is requested (downloads only)
 *   -8999985 (QV_E_TRANSFER_STOP)   nothing to stop
 *   -8999984 (QV_E_WRONG_DIRECTION) progress asked for the other direction
 *   -8999982 (QV_E_FILE_MISSING)    the local file is missing or unreadable
 * Paths are used as given, with no copy kept beyond the call.
 */
#ifndef QUORVEL_FILES_H
#define QUORVEL_FILES_H

/* Sends a firmware image (file type 1) to the camera. */
QV_API long IP_NET_DVR_Upgrade(long userID, const char* path);

/* Sends a file announced with type (1 firmware, 0 configuration file). */
QV_API long IP_NET_DVR_UploadFile(long userID, long type, const char* path);

/* Fetches remotePath into localDir: the local name is localDir, "/" and the
 * remote name's last part (after the last backslash, then the last slash);
 * it is also printed as "savefilepath:<name>". -8999992 for a null argument. */
QV_API long IP_NET_DVR_GetFileByName(long userID, long type, char* remotePath,
                                     const char* localDir);

/* Fetches the camera's configuration file ("/mnt/nand/config.xml") into
 * localPath. */
QV_API long IP_NET_DVR_GetConfigFile(long userID, const char* localPath);

/* Sends a configuration file (type 0): -1 when it does not parse as XML, -2
 * when it has no root element. */
QV_API long IP_NET_DVR_SetConfigFile(long userID, const char* path);

/* Percent moved of the running download / upload (0..100); 101 when no
 * transfer runs; -8999984 while a transfer in the other direction runs. */
QV_API long IP_NET_DVR_GetDownloadPos(long userID);
QV_API long IP_NET_DVR_GetUpgradeProgress(long userID);

/* Kept for compatibility: 0, without asking the session. */
QV_API long IP_NET_DVR_GetDownloadState(long userID);
QV_API long IP_NET_DVR_GetUpgradeState(long userID);
QV_API long IP_NET_DVR_StopGetFile(long userID);

/* Stops the running transfer, upload or download (status 15 or 17 follows
 * for a transfer over a data connection). 0, or -8999985 when none runs. */
QV_API long IP_NET_DVR_CloseUpgradeHandle(long userID);

#endif /* QUORVEL_FILES_H */
