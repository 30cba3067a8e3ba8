# A thin front: every rule is one or two commands that can also be typed by hand.
.DEFAULT_GOAL := help
.PHONY: help setup build run test check bench soak install format clean

PRESET ?= i386
PREFIX ?= /usr/local
BENCH_TZ ?= America/New_York
build_tree = cmake --preset $(1) && cmake --build --preset $(1)

help:  ## what can be done here
	@grep -hE '^[a-z]+:.*##' $(MAKEFILE_LIST) | sed -E 's/:.*## /\t/' | expand -t 12
	@echo
	@echo "PRESET=x86_64 builds and runs 64-bit; make run SECONDS=30 ends by itself."

setup:  ## install what is missing (every rule below does this first)
	@tools/setup.sh

build: setup  ## the plug-ins, the agent and its client
	@cmake --preset $(PRESET) && cmake --build --preset $(PRESET) --target product

run: build  ## run sample tasks on a fresh agent until Ctrl-C (or for SECONDS=n)
	@tools/demo.sh build/$(PRESET) $(SECONDS)

test: setup  ## build and pass the tests at both word sizes
	$(call build_tree,i386) && ctest --preset i386
	$(call build_tree,x86_64) && ctest --preset x86_64

check:  ## everything that CI does
	@.ci/run

bench: setup  ## measure what users wait for
	cmake --preset $(PRESET) -DNOX_BUILD_BENCH=ON && cmake --build --preset $(PRESET) --target nox_bench
	TZ=$(BENCH_TZ) build/$(PRESET)/bin/nox_bench $(BENCH_ARGS)

install: build  ## install below PREFIX (default /usr/local)
	cmake --install build/$(PRESET) --prefix $(PREFIX)

soak: setup  ## simulate a year of tasks from fresh seeds until Ctrl-C
	@$(call build_tree,$(PRESET)) && tools/soak.sh build/$(PRESET)

format:  ## lay the sources out as .clang-format says
	@tools/setup.sh checks
	@git ls-files '*.cpp' '*.h' | xargs clang-format -i

clean:  ## remove everything that was built
	rm -rf build
