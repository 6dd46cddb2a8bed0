# The commands of the house. Each installs what it needs, so that a fresh clone is enough.

PRESET ?= debug

.PHONY: help bootstrap build test demo bench format lint check clean

help:
	@echo "make demo     build, and resolve tracking links against the local sandbox"
	@echo "make test     build and run all tests (PRESET=asan-ubsan, tsan or release for those)"
	@echo "make bench    run the benchmarks (optimised build) and write docs/figures.md"
	@echo "make check    format, lint, build and test, as CI does"

bootstrap:
	@scripts/bootstrap

build: bootstrap
	@cmake --preset $(PRESET) >/dev/null
	@cmake --build --preset $(PRESET)

test: build
	ctest --preset $(PRESET)

demo: build
	@scripts/demo build/$(PRESET)

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
