// Our main loop inside Qt's event loop.

#include <ZEBPlatform/RunLoop/NSRunLoop.h>

#include <QCoreApplication>
#include <QSocketNotifier>
#include <iostream>

#include "Work.h"

int main(int count, char** arguments) {
  QCoreApplication application(count, arguments);
  const zeb::Ref<zeb::NSRunLoop>& loop = zeb::NSRunLoop::mainRunLoop();
  QSocketNotifier notifier(loop->pollableDescriptor(), QSocketNotifier::Read);
  QObject::connect(&notifier, &QSocketNotifier::activated, [&] { loop->runPending(); });

  startWork([] { QCoreApplication::quit(); });
  QCoreApplication::exec();
  std::cout << "the application's loop has ended\n";
}
