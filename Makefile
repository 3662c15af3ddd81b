# Front door: `make test` and `make demo` work on a fresh Debian machine.
# Jobs stay at 2: the machines are small and shared.
JOBS  ?= 2
BUILD ?= build
ASAN_BUILD ?= build-asan
BENCH_BUILD ?= build-bench
TSAN_BUILD ?= build-tsan
# ThreadSanitizer runs the programs several times slower; cases that shrink
# protocol timers stretch them by this factor.
TSAN_TIME_FACTOR ?= 4
AARCH64_BUILD ?= build-aarch64
# Most cases wait on sockets and timers rather than compute: ctest runs more
# of them at once than the build runs compilers.
TEST_JOBS ?= 4
CTEST_ARGS ?= --output-on-failure -j$(TEST_JOBS)
# Under ThreadSanitizer and qemu the cases compute far more: one per core.
SLOW_CTEST_ARGS ?= --output-on-failure -j$(JOBS)
# A compiler cache, when the machine has one, makes rebuilds in several
# checkouts cheap; nothing depends on it.
LAUNCHER := $(if $(shell command -v ccache 2>/dev/null),-DCMAKE_CXX_COMPILER_LAUNCHER=ccache -DCMAKE_C_COMPILER_LAUNCHER=ccache)

.PHONY: all deps configure build test test-asan test-tsan soak deps-aarch64 test-aarch64 \
        package package-aarch64 demo bench fuzz install clean

all: build

deps:
	@scripts/install-deps

# Configure once; later builds re-run CMake by themselves when a CMake file
# or a globbed folder changes.
configure: deps
	@test -f $(BUILD)/CMakeCache.txt || \
	  cmake -S . -B $(BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo $(LAUNCHER) >/dev/null

build: configure
	@cmake --build $(BUILD) -j$(JOBS)

test: build
	@cd $(BUILD) && ctest $(CTEST_ARGS)

test-asan: deps
	@test -f $(ASAN_BUILD)/CMakeCache.txt || \
	  cmake -S . -B $(ASAN_BUILD) -DCMAKE_BUILD_TYPE=Debug -DQUORVEL_SANITIZE=ON $(LAUNCHER) \
	    -DQUORVEL_BENCH=OFF >/dev/null
	@cmake --build $(ASAN_BUILD) -j$(JOBS)
	@cd $(ASAN_BUILD) && ASAN_OPTIONS=detect_leaks=1 \
	  UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 ctest $(CTEST_ARGS)

# The whole suite under ThreadSanitizer. The suppressions cover races the
# detector reports inside uninstrumented third-party libraries only.
test-tsan: deps
	@test -f $(TSAN_BUILD)/CMakeCache.txt || \
	  cmake -S . -B $(TSAN_BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DQUORVEL_TSAN=ON $(LAUNCHER) \
	    -DQUORVEL_BENCH=OFF -DQUORVEL_TEST_TIME_FACTOR=$(TSAN_TIME_FACTOR) >/dev/null
	@cmake --build $(TSAN_BUILD) -j$(JOBS)
	@cd $(TSAN_BUILD) && \
	  TSAN_OPTIONS="halt_on_error=1 second_deadlock_stack=1 suppressions=$(CURDIR)/tests/tsan.supp" \
	  ctest $(SLOW_CTEST_ARGS)

# 128 sessions against several camera processes that misbehave, for
# SOAK_SECONDS (3 minutes by default); prints its figures and fails when a
# check does not hold.
SOAK_SECONDS ?= 180
soak: configure
	@cmake --build $(BUILD) -j$(JOBS) --target quorvel_soak quorvel_emu_main
	@$(BUILD)/quorvel-soak --seconds $(SOAK_SECONDS)

# Cross-built for aarch64 with the toolchain file of cmake/, run under
# qemu-user. Its packages are installed by a script of their own, so that
# `make test` never pays for them.
deps-aarch64: deps
	@scripts/install-deps-aarch64

$(AARCH64_BUILD)/CMakeCache.txt:
	@cmake -S . -B $(AARCH64_BUILD) -DCMAKE_TOOLCHAIN_FILE=cmake/aarch64-linux-gnu.cmake \
	  -DCMAKE_BUILD_TYPE=RelWithDebInfo -DQUORVEL_BENCH=OFF $(LAUNCHER) >/dev/null

# A few live-stream cases time the camera's stream against its probing,
# which emulation stretches: a case that fails is run once more.
test-aarch64: deps-aarch64 $(AARCH64_BUILD)/CMakeCache.txt
	@cmake --build $(AARCH64_BUILD) -j$(JOBS)
	@cd $(AARCH64_BUILD) && ctest $(SLOW_CTEST_ARGS) --repeat until-pass:2

# Debian packages of the library (runtime and development) in the build
# folder: amd64 from build/, arm64 from build-aarch64/.
package: build
	@cd $(BUILD) && cpack -G DEB

package-aarch64: deps-aarch64 $(AARCH64_BUILD)/CMakeCache.txt
	@cmake --build $(AARCH64_BUILD) -j$(JOBS)
	@cd $(AARCH64_BUILD) && cpack -G DEB

demo: build
	@scripts/demo $(BUILD)

# Optimised build of its own (Release, no tests); prints one table of figures.
bench: deps
	@JOBS=$(JOBS) scripts/bench $(BENCH_BUILD)

# libFuzzer targets, built by clang in build-fuzz/ and run FUZZ_SECONDS (60)
# each; clang is installed by this target only.
fuzz:
	@JOBS=$(JOBS) scripts/fuzz

install: build
	@cmake --install $(BUILD)

clean:
	@rm -rf $(BUILD) $(ASAN_BUILD) $(TSAN_BUILD) $(BENCH_BUILD) $(AARCH64_BUILD) build-fuzz
