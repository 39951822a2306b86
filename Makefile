# Thin wrapper around CMake. `make test` and `make demo` install what they need first.
BUILD ?= build
JOBS ?= $(shell nproc 2>/dev/null || echo 2)
CMAKE_FLAGS ?=

.PHONY: all deps configure build test test-sanitize demo fuzz bench windows clean

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

# The Windows module (ZEAviReader.dll) and avihost.exe, 32-bit and 64-bit, cross-built with mingw-w64;
# each module's exports are checked: the four entry points, undecorated, and no mingw runtime DLL.
WIN_BUILDS ?= build-win32 build-win64
WIN_JOBS ?= $(JOBS)
# The toolchain file is read only when a build folder is first configured; naming it again only draws a warning.
win_toolchain = $(if $(wildcard $(1)/CMakeCache.txt),,-DCMAKE_TOOLCHAIN_FILE=cmake/toolchain-$(2)-w64-mingw32.cmake)
windows:
	@ZE_WITH_MINGW=1 scripts/install-deps
	@cmake -S . -B build-win32 $(call win_toolchain,build-win32,i686) \
	  -DCMAKE_BUILD_TYPE=RelWithDebInfo -DZE_TESTS=OFF $(CMAKE_FLAGS) >/dev/null
	@cmake --build build-win32 -j $(WIN_JOBS) --target zeavireader avihost
	@scripts/check-windows-exports build-win32/ZEAviReader.dll
	@cmake -S . -B build-win64 $(call win_toolchain,build-win64,x86_64) \
	  -DCMAKE_BUILD_TYPE=RelWithDebInfo -DZE_TESTS=OFF $(CMAKE_FLAGS) >/dev/null
	@cmake --build build-win64 -j $(WIN_JOBS) --target zeavireader avihost
	@scripts/check-windows-exports build-win64/ZEAviReader.dll

clean:
	rm -rf $(BUILD) build-sanitize build-fuzz build-bench $(WIN_BUILDS)
