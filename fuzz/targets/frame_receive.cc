// Bytes a camera sends on the control link, read frame by frame through a
// socket pair until the stream ends: flag hunting, length checks and
// payload reads, each received payload then handed to the header reader as
// the link thread does.
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>

#include "fuzz_target.h"
#include "link/message_readers.h"
#include "link/packet_framing.h"

namespace {

// Inputs beyond this would not fit the socket buffer in one write.
const size_t kMaxInput = 64 * 1024;

}  // namespace

QV_FUZZ_TARGET(frame_receive) {
  if (size > kMaxInput) return 0;
  int fds[2];
  if (socketpair(AF_UNIX, SOCK_STREAM, 0, fds) != 0) return 0;
  int buffer = 4 * kMaxInput;
  setsockopt(fds[1], SOL_SOCKET, SO_SNDBUF, &buffer, sizeof(buffer));
  setsockopt(fds[0], SOL_SOCKET, SO_RCVBUF, &buffer, sizeof(buffer));
  size_t sent = 0;
  while (sent < size) {
    ssize_t n = send(fds[1], data + sent, size - sent, MSG_NOSIGNAL);
    if (n <= 0) break;
    sent += static_cast<size_t>(n);
  }
  close(fds[1]);

  CPacketFraming framing;
  for (;;) {
    char* payload = nullptr;
    int n = framing.recv_with_header(fds[0], &payload, 1000);
    if (n > 0) {
      if (payload == nullptr || n >= CPacketFraming::kMaxPayload) abort();
      payload[n] = '\0';
      char type[kHeaderFieldMax + 1], code[kHeaderFieldMax + 1], flag[kHeaderFieldMax + 1];
      TinyGetMessageHeader(payload, type, code, flag);
    }
    delete[] payload;
    // A refused length leaves the stream where it was: the hunt goes on.
    if (n <= 0 && n != CPacketFraming::kLengthTooSmall && n != CPacketFraming::kLengthTooLarge)
      break;
  }
  close(fds[0]);
  return 0;
}
