#include "quenwick/ui_gtk/Pasteboard_gtk.h"

#include <gtk/gtk.h>

#include <array>
#include <atomic>
#include <chrono>
#include <utility>

#include "quenwick/ui_gtk/GObjectPointer.h"
#include "quenwick/ui_gtk/MainContext_glib.h"

namespace quenwick::ui {
namespace {

constexpr std::chrono::seconds kPatience{1};
constexpr std::size_t kLargestList = 64UL << 10;
constexpr auto kURLs = "text/uri-list";

/// A question to the clipboard, answered once: by it, or by nothing when its owner is silent.
template <class T>
class Question {
 public:
  explicit Question(platform::Continuation<T> asker) : asker_(asker) {}

  void answer(T value) {
    if (!isAnswered_.exchange(true)) asker_.resume(std::move(value));
  }
  /// Destroyed with the question, on whatever thread.
  platform::Cancellable patience;

 private:
  platform::Continuation<T> asker_;
  std::atomic<bool> isAnswered_ = false;
};

template <class T>
using QuestionPointer = std::shared_ptr<Question<T>>;

GdkClipboard* clipboard() {
  auto* display = gtk_is_initialized() ? gdk_display_get_default() : nullptr;
  return display ? gdk_display_get_clipboard(display) : nullptr;
}

/// Has `put` ask the clipboard in the main context.
template <class T>
platform::Task<T> asked(void (*put)(GdkClipboard*, QuestionPointer<T>)) {
  co_return co_await platform::suspend<T>([put](platform::Continuation<T> asker) {
    auto question = std::make_shared<Question<T>>(asker);
    question->patience =
        platform::postAfter(kPatience, platform::pool(), [question] { question->answer(T()); });
    MainContext().post([put, question] {
      if (auto* asks = clipboard()) {
        put(asks, question);
      } else {
        question->answer(T());
      }
    });
  });
}

template <class T>
gpointer held(QuestionPointer<T> question) {
  return new QuestionPointer<T>(std::move(question));
}

template <class T>
QuestionPointer<T> released(gpointer held) {
  std::unique_ptr<QuestionPointer<T>> owner(static_cast<QuestionPointer<T>*>(held));
  return std::move(*owner);
}

bool offersURLs(GdkContentFormats* formats) {
  return gdk_content_formats_contain_mime_type(formats, kURLs) != FALSE;
}

bool offersStrings(GdkContentFormats* formats) {
  static constexpr std::array kTexts{"text/plain;charset=utf-8", "text/plain", "UTF8_STRING"};
  if (gdk_content_formats_contain_gtype(formats, G_TYPE_STRING)) return true;
  for (auto* text : kTexts) {
    if (gdk_content_formats_contain_mime_type(formats, text)) return true;
  }
  return false;
}

struct Waiting {
  QuestionPointer<bool> question;
  bool (*offers)(GdkContentFormats*);
};

void formatsCame(GdkClipboard* clipboard, GParamSpec*, gpointer data) {
  auto* waiting = static_cast<Waiting*>(data);
  waiting->question->answer(waiting->offers(gdk_clipboard_get_formats(clipboard)));
  g_signal_handlers_disconnect_by_data(clipboard, waiting);
}

/// What another program offers becomes known a moment after the display was opened.
template <bool (*offers)(GdkContentFormats*)>
void askFormats(GdkClipboard* clipboard, QuestionPointer<bool> question) {
  auto* formats = gdk_clipboard_get_formats(clipboard);
  gsize count = 0;
  gdk_content_formats_get_mime_types(formats, &count);
  if (count > 0 || gdk_clipboard_is_local(clipboard)) return question->answer(offers(formats));
  g_signal_connect_data(
      clipboard, "notify::formats", reinterpret_cast<GCallback>(formatsCame),
      new Waiting{std::move(question), offers},
      [](gpointer data, GClosure*) { delete static_cast<Waiting*>(data); }, GConnectFlags());
}

void textCame(GObject* clipboard, GAsyncResult* result, gpointer data) {
  auto question = released<std::optional<std::string>>(data);
  auto* text = gdk_clipboard_read_text_finish(GDK_CLIPBOARD(clipboard), result, nullptr);
  question->answer(text ? std::optional<std::string>(text) : std::nullopt);
  g_free(text);
}

void askText(GdkClipboard* clipboard, QuestionPointer<std::optional<std::string>> question) {
  if (!offersStrings(gdk_clipboard_get_formats(clipboard))) return question->answer(std::nullopt);
  gdk_clipboard_read_text_async(clipboard, nullptr, textCame, held(std::move(question)));
}

using OptionalURL = std::optional<platform::URL>;

struct URLList {
  QuestionPointer<OptionalURL> question;
  std::string bytes = std::string(kLargestList, '\0');
};

/// The first line that is neither empty nor a comment.
OptionalURL firstURL(std::string_view list) {
  while (!list.empty()) {
    auto end = list.find_first_of("\r\n");
    auto line = list.substr(0, end);
    if (!line.empty() && line.front() != '#') return platform::URL::parse(std::string(line));
    if (end == list.npos) break;
    list.remove_prefix(end + 1);
  }
  return std::nullopt;
}

void bytesCame(GObject* stream, GAsyncResult* result, gpointer data) {
  std::unique_ptr<URLList> list(static_cast<URLList*>(data));
  gsize size = 0;
  g_input_stream_read_all_finish(G_INPUT_STREAM(stream), result, &size, nullptr);
  list->question->answer(firstURL(std::string_view(list->bytes).substr(0, size)));
}

void streamCame(GObject* clipboard, GAsyncResult* result, gpointer data) {
  auto list = std::make_unique<URLList>(released<OptionalURL>(data));
  auto stream = GObjectPointer<GInputStream>::owned(
      gdk_clipboard_read_finish(GDK_CLIPBOARD(clipboard), result, nullptr, nullptr));
  if (!stream) return list->question->answer(std::nullopt);
  auto* bytes = list->bytes.data();
  g_input_stream_read_all_async(*stream, bytes, kLargestList, G_PRIORITY_DEFAULT, nullptr,
                                bytesCame, list.release());
}

void askURL(GdkClipboard* clipboard, QuestionPointer<OptionalURL> question) {
  if (!offersURLs(gdk_clipboard_get_formats(clipboard))) return question->answer(std::nullopt);
  const char* types[] = {kURLs, nullptr};
  gdk_clipboard_read_async(clipboard, types, G_PRIORITY_DEFAULT, nullptr, streamCame,
                           held(std::move(question)));
}

}  // namespace

platform::Task<bool> Pasteboard::hasURLs() { return asked<bool>(askFormats<offersURLs>); }

platform::Task<bool> Pasteboard::hasStrings() { return asked<bool>(askFormats<offersStrings>); }

platform::Task<std::optional<platform::URL>> Pasteboard::url() {
  return asked<OptionalURL>(askURL);
}

platform::Task<std::optional<std::string>> Pasteboard::string() {
  return asked<std::optional<std::string>>(askText);
}

}  // namespace quenwick::ui
