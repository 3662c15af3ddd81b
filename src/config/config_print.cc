#include "config/config_print.h"

#include <atomic>

namespace qvconfig {
namespace {
std::atomic<bool> g_messages{true};
}  // namespace

void SetConfigMessages(bool on) { g_messages = on; }
bool ConfigMessages() { return g_messages; }

}  // namespace qvconfig
