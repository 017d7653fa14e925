# Entry points. Every target installs missing Debian packages first.
BUILD      ?= build
BUILD_ASAN ?= build-asan
BUILD_FUZZ ?= build-fuzz
FUZZ_SECONDS ?= 60
# Any allocation beyond this, driven by an input, is a finding.
FUZZ_MALLOC_MB ?= 1024
JOBS       ?= $(shell nproc)
# ccache, when the machine has it, lets the builds share what they compiled
# before (a second `make test-asan` recompiles only what changed).
CCACHE     := $(shell command -v ccache 2>/dev/null)
# Precompiled headers are cached only with these relaxations.
export CCACHE_SLOPPINESS ?= pch_defines,time_macros
CMAKE_ARGS ?= $(if $(CCACHE),-DCMAKE_CXX_COMPILER_LAUNCHER=ccache -DCMAKE_C_COMPILER_LAUNCHER=ccache)
PREFIX     ?= /usr/local

.PHONY: all deps configure build test test-asan bench demo fuzz fuzz-merge python install clean

all: build

deps:
	@./scripts/install-deps.sh

configure: deps
	cmake -S . -B $(BUILD) -DCMAKE_BUILD_TYPE=Release $(CMAKE_ARGS)

build: configure
	cmake --build $(BUILD) -j $(JOBS)

test: build
	ctest --test-dir $(BUILD) --output-on-failure -j $(JOBS)

# AddressSanitizer + UndefinedBehaviorSanitizer build of the library and all
# tests, the fuzz corpus replays included; no benchmarks. -O0 with line
# tables only: the instrumented kernels compile in a quarter of the time of
# -O2 -g (the whole build in about 9 minutes on 2 cores, the tests in 41 s),
# and the reports still name file and line.
ASAN_FLAGS ?= -O0 -g1 -DNDEBUG
test-asan: deps
	cmake -S . -B $(BUILD_ASAN) -DCMAKE_BUILD_TYPE=RelWithDebInfo "-DCMAKE_CXX_FLAGS_RELWITHDEBINFO=$(ASAN_FLAGS)" \
	  "-DCMAKE_C_FLAGS_RELWITHDEBINFO=$(ASAN_FLAGS)" -DORV_SANITIZE=ON -DORV_BENCH=OFF $(CMAKE_ARGS)
	cmake --build $(BUILD_ASAN) -j $(JOBS)
	ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
	  ctest --test-dir $(BUILD_ASAN) --output-on-failure -j $(JOBS)

bench: build
	@for b in $(BUILD)/bench/bench_*; do echo "== $$b"; $$b --benchmark_min_time=0.2; done

# The Python package in $(BUILD)/python: PYTHONPATH=$(BUILD)/python /usr/bin/python3 -c "import orvreduce"
python: configure
	cmake --build $(BUILD) -j $(JOBS) --target python_package orvreduce_cli

# Builds only the program and what it links, then runs its tour.
demo: configure
	cmake --build $(BUILD) -j $(JOBS) --target orvreduce_cli
	$(BUILD)/tools/orvreduce/orvreduce demo

# libFuzzer with AddressSanitizer and UndefinedBehaviorSanitizer (clang): each
# target runs FUZZ_SECONDS on a copy of its corpus; crashes, hangs (10 s),
# leaks, one allocation above FUZZ_MALLOC_MB and out-of-memory stop it and
# leave the input in $(BUILD_FUZZ)/fuzz-findings. `make fuzz-merge` then
# folds what the run reached into fuzz/corpus (libFuzzer -merge=1 keeps only
# inputs that add coverage), so that `make test` replays it.
# Target and the largest input worth trying, in bytes:
FUZZ_TARGETS = fuzz_info_file:16384 fuzz_reduce_object:8192 fuzz_recording:16384 fuzz_convert:16384 fuzz_reduction:16384 \
               fuzz_frame_filter:4096 \
               fuzz_rcal_file:8192 fuzz_xml_file:8192 fuzz_norm_file:4096 fuzz_jpeg:8192 \
               fuzz_deinterlace:1024 fuzz_text:256 fuzz_roi:8192
fuzz: deps
	CC=clang CXX=clang++ cmake -S . -B $(BUILD_FUZZ) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DORV_FUZZ=ON -DORV_BENCH=OFF $(CMAKE_ARGS)
	cmake --build $(BUILD_FUZZ) -j $(JOBS) --target fuzz_targets
	@set -e; for entry in $(FUZZ_TARGETS); do \
	  name=$${entry%%:*}; len=$${entry##*:}; \
	  work=$(BUILD_FUZZ)/fuzz-corpus/$$name; mkdir -p $$work $(BUILD_FUZZ)/fuzz-findings; \
	  cp fuzz/corpus/$$name/* $$work/; \
	  echo "== $$name ($(FUZZ_SECONDS) s)"; \
	  UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
	  $(BUILD_FUZZ)/fuzz/$$name $$work -max_total_time=$(FUZZ_SECONDS) -max_len=$$len -timeout=10 \
	    -rss_limit_mb=2048 -malloc_limit_mb=$(FUZZ_MALLOC_MB) -print_final_stats=1 \
	    -artifact_prefix=$(BUILD_FUZZ)/fuzz-findings/$$name-; \
	done

fuzz-merge:
	@set -e; for entry in $(FUZZ_TARGETS); do \
	  name=$${entry%%:*}; len=$${entry##*:}; work=$(BUILD_FUZZ)/fuzz-corpus/$$name; \
	  test -d $$work || { echo "$$work: run make fuzz first"; exit 1; }; \
	  echo "== $$name: merging"; \
	  $(BUILD_FUZZ)/fuzz/$$name -merge=1 -max_len=$$len -timeout=10 -rss_limit_mb=2048 \
	    -malloc_limit_mb=$(FUZZ_MALLOC_MB) fuzz/corpus/$$name $$work; \
	done

# Libraries (versioned), headers under include/orv, the CMake package, the
# pkg-config file and the program, into PREFIX.
install: build
	cmake --install $(BUILD) --prefix $(PREFIX)

clean:
	rm -rf $(BUILD) $(BUILD_ASAN) $(BUILD_FUZZ)
