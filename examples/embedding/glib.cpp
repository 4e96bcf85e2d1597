// Our main loop inside a GLib main loop, as in a GTK application.

#include <ZEBPlatform/RunLoop/NSRunLoop.h>
#include <glib-unix.h>

#include <iostream>

#include "Work.h"

namespace {

gboolean runPending(gint, GIOCondition, gpointer) {
  zeb::NSRunLoop::mainRunLoop()->runPending();
  return G_SOURCE_CONTINUE;
}

}  // namespace

int main() {
  GMainLoop* const loop = g_main_loop_new(nullptr, FALSE);
  const int descriptor = zeb::NSRunLoop::mainRunLoop()->pollableDescriptor();
  GSource* const source = g_unix_fd_source_new(descriptor, G_IO_IN);
  const GUnixFDSourceFunc callback = runPending;
  g_source_set_callback(source, G_SOURCE_FUNC(callback), nullptr, nullptr);
  g_source_set_can_recurse(source, TRUE);  // our callbacks may run a dialog
  g_source_attach(source, nullptr);
  g_source_unref(source);

  startWork([loop] { g_main_loop_quit(loop); });
  g_main_loop_run(loop);
  g_main_loop_unref(loop);
  std::cout << "the application's loop has ended\n";
}
