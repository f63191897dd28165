# The commands of every day. The build itself is in CMakeLists.txt and CMakePresets.json.
# Needs nothing but make and a Debian 12; scripts/install-deps brings the rest.

PREFIX ?= /usr/local
JOBS := $(shell nproc)
BUILD := build/release
FUZZ_SECONDS ?= 60
SANITIZE_TESTS ?= .
CROSS_TARGETS ?= mips s390x
PROGRAMS := vireod vireoctl vireo-image vireo_client_mgmt

.DEFAULT_GOAL := help
.NOTPARALLEL:
.PHONY: help run demo test bench sanitize fuzz cross lint format install clean programs

help:
	@echo "make run       install what is missing, build, and run the service on the sample phone"
	@echo "make demo      a tour that starts and stops everything itself"
	@echo "make test      build and run all tests"
	@echo "make bench     compare speed and memory with what else one could use; QUICK=1: under a minute"
	@echo "make sanitize  all tests under the address, undefined behaviour and thread sanitizers;"
	@echo "               SANITIZE_TESTS=REGEX: those that match"
	@echo "make fuzz      feed the decoders with made-up input, FUZZ_SECONDS ($(FUZZ_SECONDS)) for each"
	@echo "make cross     build and run all tests for big-endian processors, under an emulator"
	@echo "make lint      format, static analysis, include direction, sample configuration"
	@echo "make format    format all sources in place"
	@echo "make install   install below PREFIX ($(PREFIX)); DESTDIR is put before it"
	@echo "make clean     remove the builds; the phone under build/phone stays"

run: programs
	@exec scripts/run $(BUILD)

demo: programs
	@scripts/demo $(BUILD)

test:
	scripts/install-deps build test
	cmake --preset release -D VIREO_BUILD_TESTS=ON
	cmake --build --preset release --parallel $(JOBS)
	@ctest --preset release --parallel $(JOBS)

bench:
	scripts/install-deps build bench
	cmake --preset release -D VIREO_BUILD_BENCH=ON
	cmake --build --preset release --parallel $(JOBS) --target vireo_bench
	@scripts/bench $(BUILD) $(if $(QUICK),--quick)

sanitize:
	scripts/install-deps build test
	cmake --preset asan
	cmake --build --preset asan --parallel $(JOBS)
	ctest --preset asan --parallel $(JOBS) --tests-regex '$(SANITIZE_TESTS)'
	cmake --preset tsan
	cmake --build --preset tsan --parallel $(JOBS)
	@ctest --preset tsan --parallel $(JOBS) --tests-regex '$(SANITIZE_TESTS)'

fuzz:
	scripts/install-deps build fuzz
	cmake --preset fuzz
	cmake --build --preset fuzz --parallel $(JOBS)
	@scripts/fuzz build/fuzz $(FUZZ_SECONDS)

cross:
	@scripts/cross $(CROSS_TARGETS)

lint:
	scripts/install-deps build test lint
	cmake --preset release -D VIREO_BUILD_TESTS=ON
	@scripts/lint $(BUILD)

format:
	scripts/install-deps lint
	@scripts/format

install: programs
	cmake --install $(BUILD) --prefix $(PREFIX)

clean:
	rm -rf build/release build/asan build/tsan build/fuzz build/cross build/cross-*

# Running the service takes fewer packages than testing it.
programs:
	scripts/install-deps build
	@test $(BUILD)/build.ninja -nt CMakePresets.json || \
	    cmake --preset release -D VIREO_BUILD_TESTS=OFF
	cmake --build --preset release --parallel $(JOBS) --target $(PROGRAMS)
