#include <ZEBPlatform/Security/SecretService/ServiceCollectionPrivate.h>

#include <algorithm>
#include <unordered_map>
#include <utility>

namespace zeb {

namespace {

constexpr const char* servicePath = "/org/freedesktop/secrets";
constexpr const char* serviceInterface = "org.freedesktop.Secret.Service";
constexpr const char* collectionInterface = "org.freedesktop.Secret.Collection";
constexpr const char* itemInterface = "org.freedesktop.Secret.Item";
constexpr const char* propertiesInterface = "org.freedesktop.DBus.Properties";
constexpr const char* attributesProperty = "org.freedesktop.Secret.Item.Attributes";
constexpr const char* labelProperty = "org.freedesktop.Secret.Item.Label";
constexpr std::string_view noPath = "/";

std::vector<std::string> pathsIn(GVariant* array) {
  std::vector<std::string> paths;
  for (std::size_t i = 0; i < g_variant_n_children(array); ++i) {
    paths.emplace_back(textIn(array, i));
  }
  return paths;
}

GVariant* arrayOf(std::span<const std::string> paths) {
  GVariantBuilder builder;
  g_variant_builder_init(&builder, G_VARIANT_TYPE("ao"));
  for (const std::string& path : paths) g_variant_builder_add(&builder, "o", path.c_str());
  return g_variant_builder_end(&builder);
}

std::span<const std::byte> secretOf(const ServiceItem& item) noexcept {
  return item.item.value ? item.item.value->bytes() : std::span<const std::byte>();
}

/// The status of a call to the service or the collection: there an object that is missing is the
/// place, not an item.
OSStatus ofPlace(OSStatus status) noexcept {
  return status == errSecItemNotFound ? errSecNotAvailable : status;
}

}  // namespace

OSStatus ServiceCollection::call(const std::string& path, const char* interface, const char* method,
                                 GVariant* arguments, const char* resultType,
                                 GLibPointer<GVariant>& result) {
  return connection_->call(path, interface, method, arguments, resultType, deadline_, result);
}

OSStatus ServiceCollection::property(const std::string& path, const char* interface,
                                     const char* name, const char* type,
                                     GLibPointer<GVariant>& value) {
  GLibPointer<GVariant> reply;
  const OSStatus status =
      call(path, propertiesInterface, "Get", g_variant_new("(ss)", interface, name), "(v)", reply);
  if (status != errSecSuccess) return status;
  GVariant* inner = nullptr;
  g_variant_get(reply.get(), "(v)", &inner);
  value.reset(inner);
  return g_variant_is_of_type(inner, G_VARIANT_TYPE(type)) ? errSecSuccess : errSecDecode;
}

OSStatus ServiceCollection::open(std::shared_ptr<ServiceConnection> connection,
                                 const std::string& name) {
  connection_ = std::move(connection);
  OSStatus status = find(name);
  if (status == errSecSuccess) status = requireUnlocked();
  if (status == errSecInteractionNotAllowed && prompts_.areAllowed) status = unlock();
  return ofPlace(status);
}

OSStatus ServiceCollection::find(const std::string& name) {
  GLibPointer<GVariant> result;
  OSStatus status = call(servicePath, serviceInterface, "ReadAlias",
                         g_variant_new("(s)", name.c_str()), "(o)", result);
  if (status != errSecSuccess) return status;
  path_ = textIn(result.get(), 0);
  if (path_ != noPath) return errSecSuccess;
  status = property(servicePath, serviceInterface, "Collections", "ao", result);
  if (status != errSecSuccess) return status;
  for (std::string& path : pathsIn(result.get())) {
    GLibPointer<GVariant> label;
    if (property(path, collectionInterface, "Label", "s", label) == errSecSuccess &&
        name == g_variant_get_string(label.get(), nullptr)) {
      path_ = std::move(path);
      return errSecSuccess;
    }
  }
  return errSecItemNotFound;
}

OSStatus ServiceCollection::requireUnlocked() {
  GLibPointer<GVariant> isLocked;
  const OSStatus status = property(path_, collectionInterface, "Locked", "b", isLocked);
  if (status != errSecSuccess || !g_variant_get_boolean(isLocked.get())) return status;
  return errSecInteractionNotAllowed;
}

OSStatus ServiceCollection::unlock() {
  GLibPointer<GVariant> result;
  OSStatus status = call(servicePath, serviceInterface, "Unlock",
                         g_variant_new("(@ao)", arrayOf({&path_, 1})), "(aoo)", result);
  if (status != errSecSuccess) return status;
  GLibPointer<GVariant> unlocked;
  status = answerPrompt(textIn(result.get(), 1), "ao", unlocked);
  if (status != errSecSuccess) return status;
  if (!unlocked) unlocked.reset(g_variant_get_child_value(result.get(), 0));
  return g_variant_n_children(unlocked.get()) == 1 ? errSecSuccess : errSecInteractionNotAllowed;
}

OSStatus ServiceCollection::answerPrompt(const std::string& prompt, const char* resultType,
                                         GLibPointer<GVariant>& result) {
  if (prompt == noPath) return errSecSuccess;
  if (prompts_.areAllowed) {
    // The user takes the time, so the service gets its own time again afterwards.
    const std::uint64_t left = static_cast<std::uint64_t>(deadline_.millisecondsLeft());
    const OSStatus status =
        connection_->prompt(prompt, resultType, ServiceDeadline(prompts_.seconds), result);
    deadline_ = ServiceDeadline(static_cast<double>(left) / 1000);
    return status;
  }
  connection_->dismiss(prompt, deadline_);
  return errSecInteractionNotAllowed;
}

OSStatus ServiceCollection::search(GVariant* attributes, std::vector<std::string>& paths) {
  GLibPointer<GVariant> result;
  const OSStatus status = call(path_, collectionInterface, "SearchItems",
                               g_variant_new("(@a{ss})", attributes), "(ao)", result);
  if (status != errSecSuccess) return ofPlace(status);
  const GLibPointer<GVariant> array(g_variant_get_child_value(result.get(), 0));
  paths = pathsIn(array.get());
  return errSecSuccess;
}

OSStatus ServiceCollection::read(std::span<const std::string> paths,
                                 std::vector<ServiceItem>& items) {
  for (const std::string& path : paths) {
    GLibPointer<GVariant> attributes;
    const OSStatus status = property(path, itemInterface, "Attributes", "a{ss}", attributes);
    if (status == errSecItemNotFound) continue;
    if (status != errSecSuccess) return status;
    items.push_back(itemWithAttributes(path, std::move(attributes)));
  }
  std::ranges::sort(items, {},
                    [](const ServiceItem& item) -> const std::string& { return item.order; });
  return errSecSuccess;
}

OSStatus ServiceCollection::readValues(std::span<ServiceItem> items) {
  std::vector<std::string> paths;
  for (const ServiceItem& item : items) {
    if (item.hasValue) paths.push_back(item.path);
  }
  if (paths.empty()) return errSecSuccess;
  GLibPointer<GVariant> result;
  const OSStatus status = call(servicePath, serviceInterface, "GetSecrets",
                               g_variant_new("(@aoo)", arrayOf(paths), connection_->sessionPath()),
                               "(a{o(oayays)})", result);
  if (status != errSecSuccess) return ofPlace(status);
  const GLibPointer<GVariant> secrets(g_variant_get_child_value(result.get(), 0));
  bool isComplete = true;
  for (ServiceItem& item : items) {
    if (!item.hasValue) continue;
    const GLibPointer<GVariant> secret(
        g_variant_lookup_value(secrets.get(), item.path.c_str(), nullptr));
    if (secret) item.item.value = connection_->decrypted(secret.get());
    if (!item.item.value) isComplete = false;
  }
  if (isComplete) return errSecSuccess;
  // The service leaves out the secrets of a collection that has just been locked.
  const OSStatus lock = requireUnlocked();
  return lock == errSecSuccess ? errSecDecode : lock;
}

OSStatus ServiceCollection::create(ServiceItem& item) {
  if (!item.attributes) return errSecParam;
  GVariant* const secret = connection_->encrypted(secretOf(item));
  if (!secret) return errSecAllocate;
  GVariantBuilder properties;
  g_variant_builder_init(&properties, G_VARIANT_TYPE_VARDICT);
  g_variant_builder_add(&properties, "{sv}", attributesProperty, item.attributes.get());
  g_variant_builder_add(&properties, "{sv}", labelProperty,
                        g_variant_new_string(visibleLabel(item.item).c_str()));
  GLibPointer<GVariant> result;
  OSStatus status =
      call(path_, collectionInterface, "CreateItem",
           g_variant_new("(@a{sv}@(oayays)b)", g_variant_builder_end(&properties), secret, FALSE),
           "(oo)", result);
  if (status != errSecSuccess) return ofPlace(status);
  item.path = textIn(result.get(), 0);
  GLibPointer<GVariant> created;
  status = answerPrompt(textIn(result.get(), 1), "o", created);
  if (status == errSecSuccess && created) item.path = g_variant_get_string(created.get(), nullptr);
  return status;
}

OSStatus ServiceCollection::setAttributes(const ServiceItem& item) {
  if (!item.attributes) return errSecParam;
  GLibPointer<GVariant> result;
  const OSStatus status = call(
      item.path, propertiesInterface, "Set",
      g_variant_new("(ssv)", itemInterface, "Attributes", item.attributes.get()), "()", result);
  if (status != errSecSuccess) return status;
  return call(item.path, propertiesInterface, "Set",
              g_variant_new("(ssv)", itemInterface, "Label",
                            g_variant_new_string(visibleLabel(item.item).c_str())),
              "()", result);
}

OSStatus ServiceCollection::setValue(const ServiceItem& item) {
  GVariant* const secret = connection_->encrypted(secretOf(item));
  if (!secret) return errSecAllocate;
  GLibPointer<GVariant> result;
  return call(item.path, itemInterface, "SetSecret", g_variant_new("(@(oayays))", secret), "()",
              result);
}

OSStatus ServiceCollection::remove(const std::string& path) {
  GLibPointer<GVariant> result;
  const OSStatus status = call(path, itemInterface, "Delete", nullptr, "(o)", result);
  if (status == errSecItemNotFound) return errSecSuccess;
  if (status != errSecSuccess) return status;
  GLibPointer<GVariant> nothing;
  return answerPrompt(textIn(result.get(), 0), "v", nothing);
}

}  // namespace zeb
