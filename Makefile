# The commands of the house. Each installs what it needs, so that a fresh clone is enough.

PRESET ?= debug

.PHONY: help bootstrap build test demo demo-ui bench format lint check clean

help:
	@echo "make demo     a shop reports to the local sandbox: what it did, and what arrived"
	@echo "make demo-ui  a shop in a window; without a display pictures of it are taken"
	@echo "make test     build and run all tests (PRESET=asan-ubsan, tsan or release for those)"
	@echo "make bench    run the benchmarks (optimised build)"
	@echo "make check    format, lint, build and test, as CI does"

bootstrap:
	@scripts/bootstrap

build: bootstrap
	@cmake --preset $(PRESET) >/dev/null
	@cmake --build --preset $(PRESET)

test: build
	ctest --preset $(PRESET)

demo: bootstrap
	@cmake --preset $(PRESET) >/dev/null
	@cmake --build --preset $(PRESET) --target quenwick-sandbox shop
	@scripts/demo build/$(PRESET)

demo-ui: bootstrap
	@cmake --preset $(PRESET) >/dev/null
	@cmake --build --preset $(PRESET) --target quenwick-sandbox storefront ui_screenshots
	@scripts/demo-ui build/$(PRESET)

bench: bootstrap
	@cmake --preset release >/dev/null
	cmake --build --preset release
	scripts/bench build/release

format: bootstrap
	@scripts/sources | xargs clang-format-19 -i

lint: bootstrap
	@scripts/lint

check: lint test

clean:
	rm -rf build
