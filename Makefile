# Thin wrapper around CMake. `make test` and `make demo` install what they need first.
BUILD ?= build
JOBS ?= $(shell nproc 2>/dev/null || echo 2)
CMAKE_FLAGS ?=

.PHONY: all deps configure build test test-sanitize demo fuzz bench clean

all: build

deps:
	@scripts/install-deps

configure: deps
	@cmake -S . -B $(BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo $(CMAKE_FLAGS) >/dev/null

build: configure
	@cmake --build $(BUILD) -j $(JOBS)

test: build
	@cd $(BUILD) && ctest --output-on-failure -j $(JOBS)

test-sanitize:
	@scripts/install-deps
	@cmake -S . -B build-sanitize -DCMAKE_BUILD_TYPE=Debug -DZE_SANITIZE=ON >/dev/null
	@cmake --build build-sanitize -j $(JOBS)
	@cd build-sanitize && ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 ctest --output-on-failure -j $(JOBS)

demo: build
	@scripts/demo $(BUILD)

fuzz:
	@ZE_WITH_CLANG=1 scripts/install-deps
	@CC=clang CXX=clang++ cmake -S . -B build-fuzz -DCMAKE_BUILD_TYPE=RelWithDebInfo -DZE_FUZZ=ON -DZE_TESTS=OFF >/dev/null
	@cmake --build build-fuzz -j $(JOBS) --target fuzz_avi_parser fuzz_avi_structured fuzz_make_seeds
	@scripts/run-fuzz build-fuzz $(FUZZ_SECONDS)

bench:
	@scripts/install-deps
	@cmake -S . -B build-bench -DCMAKE_BUILD_TYPE=Release -DZE_BENCH=ON -DZE_TESTS=OFF >/dev/null
	@cmake --build build-bench -j $(JOBS)
	@scripts/run-bench build-bench

clean:
	rm -rf $(BUILD) build-sanitize build-fuzz build-bench
