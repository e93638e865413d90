# The two commands the README promises on a fresh Debian machine:
#   make demo    install what is missing, build, run the demo
#   make check   install what is missing, build, run the whole test suite
JOBS ?= 2

.PHONY: demo check deps build sanitize bench format clean tsan fuzz

deps:
	@bash scripts/install-deps.sh

build: deps
	@cmake --preset release >/dev/null
	@cmake --build --preset release -j $(JOBS)

demo: build
	@./build/release/zemath_demo

check: build
	@ctest --preset release -j $(JOBS)

sanitize: deps
	@cmake --preset sanitize >/dev/null
	@cmake --build --preset sanitize -j $(JOBS)
	@ctest --preset sanitize -j $(JOBS)

# One table of ratios, ours over the NumPy/SciPy peer's time, both run in one process
# (bench/table/run.py; FAMILIES="sort search" for a part). Builds only what it loads.
bench: deps
	@cmake --preset release >/dev/null
	@cmake --build --preset release -j $(JOBS) --target zemath zemath_bench_loops
	@/usr/bin/python3 bench/table/run.py $(FAMILIES)

format:
	@find include src tests bench examples -name '*.[ch]' -o -name '*.[ch]pp' | xargs clang-format -i

clean:
	@rm -rf build

# ---- Robustness: ThreadSanitizer over the concurrency table, libFuzzer targets --------
# (the bad-argument sweep and the allocation-failure injection run inside `make check`
# and `make sanitize`). Each builds only what it runs.
FUZZ_SECONDS ?= 60

tsan: deps
	@cmake --preset tsan >/dev/null
	@cmake --build --preset tsan -j $(JOBS) --target zemath_concurrency_tests
	@TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1 ./build/tsan/tests/zemath_concurrency_tests --gtest_brief=1

fuzz: deps
	@cmake --preset fuzz >/dev/null
	@cmake --build --preset fuzz -j $(JOBS) --target zemath_fuzz_targets
	@bash tests/fuzz/run.sh build/fuzz $(FUZZ_SECONDS)
