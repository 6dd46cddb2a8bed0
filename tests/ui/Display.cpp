#include "tests/ui/Display.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/extensions/XTest.h>
#include <X11/keysym.h>
#include <cairo.h>
#include <poll.h>

#include <stdexcept>

namespace quenwick::tests {

Display::Display(int width, int height) : width_(width), height_(height) {
  auto screen = std::to_string(width) + "x" + std::to_string(height) + "x24";
  server_ = std::make_unique<Daemon>(std::vector<std::string>{
      "Xvfb", "-displayfd", "1", "-screen", "0", screen, "-nolisten", "tcp", "-noreset"});
  auto number = server_->line();
  if (!number) throw std::runtime_error("Xvfb did not start");
  name_ = ":" + *number;
  auto* connection = XOpenDisplay(name_.c_str());
  if (!connection) throw std::runtime_error("no connection to Xvfb");
  connection_ = reinterpret_cast<XDisplay*>(connection);
  // A window may be gone before an answer about it; Xlib would end the process.
  XSetErrorHandler([](::Display*, XErrorEvent*) { return 0; });
}

namespace {

::Display* native(XDisplay* connection) { return reinterpret_cast<::Display*>(connection); }

struct DestroyImage {
  void operator()(XImage* image) const { XDestroyImage(image); }
};

std::unique_ptr<XImage, DestroyImage> imageOf(XDisplay* connection, int x, int y, int width,
                                              int height) {
  auto* display = native(connection);
  return std::unique_ptr<XImage, DestroyImage>(
      XGetImage(display, DefaultRootWindow(display), x, y, static_cast<unsigned>(width),
                static_cast<unsigned>(height), AllPlanes, ZPixmap));
}

}  // namespace

Display::~Display() { XCloseDisplay(native(connection_)); }

void Display::moveTo(int x, int y) {
  XTestFakeMotionEvent(native(connection_), 0, x, y, CurrentTime);
  XSync(native(connection_), False);
}

void Display::click(int x, int y) {
  moveTo(x, y);
  XTestFakeButtonEvent(native(connection_), 1, True, CurrentTime);
  XTestFakeButtonEvent(native(connection_), 1, False, CurrentTime);
  XSync(native(connection_), False);
}

void Display::press(Key key) {
  auto* display = native(connection_);
  KeySym symbol = key == Key::escape ? XK_Escape : key == Key::tab ? XK_Tab : XK_Return;
  auto code = XKeysymToKeycode(display, symbol);
  XTestFakeKeyEvent(display, code, True, CurrentTime);
  XTestFakeKeyEvent(display, code, False, CurrentTime);
  XSync(display, False);
}

void Display::focusWindow() {
  auto* display = native(connection_);
  Window root = 0;
  Window parent = 0;
  Window* children = nullptr;
  unsigned count = 0;
  XQueryTree(display, DefaultRootWindow(display), &root, &parent, &children, &count);
  for (unsigned i = 0; i < count; ++i) {
    XWindowAttributes attributes{};
    XGetWindowAttributes(display, children[i], &attributes);
    bool isShown = attributes.map_state == IsViewable && attributes.width > 1;
    if (isShown) XSetInputFocus(display, children[i], RevertToParent, CurrentTime);
  }
  if (children) XFree(children);
  XSync(display, False);
}

std::uint32_t Display::colorAt(int x, int y) const {
  auto image = imageOf(connection_, x, y, 1, 1);
  return static_cast<std::uint32_t>(XGetPixel(image.get(), 0, 0) & 0xffffff);
}

std::optional<std::pair<int, int>> Display::widestPlaceOf(std::uint32_t color, int atLeast) const {
  auto image = imageOf(connection_, 0, 0, width_, height_);
  std::optional<std::pair<int, int>> found;
  for (int y = 0; y < height_; ++y) {
    for (int x = 0, length = 0; x < width_; ++x) {
      length = (XGetPixel(image.get(), x, y) & 0xffffff) == color ? length + 1 : 0;
      if (length < atLeast) continue;
      atLeast = length + 1;
      found = {x - length / 2, y};
    }
  }
  return found;
}

std::uint32_t Display::checksum() const {
  auto image = imageOf(connection_, 0, 0, width_, height_);
  std::uint32_t sum = 2166136261U;
  auto size = static_cast<std::ptrdiff_t>(image->bytes_per_line) * height_;
  for (auto* byte = image->data; byte != image->data + size; ++byte) {
    sum = (sum ^ static_cast<unsigned char>(*byte)) * 16777619U;
  }
  return sum;
}

bool Display::save(const std::string& file) const {
  auto image = imageOf(connection_, 0, 0, width_, height_);
  auto* surface = cairo_image_surface_create_for_data(reinterpret_cast<unsigned char*>(image->data),
                                                      CAIRO_FORMAT_RGB24, width_, height_,
                                                      image->bytes_per_line);
  auto status = cairo_surface_write_to_png(surface, file.c_str());
  cairo_surface_destroy(surface);
  return status == CAIRO_STATUS_SUCCESS;
}

bool eventually(const std::function<bool()>& answer, std::chrono::milliseconds patience) {
  auto end = std::chrono::steady_clock::now() + patience;
  while (!answer()) {
    if (std::chrono::steady_clock::now() > end) return false;
    poll(nullptr, 0, 10);
  }
  return true;
}

}  // namespace quenwick::tests
