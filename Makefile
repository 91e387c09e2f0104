# Front door of the project. `make demo` and `make test` install what is missing first.
#   make deps     install the Debian packages the project needs
#   make build    configure and build (Debug, warnings as errors) in build/
#   make test     build and run every test: normal build, then AddressSanitizer+UBSan build
#   make asan     only the sanitizer build and its tests
#   make demo     build, then decode the bundled sample answers
#   make format   clang-format the lines changed since HEAD
#   make tidy     clang-tidy over the module and platform sources
#   make clean    remove the build directories

BUILD      ?= build
ASAN_BUILD ?= build-asan
JOBS       ?= $(shell nproc)
CMAKE_FLAGS ?=

CONFIGURE = cmake -S . -G Ninja -DATRIUM_XML_WERROR=ON $(CMAKE_FLAGS)

.PHONY: deps build test test-normal asan demo format tidy clean

deps:
	@bash scripts/install-deps.sh

build: deps
	$(CONFIGURE) -B $(BUILD) -DCMAKE_BUILD_TYPE=Debug
	cmake --build $(BUILD) -j $(JOBS)

test-normal: build
	cd $(BUILD) && ctest -j $(JOBS) --output-on-failure

asan: deps
	$(CONFIGURE) -B $(ASAN_BUILD) -DCMAKE_BUILD_TYPE=Debug -DATRIUM_XML_SANITIZE=address,undefined
	cmake --build $(ASAN_BUILD) -j $(JOBS)
	cd $(ASAN_BUILD) && ctest -j $(JOBS) --output-on-failure

test: test-normal asan

demo: build
	@$(BUILD)/tools/atrium-xml check examples/answers || \
	  echo "(the samples include refused and broken answers on purpose: see examples/answers/README.md)"
	@echo
	@$(BUILD)/tools/atrium-xml parse portal-login --format text --host sso-sz.corp.example \
	  examples/answers/portal-login-two-sites.xml

# Formats the lines changed since HEAD (key tables are laid out by hand, row per key, and
# a whole-file run would stretch them to one value per line).
format:
	git clang-format --style=file HEAD

tidy: build
	find platform service -name '*.cpp' | xargs -r clang-tidy -p $(BUILD) --quiet

clean:
	rm -rf $(BUILD) $(ASAN_BUILD)
