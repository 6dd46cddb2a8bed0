#pragma once

#include <glib-object.h>

#include <utility>

namespace quenwick::ui {

/// Holds a reference to an object.
template <class Object>
class GObjectPointer {
 public:
  GObjectPointer() = default;
  GObjectPointer(const GObjectPointer& other) : GObjectPointer(referenced(other.object_)) {}
  GObjectPointer(GObjectPointer&& other) noexcept
      : object_(std::exchange(other.object_, nullptr)) {}
  GObjectPointer& operator=(GObjectPointer other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  ~GObjectPointer() {
    if (object_) g_object_unref(object_);
  }

  /// Takes over a reference that the caller owns.
  static GObjectPointer owned(Object* object) { return GObjectPointer(object); }
  /// Adds a reference, or takes the one that floats.
  static GObjectPointer referenced(Object* object) {
    if (object) g_object_ref_sink(object);
    return GObjectPointer(object);
  }

  Object* operator*() const { return object_; }
  explicit operator bool() const { return object_ != nullptr; }

 private:
  explicit GObjectPointer(Object* object) : object_(object) {}

  Object* object_ = nullptr;
};

/// Connects a function of the signal's own shape; `data` is its last argument.
template <class... Arguments>
gulong connect(gpointer object, const char* signal, void (*function)(Arguments...), gpointer data) {
  return g_signal_connect(object, signal, reinterpret_cast<GCallback>(function), data);
}
template <class... Arguments>
gulong connect(gpointer object, const char* signal, gboolean (*function)(Arguments...),
               gpointer data) {
  return g_signal_connect(object, signal, reinterpret_cast<GCallback>(function), data);
}

}  // namespace quenwick::ui
