#pragma once

#include <ZEBPlatform/Security/SecBase.h>
#include <ZEBPlatform/Security/SecretBytes.h>
#include <ZEBPlatform/Security/SecretService/GLibPointersPrivate.h>
#include <ZEBPlatform/Security/SecretService/ServiceDeadlinePrivate.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

namespace zeb {

/// A connection with the session bus that nobody else uses, and an encrypted session with the
/// program that provides the Secret Service at that moment. Immutable apart from `isUsable`; any
/// thread.
class ServiceConnection {
 public:
  /// False in the child of a process that has asked before: GLib's threads do not exist there, and
  /// its locks may be held.
  static bool isPossible() noexcept;

  /// Connects, which starts the service if the bus can start it. `errSecNotAvailable` without bus
  /// or service, if the service cannot encrypt the session, and after the deadline.
  static OSStatus open(const ServiceDeadline& deadline,
                       std::shared_ptr<ServiceConnection>& connection);
  ServiceConnection(const ServiceConnection&) = delete;
  ServiceConnection& operator=(const ServiceConnection&) = delete;
  ~ServiceConnection();

  /// False once the bus or the service has gone; a new connection is needed then.
  bool isUsable() const noexcept;

  /// Calls a method of the object at `path` and waits for its result, a tuple of `resultType`.
  /// Floating arguments are consumed. `errSecItemNotFound` means that there is no such object.
  OSStatus call(const std::string& path, const char* interface, const char* method,
                GVariant* arguments, const char* resultType, const ServiceDeadline& deadline,
                GLibPointer<GVariant>& result);

  /// Shows the prompt at `path` to the user and waits for its end. `errSecInteractionNotAllowed` if
  /// the user refused or did not answer in time; `errSecNotAvailable` if the service has gone.
  OSStatus prompt(const std::string& path, const char* resultType, const ServiceDeadline& deadline,
                  GLibPointer<GVariant>& result);

  /// Ends a prompt without an answer.
  void dismiss(const std::string& path, const ServiceDeadline& deadline);

  const char* sessionPath() const noexcept;
  /// The bytes as the service expects them, encrypted for this session; floating. Null if there is
  /// no memory that can be protected.
  GVariant* encrypted(std::span<const std::byte> secret);
  /// None if the service's secret can't be decrypted.
  std::optional<SecretBytes> decrypted(GVariant* secret);

 private:
  ServiceConnection(GLibPointer<GDBusConnection> bus, GLibPointer<GMainContext> context,
                    GLibPointer<SecretService> service);

  const std::int32_t process_;  ///< the one that connected
  GLibPointer<GDBusConnection> bus_;
  GLibPointer<GMainContext> context_;   ///< on which the service's object releases its parts
  GLibPointer<SecretService> service_;  ///< knows the session and its keys
  std::string owner_;                   ///< the service's unique name on the bus
  std::atomic<bool> isServiceGone_{false};
};

}  // namespace zeb
