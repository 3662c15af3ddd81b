// The camera's answer to a talk start: the audio parameters read from it.
#include <string>

#include "fuzz_target.h"
#include "link/message_readers.h"

QV_FUZZ_TARGET(talk_reply) {
  std::string message = qvfuzz::Text(data, size);
  int port = 0, codec = 0, rate = 0, bits = 0, channels = 0, connection = 0;
  GetAudioRTPParam(&message[0], &port, &codec, &rate, &bits, &channels, &connection);
  return 0;
}
