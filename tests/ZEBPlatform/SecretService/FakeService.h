#pragma once

#include <gio/gio.h>
#include <gtest/gtest.h>

#include <deque>
#include <map>
#include <mutex>
#include <string>

namespace zeb::test {

/// A Secret Service of the test's process that answers calls with prepared replies, for what a real
/// keyring does not do on request. The bus must have no other service.
class FakeService {
 public:
  /// GLib's texts of the replies, which are given in turn, the last one repeatedly. The keys are
  /// "OpenSession <algorithm>", "Get <property>" and otherwise "<method> <path>". A call without a
  /// reply fails. After a call of "Prompt", the reply "Completed" is emitted as the signal.
  using Replies = std::map<std::string, std::deque<std::string>>;

  explicit FakeService(const Replies& replies)
      : replies_{{encryptedSession, {"(<[byte 2]>, objectpath '/s')"}},
                 {"ReadAlias /org/freedesktop/secrets", {"(objectpath '/c',)"}},
                 {"Get Locked", {"(<false>,)"}}} {
    {
      const std::lock_guard guard(mutex_);  // ThreadSanitizer does not see how GLib orders it
      for (const auto& [key, texts] : replies) replies_[key] = texts;
    }
    const auto flags =
        static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                          G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    bus_ = g_dbus_connection_new_for_address_sync(std::getenv("DBUS_SESSION_BUS_ADDRESS"), flags,
                                                  nullptr, nullptr, nullptr);
    g_dbus_connection_add_filter(bus_, answer, this, nullptr);
    GVariant* const outcome = g_dbus_connection_call_sync(
        bus_, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
        "RequestName", g_variant_new("(su)", "org.freedesktop.secrets", 4u), nullptr,
        G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr);
    guint number = 0;
    g_variant_get(outcome, "(u)", &number);
    EXPECT_EQ(number, 1u) << "another service is on the bus";
    g_variant_unref(outcome);
  }
  FakeService(const FakeService&) = delete;
  FakeService& operator=(const FakeService&) = delete;
  ~FakeService() {
    g_dbus_connection_close_sync(bus_, nullptr, nullptr);
    g_object_unref(bus_);
    const std::lock_guard guard(mutex_);  // an answer that is being sent ends first
  }

  /// Whether the call with this key was made and answered.
  bool wasCalled(const std::string& key) {
    const std::lock_guard guard(mutex_);
    return counts_[key] > 0;
  }

  static constexpr const char* encryptedSession = "OpenSession dh-ietf1024-sha256-aes128-cbc-pkcs7";

 private:
  /// Runs on GLib's thread of the connection.
  static GDBusMessage* answer(GDBusConnection* bus, GDBusMessage* message, gboolean isIncoming,
                              gpointer service) {
    if (!isIncoming || g_dbus_message_get_message_type(message) != G_DBUS_MESSAGE_TYPE_METHOD_CALL)
      return message;
    static_cast<FakeService*>(service)->answer(bus, message);
    g_object_unref(message);
    return nullptr;
  }
  void answer(GDBusConnection* bus, GDBusMessage* message) {
    const std::lock_guard guard(mutex_);
    const std::string method = g_dbus_message_get_member(message);
    const char* detail = g_dbus_message_get_path(message);
    GVariant* const body = g_dbus_message_get_body(message);
    if (method == "OpenSession") g_variant_get_child(body, 0, "&s", &detail);
    if (method == "Get") g_variant_get_child(body, 1, "&s", &detail);
    const std::string text = next(method + ' ' + detail);
    GDBusMessage* const reply =
        text.empty() ? g_dbus_message_new_method_error_literal(
                           message, "org.freedesktop.DBus.Error.NotSupported", "no reply")
                     : g_dbus_message_new_method_reply(message);
    if (!text.empty()) g_dbus_message_set_body(reply, variant(text));
    send(bus, reply);
    const std::string completed = method == "Prompt" ? next("Completed") : "";
    if (completed.empty()) return;
    GDBusMessage* const signal =
        g_dbus_message_new_signal(detail, "org.freedesktop.Secret.Prompt", "Completed");
    g_dbus_message_set_body(signal, variant(completed));
    send(bus, signal);
  }
  static GVariant* variant(const std::string& text) {
    return g_variant_parse(nullptr, text.c_str(), nullptr, nullptr, nullptr);
  }
  static void send(GDBusConnection* bus, GDBusMessage* message) {
    g_dbus_connection_send_message(bus, message, G_DBUS_SEND_MESSAGE_FLAGS_NONE, nullptr, nullptr);
    g_object_unref(message);
  }
  std::string next(const std::string& key) {
    ++counts_[key];
    const auto found = replies_.find(key);
    if (found == replies_.end()) return "";
    std::string text = found->second.front();
    if (found->second.size() > 1) found->second.pop_front();
    return text;
  }

  inline static std::mutex mutex_;  // of all, so that it is not new to GLib's thread
  Replies replies_;
  std::map<std::string, int> counts_;
  GDBusConnection* bus_;
};

}  // namespace zeb::test
