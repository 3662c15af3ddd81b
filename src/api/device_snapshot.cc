// Exported snapshots: one picture on request, and the snapshot task that
// asks a list of cameras in turn until it is stopped.
#include <pthread.h>
#include <sys/prctl.h>

#include <atomic>
#include <cstdio>
#include <memory>
#include <new>

#include "api/ptz_object_list.h"
#include "api/snapshot_task.h"
#include "base/compat.h"
#include "base/debug_log.h"
#include "link/ptz_control_class.h"
#include "link/xml_request.h"
#include "quorvel/quorvel.h"

namespace {

const int kDefaultSnapWaitMs = 200;
const int kMaxTaskEntries = 64;
const int kTaskRequestSize = 4048;
const int kTaskSliceMs = 100;
// A round that slept nothing (interval 0 or less, or no entries) pauses this
// long, so that the task does not spin.
const int kIdleRoundPauseMs = 1;

// One task at a time; a new start gets a new generation, so that a thread
// of a stopped task that has not noticed yet never runs on.
std::atomic<int> g_task_running{0};
std::atomic<unsigned> g_task_generation{0};
// Task threads that may still touch the session table. Plain atomics: they
// stay usable while static objects are torn down at exit.
std::atomic<int> g_task_threads{0};

struct TaskRun {
  SNAPPIC_TASK task;
  unsigned generation;
};

bool TaskAlive(const TaskRun& run) {
  return g_task_running != 0 && g_task_generation == run.generation;
}

// Sleeps ms, in slices that notice a stop.
void TaskPause(const TaskRun& run, int ms) {
  unsigned long start = GetTickCount();
  while (TaskAlive(run) && GetTickCount() - start < static_cast<unsigned long>(ms)) {
    SleepMs(kTaskSliceMs < ms ? kTaskSliceMs : static_cast<unsigned long>(ms));
  }
}

void* SnapTaskThread(void* arg) {
  prctl(PR_SET_NAME, "snappicthread", 0, 0, 0);
  pthread_detach(pthread_self());
  std::unique_ptr<TaskRun> run(static_cast<TaskRun*>(arg));
  const SNAPPIC_TASK& task = run->task;
  char body[96];
  snprintf(body, sizeof(body), "<REQUEST_PARAM Stream=\"%d\" Quality=\"%d\"/>", task.stream,
           task.quality);
  char request[kTaskRequestSize];
  MakeXMLRequest(request, sizeof(request), "SYSTEM_CONTROL_MESSAGE", "1043", "0", body);
  int count = task.count < 0 ? 0 : (task.count > kMaxTaskEntries ? kMaxTaskEntries : task.count);
  while (TaskAlive(*run)) {
    bool slept = false;
    for (int i = 0; i < count && TaskAlive(*run); ++i) {
      CPTZControlClass* session = ObjectPtzList.FindObjectByID(task.userID[i], 0);
      if (session != nullptr) {
        QV_LOG("[%s:%d]snapic[%d]:userid:%ld,  buffer addr[%p] \n\n", i, task.userID[i],
               static_cast<void*>(task.buffer[i]));
        session->SnapPicEx(request, task.buffer[i], task.bufferSize[i]);
        ObjectPtzList.ReleaseObjLock();
      }
      if (task.interval > 0) {
        TaskPause(*run, task.interval);
        slept = true;
      }
    }
    if (!slept) TaskPause(*run, kIdleRoundPauseMs);
  }
  --g_task_threads;
  return nullptr;
}

}  // namespace

QV_API long IP_NET_DVR_SnapPic(long userID, int stream, int quality, const char* path,
                               int timeout) {
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, static_cast<int>(userID));
  if (stream < 0 || stream > 1 || quality < 0 || quality > 100 || path == nullptr ||
      path[0] == '\0') {
    return QV_E_INVALID_ARG;
  }
  if (timeout < 0) timeout = kDefaultSnapWaitMs;
  return ObjectPtzList.SnapPic(userID, stream, quality, path, timeout);
}

QV_API long IP_NET_DVR_SnapPicTaskStart(const SNAPPIC_TASK* task) {
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, 0);
  if (g_task_running != 0) {
    QV_LOG("[%s:%d]IP_NET_DVR_SnapPicTaskStart fail is running, stop task first\n\n");
    return -1;
  }
  if (task == nullptr) {
    QV_LOG("[%s:%d]IP_NET_DVR_SnapPicTaskStart fail param error\n\n");
    return -1;
  }
  TaskRun* run = new (std::nothrow) TaskRun{*task, ++g_task_generation};
  pthread_t thread;
  g_task_running = 1;
  ++g_task_threads;
  if (run == nullptr || pthread_create(&thread, nullptr, SnapTaskThread, run) != 0) {
    --g_task_threads;
    g_task_running = 0;
    delete run;
    QV_LOG("[%s:%d]IP_NET_DVR_SnapPicTaskStart start thread fail\n\n");
    return -1;
  }
  SleepMs(30);
  return 0;
}

void StopSnapTaskThreads(unsigned long wait_ms) {
  g_task_running = 0;
  unsigned long start = GetTickCount();
  while (g_task_threads > 0 && GetTickCount() - start < wait_ms) SleepMs(5);
}

QV_API long IP_NET_DVR_SnapPicTaskStop(void) {
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, 0);
  g_task_running = 0;
  SleepMs(300);
  return 0;
}
