# The commands of the house. Each installs what it needs, so that a fresh clone is enough.

PRESET ?= debug
SECONDS ?= 60

.PHONY: help bootstrap build test demo bench faults packages docs demo-ui coverage fuzz format lint check clean

help:
	@echo "make demo      a shop reports to the local sandbox: what it did, and what arrived"
	@echo "make demo-ui   a shop in a window; without a display pictures of it are taken"
	@echo "make test      build and run all tests (PRESET=asan-ubsan, tsan or release for those)"
	@echo "make build     build everything, into build/debug (PRESET as above)"
	@echo "make bootstrap install the Debian packages that all of this needs"
	@echo "make packages  Debian packages, into build/packages/packages"
	@echo "make faults    hosts live among faults of all they stand on (SECONDS=60, SEED=n)"
	@echo "make docs      make the API reference, build/docs/html/index.html"
	@echo "make coverage  run the tests and print which lines and branches of quenwick/ they reach"
	@echo "make fuzz      throw made-up input at the library, SECONDS=60 for each target"
	@echo "make bench     run the benchmarks (optimised build) and write docs/figures.md"
	@echo "make format    bring all C++ into the house's form"
	@echo "make lint      check the form, that headers compile alone, the reference, and clang-tidy"
	@echo "make check     lint, build and test"
	@echo "make clean     remove build/"

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

packages: bootstrap
	@cmake --preset packages >/dev/null
	cmake --build --preset packages
	cd build/packages && cpack

demo-ui: bootstrap
	@cmake --preset $(PRESET) >/dev/null
	@cmake --build --preset $(PRESET) --target quenwick-sandbox storefront ui_screenshots
	@scripts/demo-ui build/$(PRESET)

bench:
	@scripts/bootstrap nginx-light
	@cmake --preset release >/dev/null
	cmake --build --preset release
	scripts/bench build/release

faults: build
	tests/faults/faults.py $(SECONDS) build/$(PRESET)/tests/life \
	  build/$(PRESET)/sandbox/quenwick-sandbox $(if $(SEED),--seed $(SEED))

docs: bootstrap
	@scripts/reference
	@echo build/docs/html/index.html

coverage:
	@rm -rf build/coverage/profiles
	@$(MAKE) --no-print-directory test PRESET=coverage
	@scripts/coverage build/coverage

fuzz: bootstrap
	@cmake --preset fuzz >/dev/null
	cmake --build --preset fuzz
	scripts/fuzz build/fuzz $(SECONDS)

format: bootstrap
	@scripts/sources | xargs clang-format-19 -i

lint: bootstrap
	@scripts/lint

check: lint test

clean:
	rm -rf build
