#define SECRET_API_SUBJECT_TO_CHANGE  // for the encryption of single secrets

#include <ZEBPlatform/Linux/detail/ProcessFacts.h>
#include <ZEBPlatform/Memory/FunctionView.h>
#include <ZEBPlatform/Security/SecretService/ServiceConnectionPrivate.h>

#include <cstring>
#include <utility>

namespace zeb {

namespace {

constexpr const char* promptInterface = "org.freedesktop.Secret.Prompt";

/// The process that has used GLib; 0 if none has.
std::atomic<std::int32_t> processOfGLib{0};

/// What GLib's objects have scheduled on the context, such as the release of their parts.
void runPendingWork(GMainContext* context) {
  while (g_main_context_iteration(context, FALSE)) continue;
}

/// Waits for one asynchronous function of GLib and cancels it at the deadline. The synchronous
/// functions have no time limit while they connect. The function runs on a context of this object,
/// because the host need not run GLib's main loop.
class BoundedWait {
 public:
  explicit BoundedWait(const ServiceDeadline& deadline)
      : context_(g_main_context_new()), cancellable_(g_cancellable_new()) {
    g_main_context_push_thread_default(context_.get());
    timeout_.reset(g_timeout_source_new(static_cast<guint>(deadline.millisecondsLeft())));
    g_source_set_callback(timeout_.get(), cancel, cancellable_.get(), nullptr);
    g_source_attach(timeout_.get(), context_.get());
  }
  BoundedWait(const BoundedWait&) = delete;
  BoundedWait& operator=(const BoundedWait&) = delete;
  ~BoundedWait() {
    g_source_destroy(timeout_.get());
    g_main_context_pop_thread_default(context_.get());
    result_.reset();  // which owns the object that may release its parts now
    runPendingWork(context_.get());
  }

  GMainContext* context() const noexcept { return context_.get(); }
  GCancellable* cancellable() const noexcept { return cancellable_.get(); }
  /// The callback for the function, to be passed with this object.
  static void finished(GObject*, GAsyncResult* result, gpointer wait) {
    static_cast<BoundedWait*>(wait)->result_.reset(G_ASYNC_RESULT(g_object_ref(result)));
  }
  /// Waits until the condition is true or the deadline has passed. Checks it after events of the
  /// context, and regularly for what is no event of it, such as that the bus has gone.
  void runUntil(FunctionView<bool()> condition) {
    const GLibPointer<GSource> check(g_timeout_source_new(250));
    g_source_set_callback(
        check.get(), [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr, nullptr);
    g_source_attach(check.get(), context_.get());
    while (!condition() && !g_cancellable_is_cancelled(cancellable_.get()))
      g_main_context_iteration(context_.get(), TRUE);
    g_source_destroy(check.get());
  }
  GAsyncResult* result() {
    while (!result_) g_main_context_iteration(context_.get(), TRUE);
    return result_.get();
  }

 private:
  static gboolean cancel(gpointer cancellable) {
    g_cancellable_cancel(static_cast<GCancellable*>(cancellable));
    return G_SOURCE_REMOVE;
  }

  GLibPointer<GMainContext> context_;
  GLibPointer<GCancellable> cancellable_;
  GLibPointer<GSource> timeout_;
  GLibPointer<GAsyncResult> result_;
};

/// Receives, on the thread's current context, the end of a prompt: its result, or that the service
/// has left the bus.
class PromptEnd {
 public:
  PromptEnd(GDBusConnection* bus, const std::string& service, const std::string& path)
      : bus_(bus),
        result_(g_dbus_connection_signal_subscribe(
            bus, service.c_str(), promptInterface, "Completed", path.c_str(), nullptr,
            G_DBUS_SIGNAL_FLAGS_NONE, completed, this, nullptr)),
        departure_(g_dbus_connection_signal_subscribe(
            bus, "org.freedesktop.DBus", "org.freedesktop.DBus", "NameOwnerChanged",
            "/org/freedesktop/DBus", service.c_str(), G_DBUS_SIGNAL_FLAGS_NONE, departed, this,
            nullptr)) {}
  PromptEnd(const PromptEnd&) = delete;
  PromptEnd& operator=(const PromptEnd&) = delete;
  ~PromptEnd() {
    g_dbus_connection_signal_unsubscribe(bus_, result_);
    g_dbus_connection_signal_unsubscribe(bus_, departure_);
  }

  bool isCompleted() const noexcept { return parameters_ != nullptr; }
  bool isServiceGone() const noexcept { return isServiceGone_; }
  /// Null if the user refused, or if the result is not of the type.
  GLibPointer<GVariant> result(const char* type) const {
    gboolean isDismissed = TRUE;
    GVariant* inner = nullptr;
    if (!isCompleted() || !g_variant_is_of_type(parameters_.get(), G_VARIANT_TYPE("(bv)")))
      return nullptr;
    g_variant_get(parameters_.get(), "(bv)", &isDismissed, &inner);
    GLibPointer<GVariant> result(inner);
    if (isDismissed || !g_variant_is_of_type(inner, G_VARIANT_TYPE(type))) return nullptr;
    return result;
  }

 private:
  static void completed(GDBusConnection*, const char*, const char*, const char*, const char*,
                        GVariant* parameters, gpointer end) {
    static_cast<PromptEnd*>(end)->parameters_.reset(g_variant_ref(parameters));
  }
  static void departed(GDBusConnection*, const char*, const char*, const char*, const char*,
                       GVariant*, gpointer end) {
    static_cast<PromptEnd*>(end)->isServiceGone_ = true;
  }

  GDBusConnection* const bus_;
  const guint result_;
  const guint departure_;
  GLibPointer<GVariant> parameters_;
  bool isServiceGone_ = false;
};

/// The address of the session bus that runs; empty if there is none. GLib's own function would
/// start a bus instead, and wait for the program that starts it without a time limit.
std::string sessionBusAddress() {
  // Null in a program with raised privileges, which must not trust its environment.
  if (const char* const address = secure_getenv("DBUS_SESSION_BUS_ADDRESS")) {
    return std::strstr(address, "autolaunch:") ? "" : address;
  }
  const char* const folder = secure_getenv("XDG_RUNTIME_DIR");
  if (!folder || *folder != '/') return "";
  const std::string path = std::string(folder) + "/bus";
  if (!g_file_test(path.c_str(), G_FILE_TEST_EXISTS)) return "";
  const GLibPointer<char> escaped(g_dbus_address_escape_value(path.c_str()));
  return std::string("unix:path=") + escaped.get();
}

GLibPointer<GDBusConnection> connectedBus(const ServiceDeadline& deadline) {
  const std::string address = sessionBusAddress();
  if (address.empty()) return nullptr;
  BoundedWait wait(deadline);
  const auto flags =
      static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                        G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
  g_dbus_connection_new_for_address(address.c_str(), flags, nullptr, wait.cancellable(),
                                    BoundedWait::finished, &wait);
  return GLibPointer<GDBusConnection>(
      g_dbus_connection_new_for_address_finish(wait.result(), nullptr));
}

/// Sets a property of the proxy that counts when the proxy is initialised. GLib permits that only
/// during construction, where libsecret overrides our choice.
void setProxyProperty(SecretService* service, const char* name, GType type, int number) {
  auto* const proxyClass = static_cast<GObjectClass*>(g_type_class_peek(G_TYPE_DBUS_PROXY));
  GParamSpec* const property = g_object_class_find_property(proxyClass, name);
  GValue value = G_VALUE_INIT;
  g_value_init(&value, type);
  if (G_TYPE_IS_ENUM(type)) {
    g_value_set_enum(&value, number);
  } else {
    g_value_set_flags(&value, static_cast<guint>(number));
  }
  proxyClass->set_property(G_OBJECT(service), property->param_id, &value, property);
  g_value_unset(&value);
}

/// libsecret's object for the service, with a session. By itself it would use the connection that
/// all users of GLib in the process share: GLib ends the process when the bus closes it, and a lost
/// one stays lost. It would also receive the service's signals, which would pile up in programs
/// that do not run GLib's main loop.
/// `context` becomes the one on which the object releases its parts.
GLibPointer<SecretService> openedSession(GDBusConnection* bus, const ServiceDeadline& deadline,
                                         GLibPointer<GMainContext>& context) {
  BoundedWait wait(deadline);
  GLibPointer<SecretService> service(SECRET_SERVICE(g_object_new(
      SECRET_TYPE_SERVICE, "g-connection", bus, "flags", SECRET_SERVICE_OPEN_SESSION, nullptr)));
  setProxyProperty(service.get(), "g-bus-type", G_TYPE_BUS_TYPE, G_BUS_TYPE_NONE);
  setProxyProperty(
      service.get(), "g-flags", G_TYPE_DBUS_PROXY_FLAGS,
      G_DBUS_PROXY_FLAGS_DO_NOT_LOAD_PROPERTIES | G_DBUS_PROXY_FLAGS_DO_NOT_CONNECT_SIGNALS);
  g_async_initable_init_async(G_ASYNC_INITABLE(service.get()), G_PRIORITY_DEFAULT,
                              wait.cancellable(), BoundedWait::finished, &wait);
  if (!g_async_initable_init_finish(G_ASYNC_INITABLE(service.get()), wait.result(), nullptr)) {
    return nullptr;
  }
  context.reset(g_main_context_ref(wait.context()));
  return service;
}

/// Whether secrets cross the bus encrypted. With a service that refuses this, libsecret opens a
/// session for plain secrets instead.
bool isEncrypted(SecretService* service) {
  const char* const algorithms = secret_service_get_session_algorithms(service);
  return algorithms && std::strcmp(algorithms, "dh-ietf1024-sha256-aes128-cbc-pkcs7") == 0;
}

/// What the failure of a call means for the caller, and whether the connection is of no more use.
struct Failure {
  OSStatus status;
  bool isServiceGone;
};

Failure failureOf(const GError* error) {
  if (error->domain == G_IO_ERROR) {
    if (error->code == G_IO_ERROR_CLOSED) return {errSecNotAvailable, true};
    if (error->code == G_IO_ERROR_TIMED_OUT) return {errSecNotAvailable, false};
  }
  static constexpr struct {
    const char* name;
    Failure failure;
  } failures[] = {
      {"org.freedesktop.Secret.Error.IsLocked", {errSecInteractionNotAllowed, false}},
      {"org.freedesktop.Secret.Error.NoSuchObject", {errSecItemNotFound, false}},
      {"org.freedesktop.DBus.Error.UnknownObject", {errSecItemNotFound, false}},
      {"org.freedesktop.DBus.Error.UnknownMethod", {errSecItemNotFound, false}},
      {"org.freedesktop.Secret.Error.NoSession", {errSecNotAvailable, true}},
      {"org.freedesktop.DBus.Error.ServiceUnknown", {errSecNotAvailable, true}},
      {"org.freedesktop.DBus.Error.NameHasNoOwner", {errSecNotAvailable, true}},
      {"org.freedesktop.DBus.Error.NoReply", {errSecNotAvailable, true}},
      {"org.freedesktop.DBus.Error.Disconnected", {errSecNotAvailable, true}},
      {"org.freedesktop.DBus.Error.AccessDenied", {errSecNotAvailable, false}},
  };
  const GLibPointer<char> name(g_dbus_error_get_remote_error(error));
  for (const auto& each : failures) {
    if (name && std::strcmp(name.get(), each.name) == 0) return each.failure;
  }
  return {errSecIO, false};
}

}  // namespace

bool ServiceConnection::isPossible() noexcept {
  const std::int32_t process = processIdentifier();
  std::int32_t user = 0;
  return processOfGLib.compare_exchange_strong(user, process) || user == process;
}

OSStatus ServiceConnection::open(const ServiceDeadline& deadline,
                                 std::shared_ptr<ServiceConnection>& connection) {
  GLibPointer<GDBusConnection> bus = connectedBus(deadline);
  if (!bus) return errSecNotAvailable;
  GLibPointer<GMainContext> context;
  GLibPointer<SecretService> service = openedSession(bus.get(), deadline, context);
  if (!service) return errSecNotAvailable;
  // From here on the connection's destructor frees all parts.
  connection.reset(new ServiceConnection(std::move(bus), std::move(context), std::move(service)));
  if (!isEncrypted(connection->service_.get())) connection.reset();
  return connection && connection->isUsable() ? errSecSuccess : errSecNotAvailable;
}

ServiceConnection::ServiceConnection(GLibPointer<GDBusConnection> bus,
                                     GLibPointer<GMainContext> context,
                                     GLibPointer<SecretService> service)
    : process_(processIdentifier()),
      bus_(std::move(bus)),
      context_(std::move(context)),
      service_(std::move(service)) {
  const GLibPointer<char> owner(g_dbus_proxy_get_name_owner(G_DBUS_PROXY(service_.get())));
  if (owner) owner_ = owner.get();
}

ServiceConnection::~ServiceConnection() {
  if (process_ == processIdentifier()) {
    service_.reset();
    runPendingWork(context_.get());
    return;
  }
  // In the child of a fork GLib's locks may be held by threads that do not exist.
  static_cast<void>(bus_.release());
  static_cast<void>(context_.release());
  static_cast<void>(service_.release());
}

bool ServiceConnection::isUsable() const noexcept {
  return !owner_.empty() && !isServiceGone_ && !g_dbus_connection_is_closed(bus_.get());
}

OSStatus ServiceConnection::call(const std::string& path, const char* interface, const char* method,
                                 GVariant* arguments, const char* resultType,
                                 const ServiceDeadline& deadline, GLibPointer<GVariant>& result) {
  GError* failure = nullptr;
  // The unique name: a service that was started anew does not know our session.
  result.reset(g_dbus_connection_call_sync(bus_.get(), owner_.c_str(), path.c_str(), interface,
                                           method, arguments, G_VARIANT_TYPE(resultType),
                                           G_DBUS_CALL_FLAGS_NO_AUTO_START,
                                           deadline.millisecondsLeft(), nullptr, &failure));
  if (result) return errSecSuccess;
  const GLibPointer<GError> error(failure);
  const auto [status, isServiceGone] = failureOf(error.get());
  if (isServiceGone) isServiceGone_ = true;
  return status;
}

OSStatus ServiceConnection::prompt(const std::string& path, const char* resultType,
                                   const ServiceDeadline& deadline, GLibPointer<GVariant>& result) {
  // libsecret's function has no time limit once the deadline has cancelled it: it dismisses the
  // prompt and waits for its end, which the service may forget.
  BoundedWait wait(deadline);
  const PromptEnd end(bus_.get(), owner_, path);
  GLibPointer<GVariant> nothing;
  const OSStatus status =
      call(path, promptInterface, "Prompt", g_variant_new("(s)", ""), "()", deadline, nothing);
  if (status == errSecSuccess) {
    wait.runUntil([&] { return end.isCompleted() || end.isServiceGone() || !isUsable(); });
  }
  if (end.isServiceGone()) isServiceGone_ = true;
  result = end.result(resultType);
  if (result) return errSecSuccess;
  if (!isUsable()) return errSecNotAvailable;
  if (!end.isCompleted()) dismiss(path, deadline);
  return status == errSecNotAvailable ? status : errSecInteractionNotAllowed;
}

void ServiceConnection::dismiss(const std::string& path, const ServiceDeadline& deadline) {
  GLibPointer<GVariant> nothing;
  static_cast<void>(call(path, promptInterface, "Dismiss", nullptr, "()", deadline, nothing));
}

const char* ServiceConnection::sessionPath() const noexcept {
  return secret_service_get_session_dbus_path(service_.get());
}

GVariant* ServiceConnection::encrypted(std::span<const std::byte> secret) {
  const GLibPointer<SecretValue> value(
      secret_value_new(reinterpret_cast<const char*>(secret.data()),
                       static_cast<gssize>(secret.size()), "application/octet-stream"));
  return value ? secret_service_encode_dbus_secret(service_.get(), value.get()) : nullptr;
}

std::optional<SecretBytes> ServiceConnection::decrypted(GVariant* secret) {
  const GLibPointer<SecretValue> value(secret_service_decode_dbus_secret(service_.get(), secret));
  if (!value) return std::nullopt;
  gsize length = 0;
  const char* const bytes = secret_value_get(value.get(), &length);
  return SecretBytes(std::string_view(bytes, length));
}

}  // namespace zeb
