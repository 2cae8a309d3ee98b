# make run   installs what is missing, builds and starts Tessaro
# make test  the same, then runs every test
# make bench the same, then runs the benchmarks
BUILD_DIR ?= build
BUILD_TYPE ?= RelWithDebInfo
JOBS ?= 2

.PHONY: all deps build run test bench format clean

all: build

deps:
	@scripts/install-deps.sh

$(BUILD_DIR)/CMakeCache.txt: | deps
	cmake -S . -B $(BUILD_DIR) -DCMAKE_BUILD_TYPE=$(BUILD_TYPE)

build: deps $(BUILD_DIR)/CMakeCache.txt
	cmake --build $(BUILD_DIR) -j$(JOBS)

run: build
	@scripts/run.sh $(BUILD_DIR)/app/tessaro

test: build
	cd $(BUILD_DIR) && ctest --output-on-failure -j$(JOBS) --timeout 300

bench: build
	@scripts/bench.sh $(BUILD_DIR)

format:
	git ls-files '*.cpp' '*.h' | xargs clang-format -i

clean:
	rm -rf $(BUILD_DIR)
