#include "base/debug_log_state.h"

namespace debuglog {

const char kName[] = "Quorvel";
const char kBuildDate[] = "Jul 25 2023";
const char kBuildTime[] = "13:08:44";

std::atomic<int> console{0};
std::atomic<int> to_file{0};
std::atomic<int> to_network{0};
int level = 0;
char monitor_ip[kMonitorIpSize] = "";
char log_dir[kDirSize] = "./";
int show_file_line = 0;
char start_time[64] = "";
FILE* file = nullptr;
int line_count = 0;
int file_index = 0;
int last_day = 0;
int sock = -1;
// Both locks are static and never destroyed: a line logged from another
// thread while the log is released or reloaded still finds a valid lock.
CRITICAL_SECTION log_lock = PTHREAD_MUTEX_INITIALIZER;
CRITICAL_SECTION sock_lock = PTHREAD_MUTEX_INITIALIZER;
int init_count = 0;
int lock_deleted = 0;
std::atomic<int> listener_running{0};
pthread_t listener_thread = 0;
unsigned long listener_id = 0;

void (*local_clock)(SYSTEMTIME*) = GetLocalTime;
char config_path[256] = "./player_dbg.cfg";
unsigned short monitor_port = 3000;

}  // namespace debuglog
