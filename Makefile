# Two commands for a user: `make run` and `make test`. Both install what is
# missing (scripts/bootstrap) and build first.
JOBS ?= $(shell nproc)
ZELTO_MESH = build/default/bin/zelto-mesh

.PHONY: all bootstrap build build-cli run test test-default test-asan test-tsan \
  test-arm64 test-release-warnings test-fuzz fuzz bench soak clean

all: build

bootstrap:
	@scripts/bootstrap

build: bootstrap
	cmake --preset default >/dev/null
	cmake --build --preset default -j $(JOBS)

# Only what the main job needs: the command-line host and its two plug-ins
# (the mesh component and the simulator); the suites are built by make test.
build-cli: bootstrap
	cmake --preset default >/dev/null
	cmake --build --preset default -j $(JOBS) --target zelto-mesh

# The main job on its built-in default: the synthetic scene with the
# "person" mask, PLY meshes, a preview and per-frame statistics in out/
# (replacing the meshes of the previous make run).
run: build-cli
	$(ZELTO_MESH) run --mask person --out out --replace --preview out/preview.png --stats out/stats.jsonl

# The suite twice (normal, then AddressSanitizer + UBSan), then the
# concurrency suite under ThreadSanitizer, then the suite built for arm64,
# then the warning check of a plain Release build, then a short run of each
# fuzz harness.
test: bootstrap test-default test-asan test-tsan test-arm64 test-release-warnings test-fuzz

test-default:
	cmake --preset default >/dev/null
	cmake --build --preset default -j $(JOBS)
	ctest --preset default

test-asan:
	cmake --preset asan >/dev/null
	cmake --build --preset asan -j $(JOBS)
	ctest --preset asan

test-tsan:
	cmake --preset tsan >/dev/null
	cmake --build --preset tsan -j $(JOBS) --target concurrency_tests
	ctest --preset tsan

# Cross-built for arm64 and run under qemu-user: the device must deliver the
# same mesh bytes as an x86-64 host. The suites that drive the host and the
# simulated device (whose decoding threads meet the host's on locks) are left
# out: under the emulator contended mutexes spin for many minutes.
test-arm64: bootstrap
	cmake --preset arm64 >/dev/null
	cmake --build --preset arm64 -j $(JOBS)
	ctest --preset arm64

# A packager's or a host app's build, a plain Release build (-O3) without a
# preset, must not print a single warning: with GCC everything is built, with
# Clang the plug-ins and the command-line host only, to keep CI short.
test-release-warnings: bootstrap
	JOBS=$(JOBS) scripts/check-release-warnings g++
	JOBS=$(JOBS) scripts/check-release-warnings clang++ zelto-mesh

# The libFuzzer harnesses of fuzz/ (Clang, ASan + UBSan), each run for a few
# seconds over its seeds, so that they keep building and running.
test-fuzz: bootstrap
	cmake --preset fuzz >/dev/null
	cmake --build --preset fuzz -j $(JOBS)
	ctest --preset fuzz

# The same harnesses for FUZZ_SECONDS each (docs/fuzzing.md).
FUZZ_SECONDS ?= 600
fuzz: bootstrap
	cmake --preset fuzz >/dev/null
	cmake --build --preset fuzz -j $(JOBS)
	scripts/fuzz $(FUZZ_SECONDS)

bench: build
	build/default/bin/zelto_bench

# The memory soak (bench/soak_main.cpp, docs/performance.md): 10,000 frames of
# examples/redwood through the host while a client keeps changing the reduction
# level and the layout; fails when the resident set grows.
soak: bootstrap
	cmake --preset default >/dev/null
	cmake --build --preset default -j $(JOBS) --target zelto_soak
	build/default/bin/zelto_soak

clean:
	rm -rf build out
