#include "rtsp_server.h"

#include <gst/gst.h>
#include <gst/rtsp-server/rtsp-server.h>

#include <condition_variable>
#include <deque>
#include <cstdio>
#include <mutex>
#include <utility>

namespace qvemu {
namespace {

const char kRole[] = "camera-user";

std::string Format(const char* fmt, int a, int b, int c) {
  char buf[256];
  snprintf(buf, sizeof(buf), fmt, a, b, c);
  return buf;
}

// A valve ahead of each payloader lets the silent option cut the media
// while the session stays up; sticky events (caps) still pass.
const char kGate[] = " ! valve name=gate%d drop-mode=forward-sticky-events";

std::string AudioBranch(const RtspOptions& o) {
  switch (o.audio) {
    case RtspAudio::kG711:
      return " audiotestsrc is-live=true wave=ticks ! audio/x-raw,rate=8000,channels=1"
             " ! mulawenc" + Format(kGate, 1, 0, 0) + " ! rtppcmupay name=pay1 pt=0";
    case RtspAudio::kAac:
      return " audiotestsrc is-live=true wave=ticks ! audio/x-raw,rate=16000,channels=1"
             " ! avenc_aac" + Format(kGate, 1, 0, 0) + " ! rtpmp4gpay name=pay1 pt=97";
    case RtspAudio::kNone:
      break;
  }
  return "";
}

struct Silencer {
  GstElement* gates[2];
};

gboolean CloseGates(gpointer data) {
  Silencer* s = static_cast<Silencer*>(data);
  for (GstElement* gate : s->gates) {
    if (gate != nullptr) g_object_set(gate, "drop", TRUE, nullptr);
  }
  return G_SOURCE_REMOVE;
}

void FreeSilencer(gpointer data) {
  Silencer* s = static_cast<Silencer*>(data);
  for (GstElement* gate : s->gates) {
    if (gate != nullptr) gst_object_unref(gate);
  }
  delete s;
}

// The MPEG-4 encoder of this GStreamer build hands out frames without time
// stamps. It neither reorders nor drops frames, so each output frame takes
// the time stamp of the input frame at the same position. Its output segment
// starts 1000 hours late (room for decoding times ahead of presentation
// times), so the input's segment replaces it: the restored stamps then give
// the right running time, which the RTCP sender reports are made from.
struct StampQueue {
  std::mutex mu;
  std::deque<std::pair<GstClockTime, GstClockTime>> stamps;  // pts, duration
  bool have_segment = false;
  GstSegment segment;  // the encoder's input segment
};

GstPadProbeReturn RememberSegment(GstPad*, GstPadProbeInfo* info, gpointer data) {
  StampQueue* q = static_cast<StampQueue*>(data);
  GstEvent* event = GST_PAD_PROBE_INFO_EVENT(info);
  if (GST_EVENT_TYPE(event) == GST_EVENT_SEGMENT) {
    const GstSegment* segment = nullptr;
    gst_event_parse_segment(event, &segment);
    std::lock_guard<std::mutex> lock(q->mu);
    gst_segment_copy_into(segment, &q->segment);
    q->have_segment = true;
  }
  return GST_PAD_PROBE_OK;
}

GstPadProbeReturn RestoreSegment(GstPad*, GstPadProbeInfo* info, gpointer data) {
  StampQueue* q = static_cast<StampQueue*>(data);
  GstEvent* event = GST_PAD_PROBE_INFO_EVENT(info);
  if (GST_EVENT_TYPE(event) != GST_EVENT_SEGMENT) return GST_PAD_PROBE_OK;
  std::lock_guard<std::mutex> lock(q->mu);
  if (!q->have_segment) return GST_PAD_PROBE_OK;
  GstEvent* replacement = gst_event_new_segment(&q->segment);
  gst_event_set_seqnum(replacement, gst_event_get_seqnum(event));
  gst_event_unref(event);
  GST_PAD_PROBE_INFO_DATA(info) = replacement;
  return GST_PAD_PROBE_OK;
}

GstPadProbeReturn RememberStamp(GstPad*, GstPadProbeInfo* info, gpointer data) {
  StampQueue* q = static_cast<StampQueue*>(data);
  GstBuffer* buffer = GST_PAD_PROBE_INFO_BUFFER(info);
  std::lock_guard<std::mutex> lock(q->mu);
  q->stamps.emplace_back(GST_BUFFER_PTS(buffer), GST_BUFFER_DURATION(buffer));
  return GST_PAD_PROBE_OK;
}

GstPadProbeReturn RestoreStamp(GstPad*, GstPadProbeInfo* info, gpointer data) {
  StampQueue* q = static_cast<StampQueue*>(data);
  std::pair<GstClockTime, GstClockTime> stamp;
  {
    std::lock_guard<std::mutex> lock(q->mu);
    if (q->stamps.empty()) return GST_PAD_PROBE_OK;
    stamp = q->stamps.front();
    q->stamps.pop_front();
  }
  GstBuffer* buffer = gst_buffer_make_writable(GST_PAD_PROBE_INFO_BUFFER(info));
  GST_BUFFER_PTS(buffer) = stamp.first;
  GST_BUFFER_DTS(buffer) = stamp.first;
  GST_BUFFER_DURATION(buffer) = stamp.second;
  GST_PAD_PROBE_INFO_DATA(info) = buffer;
  return GST_PAD_PROBE_OK;
}

void FreeStampQueue(gpointer data) { delete static_cast<StampQueue*>(data); }

void RestampEncoder(GstElement* bin) {
  GstElement* encoder = gst_bin_get_by_name(GST_BIN(bin), "mpeg4enc");
  if (encoder == nullptr) return;
  StampQueue* q = new StampQueue;
  g_object_set_data_full(G_OBJECT(encoder), "qvemu-stamps", q, FreeStampQueue);
  GstPad* sink = gst_element_get_static_pad(encoder, "sink");
  GstPad* src = gst_element_get_static_pad(encoder, "src");
  gst_pad_add_probe(sink, GST_PAD_PROBE_TYPE_BUFFER, RememberStamp, q, nullptr);
  gst_pad_add_probe(src, GST_PAD_PROBE_TYPE_BUFFER, RestoreStamp, q, nullptr);
  gst_pad_add_probe(sink, GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM, RememberSegment, q, nullptr);
  gst_pad_add_probe(src, GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM, RestoreSegment, q, nullptr);
  gst_object_unref(sink);
  gst_object_unref(src);
  gst_object_unref(encoder);
}

struct ConfigureContext {
  int silent_after_ms;
  GMainContext* context;
};

void OnMediaConfigure(GstRTSPMediaFactory*, GstRTSPMedia* media, gpointer data) {
  ConfigureContext* cc = static_cast<ConfigureContext*>(data);
  GstElement* bin = gst_rtsp_media_get_element(media);
  RestampEncoder(bin);
  if (cc->silent_after_ms < 0) {
    gst_object_unref(bin);
    return;
  }
  Silencer* s = new Silencer{{gst_bin_get_by_name(GST_BIN(bin), "gate0"),
                              gst_bin_get_by_name(GST_BIN(bin), "gate1")}};
  gst_object_unref(bin);
  GSource* timer = g_timeout_source_new(static_cast<guint>(cc->silent_after_ms));
  g_source_set_callback(timer, CloseGates, s, FreeSilencer);
  g_source_attach(timer, cc->context);
  g_source_unref(timer);
}

void FreeConfigureContext(gpointer data, GClosure*) { delete static_cast<ConfigureContext*>(data); }

GstRTSPFilterResult RemoveClient(GstRTSPServer*, GstRTSPClient*, gpointer) {
  return GST_RTSP_FILTER_REMOVE;
}

GstRTSPFilterResult RemoveSession(GstRTSPSessionPool*, GstRTSPSession*, gpointer) {
  return GST_RTSP_FILTER_REMOVE;
}

}  // namespace

std::string RtspLaunchLine(const RtspOptions& o, const std::string& path) {
  std::string video;
  if (path.empty() && !o.h264_clip.empty()) {
    return "( filesrc location=\"" + o.h264_clip + "\" ! parsebin ! h264parse" +
           Format(kGate, 0, 0, 0) + " ! rtph264pay name=pay0 pt=96 )";
  }
  if (path.empty()) {
    video = " videotestsrc is-live=true pattern=" + o.pattern +
            Format(" ! video/x-raw,width=%d,height=%d,framerate=%d/1", o.width, o.height, o.fps) +
            Format(" ! x264enc tune=zerolatency speed-preset=ultrafast key-int-max=%d"
                   " bitrate=%d ! video/x-h264,profile=constrained-baseline",
                   o.key_interval, o.bitrate_kbps, 0) +
            Format(kGate, 0, 0, 0) + " ! rtph264pay name=pay0 pt=96";
  } else {
    bool cif = path == "/mpeg4cif";
    video = " videotestsrc is-live=true pattern=" + o.pattern +
            Format(" ! video/x-raw,width=%d,height=%d,framerate=%d/1", cif ? 352 : o.width,
                   cif ? 288 : o.height, o.fps) +
            Format(" ! avenc_mpeg4 name=mpeg4enc gop-size=%d bitrate=%d", o.key_interval,
                   o.bitrate_kbps * 1000, 0) +
            Format(kGate, 0, 0, 0) + " ! rtpmp4vpay name=pay0 pt=96 max-ptime=1000000";
  }
  return "(" + video + AudioBranch(o) + " )";
}

RtspServer::~RtspServer() { Stop(); }

void RtspServer::OnClientConnected(GstRTSPServer*, void*, void* self) {
  ++static_cast<RtspServer*>(self)->clients_;
}

bool RtspServer::Start(const RtspOptions& options, int port) {
  if (server_ != nullptr) return false;
  if (!gst_init_check(nullptr, nullptr, nullptr)) return false;
  options_ = options;
  context_ = g_main_context_new();
  loop_ = g_main_loop_new(context_, FALSE);
  server_ = gst_rtsp_server_new();
  gst_rtsp_server_set_address(server_, "127.0.0.1");
  gst_rtsp_server_set_service(server_, std::to_string(port).c_str());
  g_signal_connect(server_, "client-connected", G_CALLBACK(&RtspServer::OnClientConnected), this);

  if (!options.user.empty()) {
    GstRTSPAuth* auth = gst_rtsp_auth_new();
    GstRTSPToken* token =
        gst_rtsp_token_new(GST_RTSP_TOKEN_MEDIA_FACTORY_ROLE, G_TYPE_STRING, kRole, nullptr);
    gchar* basic = gst_rtsp_auth_make_basic(options.user.c_str(), options.password.c_str());
    gst_rtsp_auth_add_basic(auth, basic, token);
    g_free(basic);
    gst_rtsp_auth_add_digest(auth, options.user.c_str(), options.password.c_str(), token);
    gst_rtsp_auth_set_supported_methods(
        auth, static_cast<GstRTSPAuthMethod>(GST_RTSP_AUTH_BASIC | GST_RTSP_AUTH_DIGEST));
    gst_rtsp_token_unref(token);
    gst_rtsp_server_set_auth(server_, auth);
    g_object_unref(auth);
  }

  GstRTSPMountPoints* mounts = gst_rtsp_server_get_mount_points(server_);
  static const char* const kPaths[] = {"", "/mpeg4", "/mpeg4cif"};
  for (const char* path : kPaths) {
    GstRTSPMediaFactory* factory = gst_rtsp_media_factory_new();
    gst_rtsp_media_factory_set_launch(factory, RtspLaunchLine(options, path).c_str());
    gst_rtsp_media_factory_set_shared(factory, options.shared ? TRUE : FALSE);
    if (!options.user.empty()) {
      gst_rtsp_media_factory_add_role(factory, kRole, GST_RTSP_PERM_MEDIA_FACTORY_ACCESS,
                                      G_TYPE_BOOLEAN, TRUE, GST_RTSP_PERM_MEDIA_FACTORY_CONSTRUCT,
                                      G_TYPE_BOOLEAN, TRUE, nullptr);
    }
    g_signal_connect_data(factory, "media-configure", G_CALLBACK(OnMediaConfigure),
                          new ConfigureContext{options.silent_after_ms, context_},
                          FreeConfigureContext, static_cast<GConnectFlags>(0));
    // A request without a path asks for "/".
    gst_rtsp_mount_points_add_factory(mounts, path[0] != '\0' ? path : "/", factory);
  }
  g_object_unref(mounts);

  source_id_ = gst_rtsp_server_attach(server_, context_);
  if (source_id_ == 0) {
    Stop();
    return false;
  }
  port_ = gst_rtsp_server_get_bound_port(server_);
  thread_ = std::thread([this] { g_main_loop_run(loop_); });
  return true;
}

std::string RtspServer::Url(const std::string& path) const {
  return "rtsp://127.0.0.1:" + std::to_string(port_) + path;
}

void RtspServer::Stop() {
  if (server_ == nullptr) return;
  if (thread_.joinable()) {
    // Clients and sessions are closed on the server's own loop, then the
    // loop ends.
    std::mutex mu;
    std::condition_variable cv;
    bool done = false;
    struct Closing {
      RtspServer* self;
      std::mutex* mu;
      std::condition_variable* cv;
      bool* done;
    } closing{this, &mu, &cv, &done};
    g_main_context_invoke(
        context_,
        [](gpointer data) -> gboolean {
          Closing* c = static_cast<Closing*>(data);
          gst_rtsp_server_client_filter(c->self->server_, RemoveClient, nullptr);
          GstRTSPSessionPool* pool = gst_rtsp_server_get_session_pool(c->self->server_);
          gst_rtsp_session_pool_filter(pool, RemoveSession, nullptr);
          g_object_unref(pool);
          std::lock_guard<std::mutex> lock(*c->mu);
          *c->done = true;
          c->cv->notify_all();
          return G_SOURCE_REMOVE;
        },
        &closing);
    {
      std::unique_lock<std::mutex> lock(mu);
      cv.wait(lock, [&] { return done; });
    }
    g_main_loop_quit(loop_);
    thread_.join();
  }
  if (source_id_ != 0) {
    GSource* source = g_main_context_find_source_by_id(context_, source_id_);
    if (source != nullptr) g_source_destroy(source);
    source_id_ = 0;
  }
  g_object_unref(server_);
  server_ = nullptr;
  g_main_loop_unref(loop_);
  loop_ = nullptr;
  g_main_context_unref(context_);
  context_ = nullptr;
  port_ = 0;
}

}  // namespace qvemu
