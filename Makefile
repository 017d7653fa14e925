# Entry points. Every target installs missing Debian packages first.
BUILD      ?= build
BUILD_ASAN ?= build-asan
JOBS       ?= $(shell nproc)
CMAKE_ARGS ?=

.PHONY: all deps configure build test test-asan bench demo clean

all: build

deps:
	@./scripts/install-deps.sh

configure: deps
	cmake -S . -B $(BUILD) -DCMAKE_BUILD_TYPE=Release $(CMAKE_ARGS)

build: configure
	cmake --build $(BUILD) -j $(JOBS)

test: build
	ctest --test-dir $(BUILD) --output-on-failure -j $(JOBS)

# AddressSanitizer + UndefinedBehaviorSanitizer build of the library and all tests.
test-asan: deps
	cmake -S . -B $(BUILD_ASAN) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DORV_SANITIZE=ON -DORV_BENCH=OFF $(CMAKE_ARGS)
	cmake --build $(BUILD_ASAN) -j $(JOBS)
	ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
	  ctest --test-dir $(BUILD_ASAN) --output-on-failure -j $(JOBS)

bench: build
	@for b in $(BUILD)/bench/bench_*; do echo "== $$b"; $$b --benchmark_min_time=0.2; done

# Builds only the program and what it links, then runs its tour.
demo: configure
	cmake --build $(BUILD) -j $(JOBS) --target orvreduce_cli
	$(BUILD)/tools/orvreduce/orvreduce demo

clean:
	rm -rf $(BUILD) $(BUILD_ASAN)
