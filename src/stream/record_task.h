// CRecordTask: records one live stream to AVI files.
//
// The stream's owner writes every video and audio frame into the task's two
// rings (VideoRing()/AudioRing(), 30 slots each, fed with Write only: flag =
// key-frame mark for video, time stamp in milliseconds on one clock for both)
// under its "record_task_object" lock. The record thread takes frames
// out in time order (audio first on equal stamps) and writes them to the
// current file; once the file length has passed it starts the next file at
// the next video key frame, until the recording's duration is used up or
// Stop() is called. Every file is written as "<name>.tmp" and moved to its
// final name when it is closed.
//
// Files: with a storage directory, one folder per day "YYYY-MM-DD" under it
// (the storage folder itself is never made) and files "HHMMSS-av-N.avi"
// (audio and video) or "HHMMSS-vv-N.avi" (video only), N = the stream kind
// when 1 or 2, else 1 for 640x480 and larger and 2 below; a name already
// taken gets "_2", "_3", ... before ".avi". With a file name, that name;
// should the 3,600 s cap split it, later files get "-2", "-3", ... before the
// extension.
//
// Lengths: a file lasts the maximum seconds per file, or the whole remaining
// duration when that is at most 11/10 of it; either way 10 to 3,600 s (so a
// duration of 0 or less gives one 10 s file). A file ends at the first video
// key frame after its length. Time runs on the task's clock (SetClock); by
// default the monotonic clock, sped up by the timer scale
// (base/time_scale.h).
//
// Free space: before each file, that of the storage folder (with a file
// name, its folder) must be 2,048 MB; a folder that does not exist has none.
//
// Events to the sink (OnRecordEvent, on the record thread): 42 a file was
// opened (its final path), 44 the task ended (""), 45 too little free space
// ("", also for a folder that does not exist or none set), 46 a file could
// not be opened (its temporary path), 47 writing the header failed (final
// path). A chunk that
// cannot be written closes the file under its temporary name; the rest of
// that file's frames are dropped.
//
// File format: the header image of avi_header.h; then chunks of an 8-byte
// identifier ("00dc" or "01wb" and four zero bytes), a 4-byte little-endian
// length and the frame bytes, with no padding; then the index: the word
// "idx1", a word with 32 x entries, and per video chunk four words:
// "00dc", flags (16 = key frame), offset of the chunk from the "movi" word,
// length. At the end the header is rewritten with the file size - 8 (offset
// 8), the video frame count (96) and the movie list size: 8 for the "movi"
// word plus, per video chunk, its length + 16.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "base/thread_class.h"
#include "quorvel/quorvel.h"
#include "stream/avi_chunk_writer.h"
#include "stream/frame_action.h"
#include "stream/ring_buffer.h"

class CRecordTask : public CThreadClass {
 public:
  CRecordTask(const __STREAM_AV_PARAM* params, int max_file_seconds, int duration_seconds,
              CGetFrameActionClass* sink, int stream_kind);
  ~CRecordTask() override;

  // Copies the stream parameters and settings (before Start). 0; -1 when
  // params is null.
  int SetTaskParam(const __STREAM_AV_PARAM* params, int max_file_seconds, int duration_seconds,
                   CGetFrameActionClass* sink, int stream_kind);
  // A storage directory, or with by_file_name the final ".avi" file name.
  // -1 for null; 0.
  int SetStorageBase(const char* base, int by_file_name);
  const char* GetStorageBase();
  // The folder whose free space decides whether a file may start.
  std::string FreeSpaceFolder();

  int Start(int stack_size = 0) override;  // starts the record thread
  int Stop();  // stops and joins it; the open file is closed and renamed
  // Wakes the record thread out of its wait first, then CThreadClass::Kill.
  int Kill(int wait) override;
  int Thread() override;
  // Thread() and its bookkeeping; then destroys the task when Destroy was
  // called on its own thread.
  int RunThread() override;

  // Stops the task and destroys it. From another thread this waits for the
  // record thread. From the record thread itself (a host that stops the
  // recording from the callback of a record event) it returns at once: the
  // thread closes its file, reports the end and destroys the task.
  static void Destroy(CRecordTask* task);

  // Events go to `sink` (before Start); the task owns it.
  void AdoptSink(std::unique_ptr<CGetFrameActionClass> sink);

  // Record tasks alive in the process.
  static int LiveCount() { return live_count_; }

  CRingBuffer* VideoRing() { return &video_ring_; }  // "record_video_inbuffer"
  CRingBuffer* AudioRing() { return &audio_ring_; }  // "record_audio_inbuffer"
  // Told by the writer after each frame: once a ring is half full, the
  // record thread is woken instead of sleeping out its idle wait.
  void FramesArrived();

  // One file: opens and writes the header (0; -1 header or folder, -2 open,
  // -4 header write), and closes it with index, final header and rename.
  int RecordBegin();
  int RecordEnd();
  // One chunk each; 0, or -1 when there is no file (none open, or given up
  // now). Video before the file's first key frame is dropped (0).
  int RecordOneVideoFrame(const unsigned char* data, int length, int flag);
  int RecordOneAudioFrame(const unsigned char* data, int length, int flag);

  int InitAVIHeader();    // builds the image for the stream (0 or -1)
  int UpdateAVIHeader();  // sizes and counts into the image
  int WriteAVIHeader();   // the image at the start of the file (0 or -1)
  int InitAVIIndex();
  int AddAVIIndex(const char* id, int flags, int length);
  int WriteAVIIndex();
  int CheckDiskFreeSpace(const char* path);

  // Length of the next file in seconds for the remaining duration.
  static int FileLengthSeconds(long long remaining_seconds, int max_file_seconds);

  // The clock of file lengths and durations, in milliseconds; set before
  // Start. An empty function restores the default.
  void SetClock(std::function<unsigned long()> clock);

  // Final names of the files closed so far, in order.
  std::vector<std::string> FinishedFiles();
  // Frames written into the current (or last) file.
  int VideoFrames() const { return video_frames_; }
  int AudioFrames() const { return audio_frames_; }

 private:
  // A frame buffer taken out of a ring, with its allocation.
  struct FrameBuffer {
    unsigned char* data = nullptr;
    int size = 0;
    int ring = 0;  // 0 video, 1 audio: buffers go back to the ring they came from
  };
  struct IndexEntry {
    uint32_t flags;
    uint64_t offset;
    uint32_t length;
  };

  unsigned long NowMs();
  // Waits while the rings fill: until FramesArrived wakes it, a stop, or
  // ms have passed.
  void WaitForFrames(unsigned long ms);
  bool RingHalfFull();  // a ring holds enough frames to wake the thread
  void SendEvent(int event, const char* text);
  // Writes frames into the file until the stop, or the file length followed
  // by a key frame.
  void RecordFrames(int file_seconds);
  // The oldest frame of a ring, its buffer taken in exchange for a spare;
  // null when there is none.
  unsigned char* TakeFrame(CRingBuffer* ring, int* length, int* flag, double* ts,
                           FrameBuffer* taken);
  // After a frame was recorded: its buffer waits for the flush when the
  // file refers to it, else it is a spare again.
  void FrameDone(const FrameBuffer& taken);
  void Recycle(const FrameBuffer& buffer);
  void ReleaseBuffers();
  // Queues one chunk: head, the VOL bytes if any, the frame. 0, or -1 when
  // the file had to be given up.
  int QueueChunk(const char* id, const unsigned char* vol, int vol_length,
                 const unsigned char* data, int length);
  // Writes the queued chunks; the frame buffers they referred to become
  // spares. False (the file given up) when the write failed.
  bool FlushChunks();
  // Writes the queued chunks up to the file's last whole block; the rest
  // waits for the next call, at most kHoldMs (of NowMs) in all. Frame
  // buffers written in full become spares. False as for FlushChunks.
  bool FlushBlocks();
  static const unsigned long kHoldMs = 1000;
  // After a flush: gives the file up when it failed, and makes spares of
  // the first `done` frame buffers in flight (all of them on failure).
  bool Flushed(bool ok, size_t done);
  int MakeFileNames();  // final_name_ and temp_name_ (0, or -1)
  // Closes the file after a failed write, keeping its ".tmp" name.
  void GiveUpFile();

  __STREAM_AV_PARAM params_;
  int max_file_seconds_ = 0;
  long long remaining_seconds_ = 0;
  int stream_kind_ = 0;
  CGetFrameActionClass* sink_ = nullptr;
  std::string storage_base_;
  int by_file_name_ = 0;

  // What the parameters tell.
  bool video_enable_ = false;
  bool audio_enable_ = false;
  int video_codec_ = 0;
  int audio_codec_ = 0;
  int width_ = 0, height_ = 0, bit_rate_ = 0, frame_rate_ = 0;
  int sample_rate_ = 0, bits_per_sample_ = 0, channels_ = 0;

  CRingBuffer video_ring_;
  CRingBuffer audio_ring_;

  CAviChunkWriter file_;
  bool header_written_ = false;
  bool referred_ = false;               // the last frame stays in the file's queue
  std::vector<FrameBuffer> in_flight_;  // referred to by queued chunks
  // Per ring, handed back for the frames taken: each ring keeps buffers of
  // the sizes its frames need, so none is re-allocated.
  std::vector<FrameBuffer> spares_[2];
  std::vector<unsigned char> header_;
  std::vector<IndexEntry> index_;
  // Counted by the task's thread, read by others (VideoFrames, AudioFrames).
  std::atomic<int> video_frames_{0};
  std::atomic<int> audio_frames_{0};
  uint64_t movie_bytes_ = 0;   // the movie list's count: video length + 16 each
  uint64_t movie_offset_ = 0;  // chunk bytes written after the "movi" word
  bool first_key_seen_ = false;
  bool vol_written_ = false;
  int file_number_ = 0;       // files begun by this task
  unsigned long begin_ms_ = 0;

  std::string final_name_;
  std::string temp_name_;
  std::vector<std::string> finished_;
  std::function<unsigned long()> clock_;
  std::unique_ptr<CGetFrameActionClass> owned_sink_;
  std::mutex wake_mutex_;
  std::condition_variable wake_;
  bool wake_pending_ = false;       // under wake_mutex_
  bool stop_asked_ = false;         // under wake_mutex_
  std::atomic<bool> waiting_{false};  // the record thread is in WaitForFrames
  bool delete_when_done_ = false;  // only touched on the record thread
  static std::atomic<int> live_count_;
};
