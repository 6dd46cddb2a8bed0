#pragma once

#include <gtk/gtk.h>

#include "quenwick/platform/ViewController.h"
#include "quenwick/ui_gtk/GObjectPointer.h"

namespace quenwick::ui {

/// A round button with a cross, drawn by itself: no theme and no set of icons is needed. It stands
/// at the top and trailing edge and can be hit in 44 by 44 points.
class CloseButton : public platform::Button {
 public:
  /// `margin` points lie between the visible circle and the edges.
  CloseButton(double margin, platform::Work action);
  ~CloseButton() override;

  GtkWidget* widget() const { return *button_; }
  void setHidden(bool isHidden) override;

 private:
  GObjectPointer<GtkWidget> button_;
  platform::Work action_;
};

}  // namespace quenwick::ui
