#pragma once

#include <ZEBPlatform/Security/SecretService/ItemAttributesPrivate.h>
#include <ZEBPlatform/Security/SecretService/ServiceConnectionPrivate.h>

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace zeb {

/// Whether the user may be asked, and for how long the service waits for an answer.
struct ServicePrompts {
  bool areAllowed = false;
  double seconds = 0;
};

/// The calls to one collection of the service for one operation of the store. One thread at a time.
class ServiceCollection {
 public:
  ServiceCollection(const ServiceDeadline& deadline, const ServicePrompts& prompts) noexcept
      : deadline_(deadline), prompts_(prompts) {}

  /// Finds the collection by its alias, else by its label, and unlocks it if it is locked and the
  /// user may be asked.
  OSStatus open(std::shared_ptr<ServiceConnection> connection, const std::string& name);

  const ServiceDeadline& deadline() const noexcept { return deadline_; }
  void setDeadline(const ServiceDeadline& deadline) noexcept { deadline_ = deadline; }
  /// `errSecInteractionNotAllowed` if the collection is locked. Never asks the user, because other
  /// processes wait for the lock that the caller holds.
  OSStatus requireUnlocked();

  /// The paths of the items that have all these attributes.
  OSStatus search(GVariant* attributes, std::vector<std::string>& paths);
  /// The items at these paths, oldest first and without their values. Items that have vanished are
  /// left out.
  OSStatus read(std::span<const std::string> paths, std::vector<ServiceItem>& items);
  /// Fills in the values of the items that have one. `errSecDecode` if some can't be read; the
  /// others are there then.
  OSStatus readValues(std::span<ServiceItem> items);

  /// Makes an item and sets its path. `errSecParam`, here and below, if its attributes cannot be
  /// written.
  OSStatus create(ServiceItem& item);
  /// Replaces the attributes, and then the label that people see.
  OSStatus setAttributes(const ServiceItem& item);
  /// Replaces the value by that of the item; none is stored as an empty one.
  OSStatus setValue(const ServiceItem& item);
  /// Success also if the item has vanished.
  OSStatus remove(const std::string& path);

 private:
  OSStatus call(const std::string& path, const char* interface, const char* method,
                GVariant* arguments, const char* resultType, GLibPointer<GVariant>& result);
  OSStatus property(const std::string& path, const char* interface, const char* name,
                    const char* type, GLibPointer<GVariant>& value);
  OSStatus find(const std::string& name);
  OSStatus unlock();
  /// Shows the prompt, or dismisses it if the user must not be asked; nothing for "/".
  OSStatus answerPrompt(const std::string& prompt, const char* resultType,
                        GLibPointer<GVariant>& result);

  std::shared_ptr<ServiceConnection> connection_;
  ServiceDeadline deadline_;
  ServicePrompts prompts_;
  std::string path_;
};

}  // namespace zeb
