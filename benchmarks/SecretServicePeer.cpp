#include "SecretServicePeer.h"

#include "Bench.h"

#if ZEB_BENCH_HAVE_LIBSECRET

#include <fcntl.h>
#include <libsecret/secret.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <memory>

namespace zeb::bench {

namespace {

/// A running session. Its first process waits for the end of its input, so that the session ends
/// with this program however that happens.
class KeyringSession {
 public:
  KeyringSession() {
    int input[2], output[2];
    require(pipe2(input, O_CLOEXEC) == 0 && pipe2(output, O_CLOEXEC) == 0, "no pipe can be made");
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input[0], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
    const char* const arguments[] = {ZEB_WITH_KEYRING, "sh", "-c",
                                     "echo \"$DBUS_SESSION_BUS_ADDRESS\"; exec cat >/dev/null",
                                     nullptr};
    const int failure = posix_spawn(&process_, ZEB_WITH_KEYRING, &actions, nullptr,
                                    const_cast<char**>(arguments), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(input[0]);
    close(output[1]);
    input_ = input[1];
    require(failure == 0, "the script with_keyring cannot be run");
    char byte = 0;
    std::string address;
    while (read(output[0], &byte, 1) == 1 && byte != '\n') address += byte;
    close(output[0]);
    if (byte == '\n') connect(address);
  }
  KeyringSession(const KeyringSession&) = delete;
  KeyringSession& operator=(const KeyringSession&) = delete;
  ~KeyringSession() {
    close(input_);
    waitpid(process_, nullptr, 0);
  }

  bool isRunning() const { return isRunning_; }

 private:
  void connect(const std::string& address) {
    setenv("DBUS_SESSION_BUS_ADDRESS", address.c_str(), 1);
    GDBusConnection* const bus = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr);
    require(bus != nullptr, "the session's bus does not answer");
    // The end of the session must not end this program.
    g_dbus_connection_set_exit_on_close(bus, FALSE);
    isRunning_ = true;
  }

  pid_t process_ = 0;
  int input_ = -1;
  bool isRunning_ = false;
};

const SecretSchema schema{
    "org.example.Mail",
    SECRET_SCHEMA_NONE,
    {{"service", SECRET_SCHEMA_ATTRIBUTE_STRING}, {"username", SECRET_SCHEMA_ATTRIBUTE_STRING}},
    0,
    nullptr,
    nullptr,
    nullptr,
    nullptr,
    nullptr,
    nullptr,
    nullptr};
constexpr const char* service = "org.example.mail";

void requireSuccess(GError* failure) {
  const std::unique_ptr<GError, void (*)(GError*)> error(failure, g_error_free);
  require(!error, error ? error->message : "");
}

}  // namespace

bool startSecretService() {
  static const KeyringSession session;
  return session.isRunning();
}

void storeWithLibsecret(const std::string& username, const std::string& password) {
  GError* error = nullptr;
  secret_password_store_sync(&schema, SECRET_COLLECTION_DEFAULT, service, password.c_str(), nullptr,
                             &error, "service", service, "username", username.c_str(), nullptr);
  requireSuccess(error);
}

std::string passwordFromLibsecret(const std::string& username) {
  GError* error = nullptr;
  const std::unique_ptr<gchar, void (*)(gchar*)> password(
      secret_password_lookup_nonpageable_sync(&schema, nullptr, &error, "service", service,
                                              "username", username.c_str(), nullptr),
      secret_password_free);
  requireSuccess(error);
  require(static_cast<bool>(password), "libsecret did not find the password");
  return password.get();
}

}  // namespace zeb::bench

#else

namespace zeb::bench {

bool startSecretService() { return false; }
void storeWithLibsecret(const std::string&, const std::string&) { require(false, "no libsecret"); }
std::string passwordFromLibsecret(const std::string&) {
  require(false, "no libsecret");
  return {};
}

}  // namespace zeb::bench

#endif
