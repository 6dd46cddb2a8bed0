#include "quenwick/runtime/Records.h"

namespace quenwick::runtime {
namespace {

using platform::Dictionary;
using platform::URL;
using platform::Value;
using Text = std::optional<std::string>;
using Link = std::optional<URL>;

/// How the price of an initialiser is read: as one kind of number, or as text.
using ReadPrice = std::optional<Price>(Value&& value);

template <class Number>
std::optional<Price> readPrice(Value&& value) {
  auto number = Kind<std::optional<Number>>::read(std::move(value));
  return number ? std::optional(Price(*std::move(number))) : std::nullopt;
}

// Arguments are read in their order, which is that of the braces.

ProductProperties product(Arguments& all, ReadPrice price) {
  return {.id = all.take<std::string>(),
          .title = all.take<Text>(),
          .price = price(all.next()),
          .url = all.take<Link>(),
          .categories = all.take<std::optional<std::vector<ProductCategory>>>(),
          .meta = all.take<std::optional<Dictionary>>()};
}

OrderCompletedProperties order(Arguments& all, ReadPrice revenue) {
  return {.id = all.take<Text>(),
          .revenue = revenue(all.next()),
          .products = all.take<std::vector<OrderCompletedProduct>>()};
}

OrderCompletedProduct orderLine(Arguments& all, ReadPrice readPrice) {
  auto id = all.take<std::string>();
  auto title = all.take<Text>();
  auto price = readPrice(all.next());
  return {.id = std::move(id),
          .title = std::move(title),
          .url = all.take<Link>(),
          .price = std::move(price),
          .quantity = all.take<std::optional<std::int64_t>>()};
}

template <class Number>
constexpr Action<ProductProperties> kProduct{
    .shape =
        &ShapeOf<ProductProperties, std::string, Text, std::optional<Number>, Link,
                 std::optional<std::vector<ProductCategory>>, std::optional<Dictionary>>::shape,
    .run = [](Arguments& all) { return product(all, readPrice<Number>); }};

template <class Number>
constexpr Action<OrderCompletedProperties> kOrder{
    .shape = &ShapeOf<OrderCompletedProperties, Text, std::optional<Number>,
                      std::vector<OrderCompletedProduct>>::shape,
    .run = [](Arguments& all) { return order(all, readPrice<Number>); }};

template <class Number>
constexpr Action<OrderCompletedProduct> kOrderLine{
    .shape = &ShapeOf<OrderCompletedProduct, std::string, Text, std::optional<Number>, Link,
                      std::optional<std::int64_t>>::shape,
    .run = [](Arguments& all) { return orderLine(all, readPrice<Number>); }};

/// Every record's initialiser of that kind.
template <class Record>
constexpr Action<Record> kFromDictionary = actionOf<Record>(
    [](Dictionary dict) { return RecordKind<Record>::fromDictionary(std::move(dict)); });

constexpr Operation<ProductProperties> kProductProperties[] = {
    {"initWithDict:", {"dict"}, kFromDictionary<ProductProperties>},
    {"initWithId:title:price:url:categories:meta:",
     {"id", "title", "price", "url", "categories", "meta"},
     kProduct<Price>},
    {"initWithId:title:stringPrice:url:categories:meta:",
     {"id", "title", "stringPrice", "url", "categories", "meta"},
     kProduct<std::string>},
    {"initWithId:title:intPrice:url:categories:meta:",
     {"id", "title", "intPrice", "url", "categories", "meta"},
     kProduct<std::int64_t>},
    {"initWithId:title:floatPrice:url:categories:meta:",
     {"id", "title", "floatPrice", "url", "categories", "meta"},
     kProduct<float>},
    {"initWithId:title:doublePrice:url:categories:meta:",
     {"id", "title", "doublePrice", "url", "categories", "meta"},
     kProduct<double>},
    {"initWithId:title:decimalPrice:url:categories:meta:",
     {"id", "title", "decimalPrice", "url", "categories", "meta"},
     kProduct<Decimal>},
};

constexpr Operation<ProductCategory> kProductCategory[] = {
    {"initWithDict:", {"dict"}, kFromDictionary<ProductCategory>},
    {"initWithId:title:url:",
     {"id", "title", "url"},
     actionOf<ProductCategory>([](std::string id, Text title, Link url) {
       return ProductCategory{
           .id = std::move(id), .title = std::move(title), .url = std::move(url)};
     })},
};

constexpr Operation<ProductSearchedProperties> kProductSearched[] = {
    {"initWithDict:", {"dict"}, kFromDictionary<ProductSearchedProperties>},
    {"initWithQuery:url:",
     {"query", "url"},
     actionOf<ProductSearchedProperties>([](std::string query, Link url) {
       return ProductSearchedProperties{.query = std::move(query), .url = std::move(url)};
     })},
};

constexpr Operation<OrderCompletedProperties> kOrderCompleted[] = {
    {"initWithDict:", {"dict"}, kFromDictionary<OrderCompletedProperties>},
    {"initWithId:stringRevenue:products:",
     {"id", "stringRevenue", "products"},
     kOrder<std::string>},
    {"initWithId:intRevenue:products:", {"id", "intRevenue", "products"}, kOrder<std::int64_t>},
    {"initWithId:floatRevenue:products:", {"id", "floatRevenue", "products"}, kOrder<float>},
    {"initWithId:doubleRevenue:products:", {"id", "doubleRevenue", "products"}, kOrder<double>},
    {"initWithId:decimalRevenue:products:", {"id", "decimalRevenue", "products"}, kOrder<Decimal>},
};

constexpr Operation<OrderCompletedProduct> kOrderCompletedProduct[] = {
    {"initWithDict:", {"dict"}, kFromDictionary<OrderCompletedProduct>},
    {"initWithId:title:price:url:quantity:",
     {"id", "title", "price", "url", "quantity"},
     kOrderLine<Price>},
    {"initWithId:title:stringPrice:url:quantity:",
     {"id", "title", "stringPrice", "url", "quantity"},
     kOrderLine<std::string>},
    {"initWithId:title:floatPrice:url:quantity:",
     {"id", "title", "floatPrice", "url", "quantity"},
     kOrderLine<float>},
    {"initWithId:title:doublePrice:url:quantity:",
     {"id", "title", "doublePrice", "url", "quantity"},
     kOrderLine<double>},
    {"initWithId:title:decimalPrice:url:quantity:",
     {"id", "title", "decimalPrice", "url", "quantity"},
     kOrderLine<Decimal>},
};

static_assert(areNamed(kProductProperties));
static_assert(areNamed(kProductCategory));
static_assert(areNamed(kProductSearched));
static_assert(areNamed(kOrderCompleted));
static_assert(areNamed(kOrderCompletedProduct));

}  // namespace

template <>
std::span<const Operation<ProductProperties>> initialisers() {
  return kProductProperties;
}

template <>
std::span<const Operation<ProductCategory>> initialisers() {
  return kProductCategory;
}

template <>
std::span<const Operation<ProductSearchedProperties>> initialisers() {
  return kProductSearched;
}

template <>
std::span<const Operation<OrderCompletedProperties>> initialisers() {
  return kOrderCompleted;
}

template <>
std::span<const Operation<OrderCompletedProduct>> initialisers() {
  return kOrderCompletedProduct;
}

std::optional<InitialiserCall> InitialiserCall::from(Dictionary& dictionary) {
  auto* selector = dictionary.find("selector");
  auto* arguments = dictionary.find("arguments");
  if (dictionary.size() != 2 || !selector || !arguments) return std::nullopt;
  auto* values = arguments->as<platform::List>();
  if (!values) throw ArgumentError::mismatch("a list", *arguments).within(keyed("arguments"));
  return InitialiserCall{
      .selector = at([] { return keyed("selector"); },
                     [&] { return Kind<std::string>::read(std::move(*selector)); }),
      .arguments = std::move(*values)};
}

ArgumentError InitialiserCall::unknown(std::string_view record) const {
  return ArgumentError(std::string(record) + " has no initialiser " + platform::shown(selector));
}

ArgumentError refused(std::string_view record) {
  return ArgumentError("makes no " + std::string(record) + "; the log says why");
}

}  // namespace quenwick::runtime
