#pragma once

#include <gtk/gtk.h>

#include "quenwick/platform/ViewController.h"
#include "quenwick/ui_gtk/GObjectPointer.h"

namespace quenwick::ui {

/// A ring of light spokes that turns, drawn by itself, in the centre of what it is laid over.
class Spinner : public platform::ActivityIndicator {
 public:
  Spinner();

  GtkWidget* widget() const { return *area_; }
  void stopAnimating() override;

 private:
  GObjectPointer<GtkWidget> area_;
  guint ticks_;
};

}  // namespace quenwick::ui
