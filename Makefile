# Thin wrapper over CMake. `make run` and `make test` are the two commands of the README.
BUILD   ?= build
CMAKE_FLAGS ?=
JOBS    ?= $(shell nproc)

.PHONY: all deps configure build run test sanitize-address sanitize-thread fuzz bench format clean

all: build

deps:
	@./scripts/install-deps.sh

$(BUILD)/build.ninja:
	cmake -S . -B $(BUILD) -G Ninja $(CMAKE_FLAGS)

configure: $(BUILD)/build.ninja

build: deps configure
	cmake --build $(BUILD) -j $(JOBS)

run: build
	@./scripts/run-demo.sh $(BUILD)

test: build
	ctest --test-dir $(BUILD) --output-on-failure -j $(JOBS)

sanitize-address: export LSAN_OPTIONS = suppressions=$(CURDIR)/tests/sanitizers/lsan.supp:print_suppressions=0
sanitize-address:
	$(MAKE) test BUILD=build-asan CMAKE_FLAGS="-DVELLORA_SANITIZE=address -DVELLORA_BENCH=OFF"

sanitize-thread:
	$(MAKE) test BUILD=build-tsan CMAKE_FLAGS="-DVELLORA_SANITIZE=thread -DVELLORA_BENCH=OFF"

fuzz: deps
	cmake -S . -B build-fuzz -G Ninja -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_C_COMPILER=clang \
	    -DVELLORA_FUZZ=ON -DVELLORA_BENCH=OFF
	cmake --build build-fuzz -j $(JOBS) --target fuzzers

bench: build
	@./scripts/run-benchmarks.sh $(BUILD)

format:
	git ls-files '*.cpp' '*.h' | xargs clang-format -i

clean:
	rm -rf $(BUILD)
