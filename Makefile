# Thin wrapper over CMake: `make run` and `make test` do all set-up themselves.
BUILD ?= build
JOBS ?= $(shell nproc)

.PHONY: run test deps configure build bench clean

deps:
	@scripts/install-deps.sh

configure: deps
	@cmake -S . -B $(BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null

build: configure
	@cmake --build $(BUILD) -j $(JOBS)

run: build
	$(BUILD)/app/pondera

test: build
	cd $(BUILD) && QT_QPA_PLATFORM=offscreen ctest --output-on-failure -j $(JOBS)

bench: configure
	@cmake -S . -B build-bench -DCMAKE_BUILD_TYPE=Release >/dev/null
	@cmake --build build-bench -j $(JOBS) --target pondera_bench
	build-bench/bench/pondera_bench

clean:
	rm -rf $(BUILD) build-bench
