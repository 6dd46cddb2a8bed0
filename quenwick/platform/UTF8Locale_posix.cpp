#include "quenwick/platform/UTF8Locale.h"

#include <locale.h>

namespace quenwick::platform {

UTF8Locale::UTF8Locale() {
  static locale_t utf8 = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
  before_ = uselocale(utf8);  // null changes nothing
}

UTF8Locale::~UTF8Locale() { uselocale(static_cast<locale_t>(before_)); }

}  // namespace quenwick::platform
