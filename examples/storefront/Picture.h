#pragma once

#include <gtk/gtk.h>

#include <optional>
#include <vector>

#include "Catalogue.h"

namespace storefront {

/// The shapes in the middle of a ground, if any, within round corners, in that size or larger. The
/// shapes must outlive the picture.
GtkWidget* makePicture(const std::vector<Shape>& shapes, std::optional<unsigned> ground, int width,
                       int height);

}  // namespace storefront
