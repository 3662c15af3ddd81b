# Front door: `make test` and `make demo` work on a fresh Debian machine.
# Jobs stay at 2: the machines are small and shared.
JOBS  ?= 2
BUILD ?= build
ASAN_BUILD ?= build-asan
CTEST_ARGS ?= --output-on-failure -j$(JOBS)
# A compiler cache, when the machine has one, makes rebuilds in several
# checkouts cheap; nothing depends on it.
LAUNCHER := $(if $(shell command -v ccache 2>/dev/null),-DCMAKE_CXX_COMPILER_LAUNCHER=ccache -DCMAKE_C_COMPILER_LAUNCHER=ccache)

.PHONY: all deps configure build test test-asan demo bench install clean

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

demo: build
	@scripts/demo $(BUILD)

bench: build
	@scripts/bench $(BUILD)

install: build
	@cmake --install $(BUILD)

clean:
	@rm -rf $(BUILD) $(ASAN_BUILD)
