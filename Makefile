# The commands of the README. Each installs what is missing, then builds with CMake presets.
PREFIX ?= /usr/local
FUZZ_SECONDS ?= 60
CMAKE ?= cmake

.PHONY: all build deps demo test bench fuzz install format format-check tidy clean

all: build

deps:
	@scripts/install-deps

build: deps
	$(CMAKE) --preset default
	$(CMAKE) --build --preset default

demo: build
	@scripts/demo build/default

test: build
	ctest --preset default

bench:
	@scripts/install-deps bench
	$(CMAKE) --preset release
	$(CMAKE) --build --preset release
	@scripts/run-benchmarks build/release

fuzz:
	@scripts/install-deps fuzz
	$(CMAKE) --preset fuzz
	$(CMAKE) --build --preset fuzz
	@scripts/run-fuzzers build/fuzz $(FUZZ_SECONDS)

install: deps
	$(CMAKE) --preset release -DCMAKE_INSTALL_PREFIX=$(PREFIX)
	$(CMAKE) --build --preset release
	$(CMAKE) --install build/release

format:
	git ls-files '*.hpp' '*.cpp' | xargs clang-format -i

format-check:
	git ls-files '*.hpp' '*.cpp' | xargs clang-format --dry-run --Werror

tidy: build
	scripts/run-tidy build/default

clean:
	rm -rf build
