// A host with windows, as far as it can be run without a display: with a word it connects the
// library with GTK, without one it is there that the libraries are found and loaded.
#include <quenwick/quenwick.h>
#include <quenwick/ui_gtk/quenwick-ui.h>

int main(int count, char**) {
  if (count > 1) return quenwick::ui::install({.developerTools = true}) ? 0 : 1;
  return quenwick::version().empty() ? 1 : 0;
}
