#include <ZEBPlatform/Dispatch.h>

#include <cstdio>

int main() {
  using namespace zeb;
  const dispatch_queue_t queue = dispatch_queue_create("hello");
  dispatch_async(queue, [] { std::puts("hello"); });
  dispatch_sync(queue, [] {});
}
