# The two commands a player or a developer needs: `make run` and `make test`.
# Both install what is missing, build, and prepare build/game/ (the binary beside its Data/).
# Xvfb runs with -noreset: otherwise it resets whenever its last client leaves, and a
# test that opens its window at that moment in a parallel run cannot connect.

BUILD   ?= build
JOBS    ?= $(shell nproc)
XVFB    := xvfb-run -a -s "-screen 0 1024x768x24 -noreset"

.PHONY: all run test setup deps configure build clean

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
	@if [ -z "$$DISPLAY" ]; then \
		$(XVFB) ctest --test-dir $(BUILD) --output-on-failure -j $(JOBS); \
	else \
		ctest --test-dir $(BUILD) --output-on-failure -j $(JOBS); \
	fi

clean:
	rm -rf $(BUILD)
