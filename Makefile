# Thin wrapper over CMake: `make run` and `make test` do all set-up themselves.
BUILD ?= build
JOBS ?= $(shell nproc)
PREFIX ?= /usr/local

.PHONY: run test test-sanitize deps configure build bench install package clean

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

# The whole suite again in a build with the address and undefined-behaviour
# sanitizers: any report fails its test. About 10 minutes on two cores.
test-sanitize: deps
	@cmake -S . -B build-sanitize -DCMAKE_BUILD_TYPE=RelWithDebInfo -DPONDERA_SANITIZE=ON >/dev/null
	@cmake --build build-sanitize -j $(JOBS)
	cd build-sanitize && QT_QPA_PLATFORM=offscreen ctest --output-on-failure -j $(JOBS)

# The programs, desktop entry, metadata, icons and manual pages under PREFIX.
install: deps
	@cmake -S . -B $(BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_INSTALL_PREFIX=$(PREFIX) >/dev/null
	@cmake --build $(BUILD) -j $(JOBS) --target pondera pondera-cli desktop_files
	cmake --install $(BUILD) --strip

# A Debian package for /usr, left in this folder.
package: configure
	@cmake --build $(BUILD) -j $(JOBS) --target pondera pondera-cli desktop_files
	cd $(BUILD) && cpack -G DEB
	mv $(BUILD)/pondera_*.deb .

bench: configure
	@cmake -S . -B build-bench -DCMAKE_BUILD_TYPE=Release >/dev/null
	@cmake --build build-bench -j $(JOBS) --target pondera_bench
	build-bench/bench/pondera_bench

clean:
	rm -rf $(BUILD) build-bench build-sanitize pondera_*.deb
