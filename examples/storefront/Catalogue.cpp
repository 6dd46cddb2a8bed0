#include "Catalogue.h"

#include <algorithm>

namespace storefront {

const std::vector<Product>& products() {
  static const std::vector<Product> all{
      {"42",
       "Field boots",
       "Oiled leather, resoled for life",
       "89.90",
       0xd9e4ea,
       {{"M 82 56 L 152 56 L 154 144 C 156 170 184 174 206 184 C 222 192 226 206 226 226 L 76 226 "
         "C 72 190 86 164 86 134 Z",
         0xa9623c},
        {"M 82 56 L 152 56 L 152 78 L 83 78 Z", 0x8a4c2c},
        {"M 74 226 L 228 226 L 228 240 L 146 240 L 136 234 L 120 234 L 114 244 L 74 244 Z",
         0x3a2a22},
        {"M 120 106 L 149 101 M 120 125 L 149 120 M 122 144 L 151 139 M 130 164 L 159 158",
         0xf3e2c4, 5}}},
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
