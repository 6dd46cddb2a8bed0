#pragma once

#include <string_view>

namespace storefront {

/// How the shop looks, for GTK.
inline constexpr std::string_view kStyle = R"css(
/* Ink, soft ink, leaf and paper: the colours of the shop's pages too. */
window.storefront { background: #fbfaf6; color: #1d2a24; }
window.storefront.solid-csd { padding: 0; margin: 0; border: none; box-shadow: none; }
.storefront label, .storefront button, .storefront entry {
  font-family: "Inter", "Segoe UI", "Cantarell", "DejaVu Sans", sans-serif;
}
.storefront button, .storefront entry {
  background-image: none; border: none; box-shadow: none; outline: none; text-shadow: none;
  min-height: 0; min-width: 0; padding: 0;
}
.storefront button:focus-visible { outline: 3px solid #f2a65a; outline-offset: 2px; }

.storefront headerbar {
  background: #fbfaf6; border-bottom: 1px solid #eceeea; box-shadow: none; min-height: 60px;
  padding: 0 20px 0 41px;
}
.storefront button.brand { background: none; font-size: 18px; font-weight: 800;
                           letter-spacing: -0.4px; color: #1d2a24; padding: 6px 0; }
.storefront entry.search {
  background: #f0efe8; color: #1d2a24; border-radius: 999px; padding: 9px 16px; font-size: 14px;
  min-width: 280px; caret-color: #1f6f4a;
}
.storefront entry.search:focus-within { background: #e9eee8; }
.storefront entry.search image { color: #5c6b63; }
.storefront button.basket {
  background: #e7efe9; color: #1f6f4a; border-radius: 999px; padding: 8px 16px; margin: 0 8px;
  font-size: 14px; font-weight: 700;
}
.storefront button.basket:hover { background: #d9e8de; }
.storefront windowcontrols button { color: #5c6b63; background: none; padding: 6px; }

.offer { border-radius: 18px; padding: 0 0 0 36px;
         background: linear-gradient(115deg, #fbe6c0 0%, #f6c886 55%, #ee9a68 100%); }
.over { font-size: 12px; font-weight: 700; letter-spacing: 1.4px; color: #8f4a24;
        text-transform: uppercase; }
.headline { font-size: 31px; font-weight: 800; letter-spacing: -0.9px; color: #2a1d14; }
.storefront button.dark {
  background: #24342c; color: #ffffff; font-size: 15px; font-weight: 700;
  border-radius: 14px; padding: 12px 22px; margin-top: 6px; transition: background 150ms;
}
.storefront button.dark:hover { background: #35493f; }

.storefront button.card { background: none; border-radius: 18px; }
.card .title { font-size: 16px; font-weight: 700; letter-spacing: -0.2px; color: #1d2a24; }
.card:hover .title { color: #1f6f4a; }
.card .subtitle { font-size: 13px; font-weight: 400; color: #5c6b63; }
.card .price { font-size: 14px; font-weight: 700; color: #1d2a24; }

.product .over { color: #1f6f4a; }
.product .name { font-size: 42px; font-weight: 800; letter-spacing: -1.4px; color: #1d2a24; }
.product .subtitle { font-size: 18px; color: #5c6b63; }
.product .price { font-size: 24px; font-weight: 700; margin: 14px 0 10px 0; }
.storefront button.leaf {
  background: #1f6f4a; color: #ffffff; font-size: 16px; font-weight: 700;
  border-radius: 14px; padding: 15px 40px; transition: background 150ms;
}
.storefront button.leaf:hover { background: #185a3b; }
.storefront button.sand {
  background: #f3e3cd; color: #7d3f1d; font-size: 16px; font-weight: 700;
  border-radius: 14px; padding: 15px 26px; transition: background 150ms;
}
.storefront button.sand:hover { background: #ebd6b8; }
.storefront button.mist { background: #ecf2ee; color: #1f6f4a; font-size: 14px; font-weight: 700;
                          border-radius: 999px; padding: 8px 16px; transition: background 150ms; }
.storefront button.mist:hover { background: #dde9e1; }
.storefront button.plain { background: none; color: #1f6f4a; font-size: 15px; font-weight: 700;
                           padding: 8px 0; }
.storefront button.plain:hover { color: #134a31; }

.footer { padding: 11px 40px; border-top: 1px solid #eceeea; }
.footer label { font-size: 13px; color: #6b786f; }
.note { background: #24342c; border-radius: 999px; padding: 11px 22px; margin-bottom: 62px;
        box-shadow: 0 8px 24px rgba(29, 42, 36, 0.22); }
.note label { color: #ffffff; font-size: 14px; font-weight: 600; }
)css";

}  // namespace storefront
