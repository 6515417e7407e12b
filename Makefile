# The two commands a player or a developer needs: `make run` and `make test`.
# Both install what is missing, build, and prepare build/game/ (the binary beside its Data/).
# `make install PREFIX=...` installs for a Linux desktop (default /usr/local);
# `make uninstall` removes that installation again, never the players' own folders.
# `make deb` builds the Debian packages brontevalle and brontevalle-data from
# the working tree in a scratch copy and checks them with lintian (build/deb/).
# `make test-asan` builds in build-asan and runs every test under AddressSanitizer
# and UndefinedBehaviorSanitizer; `make fuzz FUZZ_SECONDS=...` fuzzes each file
# reader for that long (build-fuzz, clang).
# `make soak SOAK_SECONDS=...` races the computer karts for that long (30 min)
# with every effect on, in a debug build in build-soak, failing on GL errors,
# crashes or memory growth, then checks a short race under valgrind.
# `make bench` builds and runs the benchmarks and the frame-time harness on this
# machine and writes docs/PERFORMANCE.md and docs/performance.json from what they
# measured; `make bench BENCH_QUICK=1` does the same in a minute or two. Neither
# is part of `make test`: a slow machine must not fail the tests.

BUILD   ?= build
ASAN_BUILD ?= build-asan
FUZZ_BUILD ?= build-fuzz
FUZZ_SECONDS ?= 60
SOAK_BUILD ?= build-soak
SOAK_SECONDS ?= 1800
JOBS    ?= $(shell nproc)
XVFB    := scripts/with-xvfb
PREFIX  ?= /usr/local
BENCH_FRAMES ?= 300
BENCH_WARMUP ?= 60
BENCH_MIN_TIME ?= 0.5
ifeq ($(BENCH_QUICK),1)
BENCH_FRAMES := 20
BENCH_WARMUP := 5
BENCH_MIN_TIME := 0.02
endif

.PHONY: all run test test-asan fuzz soak bench setup deps configure build install uninstall deb clean

all: setup

deps:
	@scripts/install-deps

configure: deps
	@cmake -S . -B $(BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null

build: configure
	@cmake --build $(BUILD) -j $(JOBS)

setup: build

run: setup
	@if [ -z "$$DISPLAY" ]; then echo "make run: no display to open the game window on (DISPLAY is not set)."; exit 1; fi
	cd $(BUILD)/game && ./brontevalle

test: setup
	@run=""; [ -n "$$DISPLAY" ] || run=$(XVFB); \
	$$run ctest --test-dir $(BUILD) --output-on-failure -j $(JOBS)

test-asan: deps
	@cmake -S . -B $(ASAN_BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DBV_SANITIZE=ON >/dev/null
	@cmake --build $(ASAN_BUILD) -j $(JOBS)
	@run=""; [ -n "$$DISPLAY" ] || run=$(XVFB); \
	$$run ctest --test-dir $(ASAN_BUILD) --output-on-failure -j $(JOBS)

bench: configure
	@cmake --build $(BUILD) -j $(JOBS) --target sim_bench frametime
	@mkdir -p $(BUILD)/bench-results docs
	@run=""; [ -n "$$DISPLAY" ] || run=$(XVFB); \
	$$run $(BUILD)/bench/sim_bench --benchmark_min_time=$(BENCH_MIN_TIME) \
		--benchmark_out=$(CURDIR)/$(BUILD)/bench-results/sim.json --benchmark_out_format=json && \
	$$run $(BUILD)/bench/frametime --all --frames $(BENCH_FRAMES) --warmup $(BENCH_WARMUP) \
		--sim $(BUILD)/bench-results/sim.json --raw $(BUILD)/bench-results/frames.txt \
		--markdown docs/PERFORMANCE.md --json docs/performance.json

fuzz: deps
	@scripts/fuzz --build-dir $(FUZZ_BUILD) --seconds $(FUZZ_SECONDS)

# The content comes from the ordinary build; only the soak program is built
# again, without optimisation and with its assertions.
soak: setup
	@cmake -S . -B $(SOAK_BUILD) -DCMAKE_BUILD_TYPE=Debug >/dev/null
	@cmake --build $(SOAK_BUILD) --target soak -j $(JOBS)
	@scripts/soak --build-dir $(SOAK_BUILD) --game-dir $(BUILD)/game --seconds $(SOAK_SECONDS)

install: setup
	cmake --install $(BUILD) --prefix "$(PREFIX)"

uninstall:
	cmake --build $(BUILD) --target uninstall

deb: deps
	@scripts/make-deb --out $(BUILD)/deb --jobs $(JOBS)

clean:
	rm -rf $(BUILD) $(ASAN_BUILD) $(FUZZ_BUILD) $(SOAK_BUILD)
