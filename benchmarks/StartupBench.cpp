#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>

#include "Bench.h"

namespace zeb::bench {

namespace {

constexpr int runs = 300;

/// Programs whose output is thrown away.
class Launcher {
 public:
  Launcher() {
    posix_spawn_file_actions_init(&actions_);
    for (const int descriptor : {STDOUT_FILENO, STDERR_FILENO}) {
      posix_spawn_file_actions_addopen(&actions_, descriptor, "/dev/null", O_WRONLY, 0);
    }
  }
  ~Launcher() { posix_spawn_file_actions_destroy(&actions_); }
  Launcher(const Launcher&) = delete;
  Launcher& operator=(const Launcher&) = delete;

  /// Seconds from the program's start to its end.
  double run(const std::string& program) const {
    std::string name = program;
    char* const arguments[] = {name.data(), nullptr};
    int status = -1;
    const double seconds = secondsOf([&] {
      pid_t process = 0;
      if (posix_spawn(&process, program.c_str(), &actions_, nullptr, arguments, environ) == 0) {
        waitpid(process, &status, 0);
      }
    });
    require(status == 0, program + " has failed");
    return seconds;
  }

 private:
  posix_spawn_file_actions_t actions_;
};

const Case startup("startup", [](Report& report) {
  const Launcher launcher;
  const auto measure = [&](const char* what, const std::string& program) {
    std::vector<double> ours, theirs;
    for (int run = 0; run < runs; ++run) {
      ours.push_back(launcher.run(ZEB_SIZE_PROGRAMS + program));
      theirs.push_back(launcher.run(ZEB_SIZE_PROGRAMS "size_nothing"));
    }
    const Seconds medians{median(std::move(ours)), median(std::move(theirs))};
    report.add(nanosecondsEach(what, "C++ program without this library", medians, 1));
  };
  measure("program that uses values", "size_values");
  measure("program that uses a queue", "size_dispatch");
});

}  // namespace

}  // namespace zeb::bench
