# The two commands the README promises on a fresh Debian machine:
#   make demo    install what is missing, build, run the demo
#   make check   install what is missing, build, run the whole test suite
JOBS ?= 2

.PHONY: demo check deps build sanitize bench format clean

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

bench: build
	@bash bench/run_all.sh

format:
	@find include src tests bench examples -name '*.[ch]' -o -name '*.[ch]pp' | xargs clang-format -i

clean:
	@rm -rf build
