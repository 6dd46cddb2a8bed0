// What a host writes. Compiled, not run, with the warnings and the compilers that hosts use; it has
// the standard library and the library's own headers, nothing else.

#include "quenwick/API/Models/CustomEventContainer.h"
#include "quenwick/API/Models/IdentifyUserContainer.h"
#include "quenwick/API/Models/OrderCompletedContainer.h"
#include "quenwick/API/Models/TrackContainer.h"

using namespace quenwick;
using platform::Dictionary;
using platform::List;
using platform::URL;

void takesPrice(Price);
template <class Number>
concept IsPrice = requires(Number number) { takesPrice(number); };

static_assert(IsPrice<const char*> && IsPrice<std::string> && IsPrice<std::string_view>);
static_assert(IsPrice<signed char> && IsPrice<unsigned short> && IsPrice<int> && IsPrice<long> &&
              IsPrice<unsigned long long>);
static_assert(IsPrice<float> && IsPrice<double> && IsPrice<long double> && IsPrice<Decimal>);
static_assert(!IsPrice<bool> && !IsPrice<char> && !IsPrice<char32_t> && !IsPrice<std::nullptr_t>,
              "no price by mistake");

ProductProperties product(const std::string& title, float price) {
  return {.id = "42",
          .title = title,
          .price = price,
          .url = URL::parse("https://shop.example/p/42"),
          .categories = std::vector<ProductCategory>{{.id = "1", .title = "Shoes"}, {.id = "2"}},
          .meta = Dictionary{{"sizes", List{38, 39}}, {"sale", true}}};
}

OrderCompletedProperties order(std::uint64_t cents) {
  return {.id = "A-1",
          .revenue = Decimal::parse("89.90"),
          .products = {{.id = "42", .price = "89.90", .quantity = 1},
                       {.id = "43", .title = "Laces", .price = cents},
                       {.id = "44"}}};
}

void host() {
  using Yield = std::optional<Dictionary>;
  [[maybe_unused]] Yield yields[] = {
      ProductAddedContainer{product("Boots", 89.9F)}.asDictionary(),
      ProductViewedContainer{.properties = {.id = "42"}}.asDictionary(),
      ProductRemovedContainer{{.id = "42", .price = 5}}.asDictionary(),
      ProductSearchedContainer{{.query = "boots"}}.asDictionary(),
      CategoryViewedContainer{{.id = "1", .url = URL::parse("/shoes")}}.asDictionary(),
      OrderCompletedContainer(order(100)).asDictionary(),
      OrderCompletedContainer({.products = {{.id = "42"}}}).asDictionary(),
      CustomEventContainer{"wished", {{"id", 42}, {"tags", List{"a"}}}}.asDictionary(),
      CustomEventContainer{.event = "waved"}.asDictionary(),
      IdentifyUserContainer("user-7").asDictionary(),
  };
  [[maybe_unused]] auto category = ProductCategory::from({{"id", 1}, {"title", "Shoes"}});
  [[maybe_unused]] auto line = OrderCompletedProduct::from({{"id", "42"}});
}
