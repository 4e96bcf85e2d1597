#pragma once

#include <libsecret/secret.h>

#include <memory>

namespace zeb {

/// Releases what a pointer of GLib owns.
struct GLibRelease {
  void operator()(GVariant* variant) const noexcept { g_variant_unref(variant); }
  void operator()(GError* error) const noexcept { g_error_free(error); }
  void operator()(char* text) const noexcept { g_free(text); }
  void operator()(SecretValue* value) const noexcept { secret_value_unref(value); }
  void operator()(GMainContext* context) const noexcept { g_main_context_unref(context); }
  void operator()(GSource* source) const noexcept { g_source_unref(source); }
  // Objects; the listed types have no common base in C++.
  void operator()(GCancellable* object) const noexcept { g_object_unref(object); }
  void operator()(GAsyncResult* object) const noexcept { g_object_unref(object); }
  void operator()(GDBusConnection* object) const noexcept { g_object_unref(object); }
  void operator()(SecretService* object) const noexcept { g_object_unref(object); }
};

/// Owns one reference to something of GLib's.
template <class T>
using GLibPointer = std::unique_ptr<T, GLibRelease>;

/// Owns a new variant, whose reference is still floating.
inline GLibPointer<GVariant> ownedVariant(GVariant* floating) {
  return GLibPointer<GVariant>(g_variant_ref_sink(floating));
}

/// The text at a place of a tuple, valid as long as the variant.
inline const char* textIn(GVariant* tuple, std::size_t index) noexcept {
  const GLibPointer<GVariant> child(g_variant_get_child_value(tuple, index));
  return g_variant_get_string(child.get(), nullptr);
}

}  // namespace zeb
