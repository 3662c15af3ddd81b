// The library opened for one run of the program, and a logged-in camera.
#pragma once

#include <functional>
#include <string>

#include "cli.h"
#include "notices.h"

// Standard output is the program's result (a table, JSON, XML): while one of
// these lives, whatever the library prints there (notes meant for host
// programs' developers) is dropped, or goes to standard error with --log.
class LibraryPrints {
 public:
  LibraryPrints();
  ~LibraryPrints();
  // Set once from --log.
  static void Show(bool on);
  LibraryPrints(const LibraryPrints&) = delete;
  LibraryPrints& operator=(const LibraryPrints&) = delete;

 private:
  int saved_ = -1;
};

// IP_NET_DVR_Init with the log switches and the callbacks installed;
// IP_NET_DVR_Cleanup at the end.
class Library {
 public:
  explicit Library(const LogOptions& log);
  ~Library();
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;
};

class CameraSession {
 public:
  explicit CameraSession(const ConnectionOptions& connection);
  ~CameraSession();  // logs out
  CameraSession(const CameraSession&) = delete;
  CameraSession& operator=(const CameraSession&) = delete;

  // Logs in and waits for the camera's verdict; false after reporting why.
  bool Open();
  long id() const { return id_; }
  int TimeoutMs() const { return connection_.TimeoutMs(); }
  const ConnectionOptions& connection() const { return connection_; }
  std::string Address() const;  // "host:port"

  // Queues a request with send (a library call returning its queue result)
  // and waits for the camera's reply to reply_code. False after reporting:
  // the call's failure code, a refusal, the link going down, or no reply in
  // time.
  bool Ask(const std::string& what, const std::function<long()>& send, long reply_code,
           Notice* reply = nullptr);
  // Waits for a status event of this session that match accepts, starting
  // from the notices after `since` (a value of Notices::End()). A lost link
  // ends the wait as a failure. False after reporting.
  bool AwaitEvent(const std::string& what, size_t since,
                  const std::function<bool(const Notice&)>& match, int timeout_ms,
                  Notice* found = nullptr);

 private:
  ConnectionOptions connection_;
  long id_ = 0;
};
