#include "quenwick/runtime/Records.h"

namespace quenwick::runtime {
namespace {

using platform::Dictionary;
using platform::URL;
using Text = std::optional<std::string>;

/// Every record's initialiser of that kind.
template <class Record>
Operation<Record> initWithDict() {
  return operation<Record>(
      "initWithDict:",
      [](Dictionary dict) { return RecordKind<Record>::fromDictionary(std::move(dict)); }, "dict");
}

template <class Number>
std::optional<Price> priceOf(std::optional<Number> number) {
  return number ? std::optional(Price(*std::move(number))) : std::nullopt;
}

// The check does not see that a template's lambda moves what it is given.
// NOLINTBEGIN(performance-unnecessary-value-param)

/// `price` is how the initialiser's name calls it.
template <class Number>
Operation<ProductProperties> product(const std::string& price) {
  return operation<ProductProperties>(
      "initWithId:title:" + price + ":url:categories:meta:",
      [](std::string id, Text title, std::optional<Number> number, std::optional<URL> url,
         std::optional<std::vector<ProductCategory>> categories, std::optional<Dictionary> meta) {
        return ProductProperties{.id = std::move(id),
                                 .title = std::move(title),
                                 .price = priceOf(std::move(number)),
                                 .url = std::move(url),
                                 .categories = std::move(categories),
                                 .meta = std::move(meta)};
      },
      "id", "title", price, "url", "categories", "meta");
}

template <class Number>
Operation<OrderCompletedProperties> order(const std::string& revenue) {
  return operation<OrderCompletedProperties>(
      "initWithId:" + revenue + ":products:",
      [](Text id, std::optional<Number> number, std::vector<OrderCompletedProduct> products) {
        return OrderCompletedProperties{.id = std::move(id),
                                        .revenue = priceOf(std::move(number)),
                                        .products = std::move(products)};
      },
      "id", revenue, "products");
}

template <class Number>
Operation<OrderCompletedProduct> orderLine(const std::string& price) {
  return operation<OrderCompletedProduct>(
      "initWithId:title:" + price + ":url:quantity:",
      [](std::string id, Text title, std::optional<Number> number, std::optional<URL> url,
         std::optional<std::int64_t> quantity) {
        return OrderCompletedProduct{.id = std::move(id),
                                     .title = std::move(title),
                                     .url = std::move(url),
                                     .price = priceOf(std::move(number)),
                                     .quantity = quantity};
      },
      "id", "title", price, "url", "quantity");
}

// NOLINTEND(performance-unnecessary-value-param)

}  // namespace

template <>
const std::vector<Operation<ProductProperties>>& initialisers() {
  static const auto& table = *new std::vector{
      initWithDict<ProductProperties>(),   product<Price>("price"),
      product<std::string>("stringPrice"), product<std::int64_t>("intPrice"),
      product<float>("floatPrice"),        product<double>("doublePrice"),
      product<Decimal>("decimalPrice"),
  };
  return table;
}

template <>
const std::vector<Operation<ProductCategory>>& initialisers() {
  static const auto& table = *new std::vector{
      initWithDict<ProductCategory>(),
      operation<ProductCategory>(
          "initWithId:title:url:",
          [](std::string id, Text title, std::optional<URL> url) {
            return ProductCategory{
                .id = std::move(id), .title = std::move(title), .url = std::move(url)};
          },
          "id", "title", "url"),
  };
  return table;
}

template <>
const std::vector<Operation<ProductSearchedProperties>>& initialisers() {
  static const auto& table = *new std::vector{
      initWithDict<ProductSearchedProperties>(),
      operation<ProductSearchedProperties>(
          "initWithQuery:url:",
          [](std::string query, std::optional<URL> url) {
            return ProductSearchedProperties{.query = std::move(query), .url = std::move(url)};
          },
          "query", "url"),
  };
  return table;
}

template <>
const std::vector<Operation<OrderCompletedProperties>>& initialisers() {
  static const auto& table = *new std::vector{
      initWithDict<OrderCompletedProperties>(), order<std::string>("stringRevenue"),
      order<std::int64_t>("intRevenue"),        order<float>("floatRevenue"),
      order<double>("doubleRevenue"),           order<Decimal>("decimalRevenue"),
  };
  return table;
}

template <>
const std::vector<Operation<OrderCompletedProduct>>& initialisers() {
  static const auto& table = *new std::vector{
      initWithDict<OrderCompletedProduct>(), orderLine<Price>("price"),
      orderLine<std::string>("stringPrice"), orderLine<float>("floatPrice"),
      orderLine<double>("doublePrice"),      orderLine<Decimal>("decimalPrice"),
  };
  return table;
}

std::optional<InitialiserCall> InitialiserCall::from(Dictionary& dictionary) {
  auto* selector = dictionary.find("selector");
  auto* arguments = dictionary.find("arguments");
  if (dictionary.size() != 2 || !selector || !arguments) return std::nullopt;
  auto* values = arguments->as<platform::List>();
  if (!values) throw ArgumentError::mismatch("a list", *arguments).within(keyed("arguments"));
  return InitialiserCall{.selector = at([] { return keyed("selector"); },
                                        [&] { return Kind<std::string>::read(*selector); }),
                         .arguments = std::move(*values)};
}

}  // namespace quenwick::runtime
