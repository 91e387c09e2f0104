# Front door of the project. `make demo` and `make test` install what is missing first.
#   make deps     install the Debian packages the project needs
#   make build    configure and build (Debug, warnings as errors) in build/
#   make test     build and run every test: normal build, AddressSanitizer+UBSan build,
#                 the unit tests against the system's pugixml, ThreadSanitizer race, a
#                 short run of every fuzz target, and the benchmarks' checks (bench-check)
#   make asan     only the sanitizer build and its tests
#   make demo     build, then decode the bundled sample answers
#   make expected regenerate the inspector's expected outputs after a deliberate change
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

# The unit tests again against Debian's shared pugixml (the other builds compile pugixml in
# from its source package, scripts/fetch-sources.sh).
SYSTEM_PUGIXML_BUILD ?= build-system-pugixml
.PHONY: test-system-pugixml
test-system-pugixml: deps
	$(CONFIGURE) -B $(SYSTEM_PUGIXML_BUILD) -DCMAKE_BUILD_TYPE=Debug -DATRIUM_XML_PUGIXML=system
	cmake --build $(SYSTEM_PUGIXML_BUILD) -j $(JOBS)
	cd $(SYSTEM_PUGIXML_BUILD) && ctest -j $(JOBS) --output-on-failure

# Every test: the normal build, the sanitizer build, the unit tests against the system's
# pugixml, the race under ThreadSanitizer, a short run of every fuzz target and the
# benchmarks' checks.
test: test-normal asan test-system-pugixml tsan fuzz-ci bench-check

demo: build
	@$(BUILD)/tools/atrium-xml check examples/answers || \
	  echo "(the samples include refused and broken answers on purpose: see examples/answers/README.md)"
	@echo
	@$(BUILD)/tools/atrium-xml parse portal-login --format text --host sso-sz.corp.example \
	  examples/answers/portal-login-two-sites.xml
	@echo
	@echo "# an answer captured with its HTTP response around it (secrets masked):"
	@$(BUILD)/tools/atrium-xml parse auto --format text examples/answers/portal-auth-token-http.xml

# Regenerates the inspector's expected outputs (tests/tool/expected/) from the built tool,
# after a deliberate change of what it prints (a new key, a new field); review the
# difference with git diff before committing it.
.PHONY: expected
expected: build
	cd $(BUILD) && ATRIUM_XML_UPDATE_EXPECTED=1 ctest -R '^tool\.' --output-on-failure

# Sizes (text + data) of the module's and platform's static libraries and of a stripped
# program that decodes one answer, from a Release build (docs/porting.md).
SIZES_BUILD ?= build-sizes
.PHONY: sizes
sizes: deps
	$(CONFIGURE) -B $(SIZES_BUILD) -DCMAKE_BUILD_TYPE=Release -DATRIUM_XML_BUILD_TESTS=OFF \
	  -DATRIUM_XML_BUILD_TOOLS=OFF
	cmake --build $(SIZES_BUILD) -j $(JOBS) --target atrium_xml login_service_default auth_token_demo
	@libs=$$(find $(SIZES_BUILD)/service $(SIZES_BUILD)/platform -name '*.a' ! -name 'liblogin_service_default.a'); \
	  size -t $$libs | awk 'END { printf "module and platform libraries: text %d, data %d\n", $$1, $$2 }'
	@strip -o $(SIZES_BUILD)/auth_token_demo.stripped $(SIZES_BUILD)/examples/auth_token_demo; \
	  size $(SIZES_BUILD)/auth_token_demo.stripped | awk 'NR == 2 { printf "stripped program using one parser: text %d, data %d\n", $$1, $$2 }'

# Formats the lines changed since HEAD (key tables are laid out by hand, row per key, and
# a whole-file run would stretch them to one value per line).
format:
	git clang-format --style=file HEAD

tidy: build
	find platform service -name '*.cpp' | xargs -r clang-tidy -p $(BUILD) --quiet

clean:
	rm -rf $(BUILD) $(ASAN_BUILD) $(SYSTEM_PUGIXML_BUILD)

# ---- hardening (docs/robustness.md) ------------------------------------------------------
#   make fuzz       each fuzz target for FUZZ_SECONDS (default 600), one after the other
#   make fuzz-ci    every fuzz target for FUZZ_CI_SECONDS (default 30; all under 5 minutes)
#   make valgrind   every unit test under valgrind memcheck (tests/valgrind.supp)
#   make tsan       the concurrency test under ThreadSanitizer
#   make coverage   a --coverage build, the unit tests, and gcovr over the module and the platform
FUZZ_BUILD      ?= build-fuzz
FUZZ_SECONDS    ?= 600
FUZZ_CI_SECONDS ?= 30
FUZZ_TARGETS    ?= fuzz_portal fuzz_conference fuzz_soap fuzz_json fuzz_sites fuzz_ktl_xml
VALGRIND_BUILD  ?= build-valgrind
TSAN_BUILD      ?= build-tsan
COVERAGE_BUILD  ?= build-coverage

FUZZ_ENV = ASAN_OPTIONS=detect_leaks=1:strict_string_checks=1 \
           UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 LOGIN_TRACE_LEVEL=off
FUZZ_FLAGS = -dict=fuzz/atrium.dict -max_len=65536 -timeout=10 -rss_limit_mb=2048 -print_final_stats=1
VALGRIND_FLAGS = --quiet --error-exitcode=99 --num-callers=40 --leak-check=full --show-leak-kinds=definite,indirect,possible \
                 --errors-for-leak-kinds=definite,indirect,possible --suppressions=tests/valgrind.supp

.PHONY: fuzz-build fuzz fuzz-ci valgrind tsan coverage

fuzz-build: deps
	CC=clang CXX=clang++ cmake -S . -G Ninja -B $(FUZZ_BUILD) -DCMAKE_BUILD_TYPE=Debug \
	  -DATRIUM_XML_BUILD_FUZZ=ON -DATRIUM_XML_SANITIZE=address,undefined -DATRIUM_XML_BUILD_TESTS=OFF \
	  -DATRIUM_XML_BUILD_TOOLS=OFF -DATRIUM_XML_BUILD_EXAMPLES=OFF $(CMAKE_FLAGS)
	cmake --build $(FUZZ_BUILD) -j $(JOBS) --target fuzz_targets
	rm -rf $(FUZZ_BUILD)/seeds && bash fuzz/make_corpus.sh $(FUZZ_BUILD)/seeds

# New inputs go to $(FUZZ_BUILD)/corpus/<target> (kept between runs), findings to
# $(FUZZ_BUILD)/artifacts/; a finding stops the run with a non-zero status.
define run_fuzz_targets
	@mkdir -p $(FUZZ_BUILD)/artifacts
	@for target in $(FUZZ_TARGETS); do \
	  mkdir -p $(FUZZ_BUILD)/corpus/$$target; \
	  regressions=tests/hardening/regressions/$$target; [ -d $$regressions ] || regressions=; \
	  echo "== $$target: $(1) s"; \
	  $(FUZZ_ENV) $(FUZZ_BUILD)/fuzz/$$target $(FUZZ_FLAGS) -max_total_time=$(1) \
	    -artifact_prefix=$(FUZZ_BUILD)/artifacts/$$target- \
	    $(FUZZ_BUILD)/corpus/$$target $(FUZZ_BUILD)/seeds/$$target $$regressions \
	    2>&1 | grep -E '^(#[0-9]+[[:space:]]+DONE|stat::|==[0-9]+==|SUMMARY|fuzz invariant|Test unit written)'; \
	  test $${PIPESTATUS[0]} -eq 0 || exit 1; \
	done
endef

fuzz: SHELL := /bin/bash
fuzz: fuzz-build
	$(call run_fuzz_targets,$(FUZZ_SECONDS))

fuzz-ci: SHELL := /bin/bash
fuzz-ci: fuzz-build
	$(call run_fuzz_targets,$(FUZZ_CI_SECONDS))

valgrind: deps
	$(CONFIGURE) -B $(VALGRIND_BUILD) -DCMAKE_BUILD_TYPE=Debug
	cmake --build $(VALGRIND_BUILD) -j $(JOBS)
	@status=0; for test in $$(find $(VALGRIND_BUILD)/tests -name '*_tests' -type f -perm -u+x | sort); do \
	  echo "== valgrind $$test"; \
	  LOGIN_TRACE_LEVEL=off HARDENING_ROUNDS=4 valgrind $(VALGRIND_FLAGS) $$test --gtest_brief=1 \
	    || status=1; \
	done; exit $$status

tsan: deps
	$(CONFIGURE) -B $(TSAN_BUILD) -DCMAKE_BUILD_TYPE=Debug -DATRIUM_XML_SANITIZE=thread
	cmake --build $(TSAN_BUILD) -j $(JOBS) --target hardening_concurrency_tests
	TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1 LOGIN_TRACE_LEVEL=off \
	  $(TSAN_BUILD)/tests/hardening/hardening_concurrency_tests --gtest_brief=1

coverage: deps
	$(CONFIGURE) -B $(COVERAGE_BUILD) -DCMAKE_BUILD_TYPE=Debug \
	  "-DCMAKE_C_FLAGS=--coverage -fprofile-update=atomic" \
	  "-DCMAKE_CXX_FLAGS=--coverage -fprofile-update=atomic" -DCMAKE_EXE_LINKER_FLAGS=--coverage
	cmake --build $(COVERAGE_BUILD) -j $(JOBS)
	find $(COVERAGE_BUILD) -name '*.gcda' -delete
	cd $(COVERAGE_BUILD) && ctest -j $(JOBS) --output-on-failure
	@for part in module:service/login/src/atrium_xml/ platform:platform/; do \
	  name=$${part%%:*}; filter=$${part#*:}; \
	  gcovr --root . --object-directory $(COVERAGE_BUILD) --filter "$$filter" --exclude-throw-branches \
	    --txt $(COVERAGE_BUILD)/coverage-$$name.txt --html-details $(COVERAGE_BUILD)/coverage-$$name.html \
	    --print-summary 2>/dev/null | sed "s/^/$$name /" | grep -E "lines|branches" || exit 1; \
	done

# Benchmarks (docs/performance.md): a Release build in $(BENCH_BUILD); every answer timed
# against the raw parse of its bytes and against its floor, the portal logins against
# libxml2 + XPath, the site machinery alone, growth per access group; then the growth
# series again with glibc's allocator thresholds fixed. Each run ends with its table.
BENCH_BUILD ?= build-bench
BENCH_FLAGS ?= --benchmark_repetitions=3 --benchmark_min_time=0.2 --benchmark_display_aggregates_only=true

.PHONY: bench bench-build bench-check
bench-build: deps
	$(CONFIGURE) -B $(BENCH_BUILD) -DCMAKE_BUILD_TYPE=Release -DATRIUM_XML_BUILD_BENCH=ON \
	  -DATRIUM_XML_BUILD_TESTS=OFF
	cmake --build $(BENCH_BUILD) -j $(JOBS) --target atrium_xml_bench

bench: bench-build
	$(BENCH_BUILD)/bench/atrium_xml_bench $(BENCH_FLAGS)
	$(BENCH_BUILD)/bench/atrium_xml_bench $(BENCH_FLAGS) --malloc-fixed --benchmark_filter='^growth/'

# What the benchmark checks before it times anything, without the timing: every case's
# result, no module block or document left behind, the libxml2 + XPath reading producing the
# module's very record, the walk's plan. The benchmark exits non-zero when one fails; one
# short benchmark then runs, so that the table is printed too.
bench-check: bench-build
	$(BENCH_BUILD)/bench/atrium_xml_bench --benchmark_filter='^portal/token_info/module$$' \
	  --benchmark_min_time=0.01
