#include "examples/storefront/Catalogue.h"

#include <algorithm>

namespace storefront {

const std::vector<Product>& products() {
  static const std::vector<Product> all{
      {"42",
       "Field boots",
       "Oiled leather, resoled for life",
       "89.90",
       0xd9e4ea,
       {{"M112 62 L182 62 L184 150 C186 176 214 180 236 190 C252 198 256 212 256 232 L106 232 C102 "
         "196 116 170 116 140 Z",
         0xa9623c},
        {"M112 62 L182 62 L182 84 L113 84 Z", 0x8a4c2c},
        {"M104 232 L258 232 L258 246 L176 246 L166 240 L150 240 L144 250 L104 250 Z", 0x3a2a22},
        {"M150 112 L184 106 M150 132 L184 126 M154 152 L186 146 M166 170 L198 162", 0xf3e2c4, 5}}},
      {"7",
       "Linen shirt",
       "Undyed, washed twice",
       "39.00",
       0xf7dfb4,
       {{"M104 66 L132 52 C142 68 158 68 168 52 L196 66 L232 120 L204 138 L194 122 L194 254 L106 "
         "254 L106 122 L96 138 L68 120 Z",
         0xfbfaf6},
        {"M132 52 C142 68 158 68 168 52", 0xd9a860, 5},
        {"M106 214 L194 214", 0xefe6d2, 3}}},
      {"12",
       "Wide trousers",
       "Organic cotton, pleated",
       "59.00",
       0xcfe8d5,
       {{"M108 46 L192 46 L204 258 L160 258 L150 112 L140 258 L96 258 Z", 0x2e7a55},
        {"M107 62 L193 62", 0x134a31, 5},
        {"M150 66 L150 102", 0x134a31, 3}}},
      {"23",
       "Market bag",
       "Holds a week of vegetables",
       "24.00",
       0xf6cdb8,
       {{"M112 142 C112 62 188 62 188 142", 0xa94f30, 9},
        {"M86 140 L214 140 L228 258 L72 258 Z", 0xe9825c},
        {"M150 172 C172 172 172 208 150 208 C128 208 128 172 150 172 Z", 0xfff3d6}}}};
  return all;
}

const Product* find(std::string_view id) {
  auto found = std::ranges::find(products(), id, &Product::id);
  return found == products().end() ? nullptr : &*found;
}

}  // namespace storefront
