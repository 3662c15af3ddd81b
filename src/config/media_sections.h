// The media section (MediaConfig: video and audio) and the stream section
// (MediaStreamConfig): readers from XML text, writers to XML text, the
// element-level readers and writers that the document load and save use,
// the lookup of a stream's encoding and the file store.
//
// Readers from text return 0, or -1 when the text does not parse, holds no
// such element or the record is null. Writers return a text the caller
// releases with free(), or null for a null record.
#pragma once

#include <upnp/ixml.h>

#include "quorvel/quorvel.h"

// ---- readers from XML text
int GetMediaCfgByXml(MediaConfig* cfg, const char* xml);
int Media_getAudioByXml(AudioConfig* cfg, const char* xml);
// Capture and Encode of the Audio element when the text has one, else the
// first element of the name.
int Media_getAudioCaptureByXml(AudioCaptureConfig* cfg, const char* xml);
int Media_getAudioEncodeByXml(AudioEncodeConfig* cfg, const char* xml);
int Media_getVideoByXml(VideoConfig* cfg, const char* xml);
// Capture and Encode of the Video element when the text has one, else the
// first element of the name.
int Media_getVideoCaptureByXml(VideoCaptureConfig* cfg, const char* xml);
int Media_getVideoEncodeByXml(VideoEncodeConfig* cfg, const char* xml);
int Media_getJpegEncodeByXml(JpegEncodeConfig* cfg, const char* xml);
int Media_getVideoOverlayByXml(VideoOverlayConfig* cfg, const char* xml);
int Media_getVideoUserOverlayByXml(VideoUserOverlayConfig* cfg, const char* xml);
int Media_getVideoMaskByXml(VideoMaskConfig* cfg, const char* xml);
int Media_getVideoROIByXml(VideoROIConfig* cfg, const char* xml);
int Media_getVideoYuvByXml(VideoYuvConfig* cfg, const char* xml);
int GetMediaStreamCfgByXml(MediaStreamConfig* cfg, const char* xml);

// ---- writers
char* XMLGET_MediaConfig(const MediaConfig* cfg);
char* XMLGET_AudioConfig(const AudioConfig* cfg);
char* XMLGET_AudioCaptureConfig(const AudioCaptureConfig* cfg);
char* XMLGET_AudioEncodeConfig(const AudioEncodeConfig* cfg);
char* XMLGET_VideoConfig(const VideoConfig* cfg);
char* XMLGET_VideoCaptureConfig(const VideoCaptureConfig* cfg);
char* XMLGET_VideoEncodeConfig(const VideoEncodeConfig* cfg);
char* XMLGET_VideoJpegEncodeConfig(const JpegEncodeConfig* cfg);
char* XMLGET_VideoOverlayConfig(const VideoOverlayConfig* cfg);
char* XMLGET_VideoUserOverlayConfig(const VideoUserOverlayConfig* cfg);
char* XMLGET_VideoMaskConfig(const VideoMaskConfig* cfg);
char* XMLGET_VideoROIConfig(const VideoROIConfig* cfg);
char* XMLGET_VideoYuvConfig(const VideoYuvConfig* cfg);
char* XMLGET_MediaStreamConfig(const MediaStreamConfig* cfg);
// The stream services as a discovery reply carries them: one StreamAccess
// element with the ports and switches a searching host shows (no file
// names, no RTMP schedule), attributes separated by blanks.
char* XMLGET_MediaStreamConfig_ForSearch(const MediaStreamConfig* cfg);

// ---- lookup
// The encoding of stream `id` (its slot, 0 to QV_MAX_ENCODE_STREAMS - 1), or
// null for another id or a null record.
VideoEncodeStream* GetVideoEncodeCfgByID(VideoEncodeConfig* cfg, int id);

// ---- file store (section read and section write)
int GetMediaConfig(MediaConfig* cfg);
int SetMediaConfig(const MediaConfig* cfg);
int GetMediaStreamConfig(MediaStreamConfig* cfg);
int SetMediaStreamConfig(const MediaStreamConfig* cfg);

// ---- diagnostics
// Prints every member of the record to standard output.
void ShowMediaConfig(const MediaConfig* cfg);

namespace qvconfig {

class XmlWriter;

// ---- element level: readers clear the record, set its defaults, read the
// attributes (and children) and apply the checks; 0.
int ReadAudioCapture(const IXML_Node* element, AudioCaptureConfig* cfg);
int ReadAudioEncode(const IXML_Node* element, AudioEncodeConfig* cfg);
int ReadAudioConfig(const IXML_Node* element, AudioConfig* cfg);
int ReadVideoCapture(const IXML_Node* element, VideoCaptureConfig* cfg);
int ReadVideoEncode(const IXML_Node* element, VideoEncodeConfig* cfg);
int ReadJpegEncode(const IXML_Node* element, JpegEncodeConfig* cfg);
int ReadVideoOverlay(const IXML_Node* element, VideoOverlayConfig* cfg);
int ReadVideoUserOverlay(const IXML_Node* element, VideoUserOverlayConfig* cfg);
int ReadVideoMask(const IXML_Node* element, VideoMaskConfig* cfg);
int ReadVideoROI(const IXML_Node* element, VideoROIConfig* cfg);
int ReadVideoYuv(const IXML_Node* element, VideoYuvConfig* cfg);
int ReadVideoConfig(const IXML_Node* element, VideoConfig* cfg);
int ReadMediaConfig(const IXML_Node* element, MediaConfig* cfg);
int ReadMediaStreamConfig(const IXML_Node* element, MediaStreamConfig* cfg);

void WriteAudioCapture(XmlWriter& out, const AudioCaptureConfig* cfg);
void WriteAudioEncode(XmlWriter& out, const AudioEncodeConfig* cfg);
void WriteAudioConfig(XmlWriter& out, const AudioConfig* cfg);
void WriteVideoCapture(XmlWriter& out, const VideoCaptureConfig* cfg);
void WriteVideoEncode(XmlWriter& out, const VideoEncodeConfig* cfg);
void WriteJpegEncode(XmlWriter& out, const JpegEncodeConfig* cfg);
void WriteVideoOverlay(XmlWriter& out, const VideoOverlayConfig* cfg);
void WriteVideoUserOverlay(XmlWriter& out, const VideoUserOverlayConfig* cfg);
void WriteVideoMask(XmlWriter& out, const VideoMaskConfig* cfg);
void WriteVideoROI(XmlWriter& out, const VideoROIConfig* cfg);
void WriteVideoYuv(XmlWriter& out, const VideoYuvConfig* cfg);
void WriteVideoConfig(XmlWriter& out, const VideoConfig* cfg);
void WriteMediaConfig(XmlWriter& out, const MediaConfig* cfg);
void WriteMediaStreamConfig(XmlWriter& out, const MediaStreamConfig* cfg);

}  // namespace qvconfig
