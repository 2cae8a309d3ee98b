# make run   installs what is missing, builds and starts Tessaro
# make test  the same, then runs every test
# make bench the same, then runs the benchmarks
# make install PREFIX=/usr/local  installs the program, its data, launcher, icons and manual
# make package  builds a Debian package in $(BUILD_DIR)
# make sanitize  the camera, desktop-service and recording tests built with AddressSanitizer and UBSan
BUILD_DIR ?= build
BUILD_TYPE ?= RelWithDebInfo
JOBS ?= 2

.PHONY: all deps build run test bench sanitize install package format clean

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

# The sanitizers make GCC's flow analysis see uninitialised members that are not: that warning
# alone stays a warning here.
SANITIZE_DIR ?= build-sanitize
SANITIZE_FLAGS = -fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=undefined
sanitize: deps
	cmake -S . -B $(SANITIZE_DIR) -DCMAKE_BUILD_TYPE=Debug \
		-DCMAKE_CXX_FLAGS="$(SANITIZE_FLAGS) -O1 -Wno-error=maybe-uninitialized" \
		-DCMAKE_EXE_LINKER_FLAGS="$(SANITIZE_FLAGS)"
	cmake --build $(SANITIZE_DIR) -j$(JOBS) --target test_av test_desktop test_capture
	cd $(SANITIZE_DIR) && for t in tests/av/test_av tests/desktop/test_desktop tests/capture/test_capture; do \
		QT_QPA_PLATFORM=offscreen LC_ALL=C.UTF-8 ASAN_OPTIONS=detect_leaks=0 \
		UBSAN_OPTIONS=print_stacktrace=1 ./$$t || exit 1; done

PREFIX ?= /usr/local
install: build
	cmake --install $(BUILD_DIR) --prefix $(PREFIX)

package: build
	cd $(BUILD_DIR) && cpack -G DEB
	@ls $(BUILD_DIR)/*.deb

format:
	git ls-files '*.cpp' '*.h' | xargs clang-format -i

clean:
	rm -rf $(BUILD_DIR)
