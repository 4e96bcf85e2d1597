// Our main loop inside a Boost.Asio io_context.

#include <ZEBPlatform/RunLoop/NSRunLoop.h>

#include <boost/asio/io_context.hpp>
#include <boost/asio/posix/stream_descriptor.hpp>
#include <iostream>

#include "Work.h"

namespace {

using Descriptor = boost::asio::posix::stream_descriptor;

void waitForWork(Descriptor& descriptor) {
  descriptor.async_wait(Descriptor::wait_read, [&](boost::system::error_code error) {
    if (error) return;
    waitForWork(descriptor);  // first, so that our callbacks may run the context themselves
    zeb::NSRunLoop::mainRunLoop()->runPending();
  });
}

}  // namespace

int main() {
  boost::asio::io_context context(1);
  Descriptor descriptor(context, zeb::NSRunLoop::mainRunLoop()->pollableDescriptor());
  waitForWork(descriptor);

  startWork([&] { context.stop(); });
  context.run();
  descriptor.release();  // the run loop owns it
  std::cout << "the application's loop has ended\n";
}
