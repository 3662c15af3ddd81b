// GStreamer, GLib and FFmpeg keep process-wide allocations (type system,
// plugin registry, thread pools) for the life of the process; the leak
// checker is told to leave them alone.
extern "C" const char* __lsan_default_suppressions() {
  return "leak:libgstreamer-1.0.so\n"
         "leak:libgstrtspserver-1.0.so\n"
         "leak:libgstbase-1.0.so\n"
         "leak:libgobject-2.0.so\n"
         "leak:libglib-2.0.so\n"
         "leak:libgio-2.0.so\n"
         "leak:libgstreamer\n"
         "leak:/usr/lib/x86_64-linux-gnu/gstreamer-1.0/\n"
         "leak:/usr/lib/aarch64-linux-gnu/gstreamer-1.0/\n";
}
