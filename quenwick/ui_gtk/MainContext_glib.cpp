#include "quenwick/ui_gtk/MainContext_glib.h"

#include <glib.h>

#include <utility>

namespace quenwick::ui {
namespace {

gboolean runOnce(gpointer work) {
  platform::runWork(*static_cast<platform::Work*>(work));
  return G_SOURCE_REMOVE;
}

void forget(gpointer work) { delete static_cast<platform::Work*>(work); }

}  // namespace

void MainContext::post(platform::Work work) {
  auto* source = g_idle_source_new();
  g_source_set_priority(source, G_PRIORITY_DEFAULT);
  g_source_set_callback(source, runOnce, new platform::Work(std::move(work)), forget);
  g_source_attach(source, nullptr);
  g_source_unref(source);
}

void MainTimer::start(std::chrono::milliseconds duration, platform::Work work) {
  stop();
  work_ = std::move(work);
  auto fire = [](gpointer self) -> gboolean {
    auto& timer = *static_cast<MainTimer*>(self);
    timer.source_ = 0;
    // What it calls may destroy the timer.
    platform::runWork(std::exchange(timer.work_, nullptr));
    return G_SOURCE_REMOVE;
  };
  source_ = g_timeout_add(static_cast<guint>(duration.count()), fire, this);
}

void MainTimer::stop() {
  if (source_ != 0) g_source_remove(std::exchange(source_, 0));
}

}  // namespace quenwick::ui
