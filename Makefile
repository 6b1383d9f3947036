# The two commands of a newcomer are `make demo` and `make test`. Each installs the Debian packages of
# packages.txt that are missing (with sudo when not root), builds, and runs.

PREFIX ?= /usr/local
JOBS ?= $(shell nproc)
MINUTES ?= 10
EVERY ?= 1
SUDO := $(if $(filter 0,$(shell id -u)),,sudo)
DEMO = run examples/market_maker.lua --data examples/data/demo_quotes.csv.gz --latency 5ms --feed-latency 5ms \
    --report build/demo.html
SOURCES = git ls-files '*.h' '*.cpp'
PACKAGES = packages.txt
# Whence test-deb takes the bare Debian.
MIRROR ?= http://deb.debian.org/debian

.PHONY: help demo test test-cluster soak faults fuzz build training trained asan tsan luajit bench bench-check count-check format check-format install deb test-deb packages clean

help:
	@echo "make demo     install what is missing, build, run an algorithm over a recorded day, show it on a page"
	@echo "make test     install what is missing, build, run all tests"
	@echo "make test-cluster  sweeps on a Slurm of one node, which it installs and starts"
	@echo "make soak     the exchange against a naive one, for MINUTES ($(MINUTES))"
	@echo "make faults   each fault of memory, disk and signals at each step of a run, or at EVERY ($(EVERY))th"
	@echo "make fuzz     whatever reads text from outside, and scripts, against random input, for MINUTES ($(MINUTES))"
	@echo "make asan     the tests under AddressSanitizer and UBSan"
	@echo "make tsan     the tests with threads under ThreadSanitizer"
	@echo "make luajit   the tests on LuaJIT"
	@echo "make trained  algoserver as it is installed, laid out by what it executes most, in build/trained"
	@echo "make bench    the benchmarks"
	@echo "make bench-check  the benchmarks' ratios against those in docs/performance.md"
	@echo "make count-check  instructions for an event, against tools/instruction_counts.txt"
	@echo "make format   format the sources; make check-format only looks"
	@echo "make deb      Debian packages of algoserver and the library, in build/deb"
	@echo "make test-deb installs them in a bare Debian of debootstrap, uses them there, and removes them (as root)"
	@echo "make install  install the library and algoserver below PREFIX ($(PREFIX))"

packages:
	@missing=$$(for package in $$(grep -hv '^#' $(PACKAGES)); do \
	    dpkg-query -W -f '$${Status}' $$package 2>/dev/null | grep -q 'install ok installed' || echo $$package; done); \
	if [ -n "$$missing" ]; then \
	    echo "Installing Debian packages:" $$missing; \
	    $(SUDO) apt-get update -qq && \
	    $(SUDO) env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends $$missing >/dev/null; \
	fi

build: packages
	@echo 'Building algoserver in build/release ...'
	@cmake --preset release >/dev/null
	@cmake --build --preset release -j $(JOBS) --target algoserver

demo: build
	@echo
	@echo '$$ algoserver $(DEMO)'
	@build/release/apps/algoserver/algoserver $(DEMO)

# What is installed, packed and measured is laid out by what training runs have counted (cmake/Training.cmake), for which it is built twice.
training: packages
	@echo 'Building algoserver in build/counting, and running it over examples and recipes ...'
	@cmake --preset counting >/dev/null
	@cmake --build --preset counting -j $(JOBS)

trained: training
	@echo 'Building algoserver in build/trained ...'
	@cmake --preset trained >/dev/null
	@cmake --build --preset trained -j $(JOBS) --target algoserver

test: packages
	cmake --preset dev
	cmake --build --preset dev -j $(JOBS)
	ctest --preset dev

# Root, since Slurm starts jobs for users. On a machine with a Slurm of its own that is left alone.
test-cluster: PACKAGES += packages-cluster.txt
test-cluster: packages
	cmake --preset dev
	cmake --build --preset dev -j $(JOBS) --target algoserver
	$(SUDO) tests/cluster/check_cluster.py build/dev/apps/algoserver/algoserver

# The twelve tests of nxExchangeNaive share the time.
soak: packages
	cmake --preset dev
	cmake --build --preset dev -j $(JOBS) --target test_host
	NX_SOAK_SECONDS=$$(($(MINUTES) * 60 * $(JOBS) / 12)) \
	    ctest --preset dev -j $(JOBS) --timeout 1000000 -R nxExchangeNaive

# At every step this is some 200,000 runs, which take hours; `make test` has the steps that are powers of two.
faults: packages
	cmake --preset dev
	cmake --build --preset dev -j $(JOBS) --target algoserver_faulty nx_fault_injector
	tests/faults/run_faults.py build/dev/tests/algoserver_faulty build/dev/tests/libnx_fault_injector.so --every $(EVERY)

# With Clang from 15 on, FUZZ_CXX=clang++-16 as an example, libFuzzer drives the targets.
FUZZ_CXX ?= c++
fuzz: packages
	cmake --preset fuzz -DCMAKE_CXX_COMPILER=$(FUZZ_CXX)
	cmake --build --preset fuzz -j $(JOBS)
	fuzz/run build/fuzz $$(($(MINUTES) * 60))

asan: packages
	cmake --preset asan
	cmake --build --preset asan -j $(JOBS)
	ctest --preset asan

# Where threads are: the others run on one.
tsan: packages
	cmake --preset tsan
	cmake --build --preset tsan -j $(JOBS)
	ctest --preset tsan -R Thread

luajit: packages
	cmake --preset luajit
	cmake --build --preset luajit -j $(JOBS)
	ctest --preset luajit

bench: trained
	cmake --build --preset trained -j $(JOBS) --target nx_bench
	tools/run_benchmarks build/trained

bench-check: trained
	cmake --build --preset trained -j $(JOBS) --target nx_bench nx_bare_run
	tools/bench_check build/trained

# Without link-time optimisation, whose choices move with code far away from what is counted.
count-check: packages
	cmake --preset instructions
	cmake --build --preset instructions -j $(JOBS) --target algoserver
	tools/instruction_counts build/instructions/apps/algoserver/algoserver

format: packages
	$(SOURCES) | xargs clang-format-14 -i

check-format: packages
	$(SOURCES) | xargs clang-format-14 --dry-run --Werror

install: trained
	$(SUDO) cmake --install build/trained --prefix $(PREFIX)

# The time of the last commit is that of the packages and all in them. Two builds differ no further than by the counts of two trainings, which are not
# the same where threads wait for each other. They are not uploaded to Debian, so there is no bug of Debian's that the first of them closes.
deb: PACKAGES += packages-deb.txt
deb: training
	@cmake --preset deb >/dev/null
	@cmake --build --preset deb -j $(JOBS)
	@rm -f build/deb/*.deb
	@cd build/deb && SOURCE_DATE_EPOCH=$$(git log -1 --format=%ct 2>/dev/null || date +%s) cpack >/dev/null
	@lintian --fail-on error,warning --suppress-tags initial-upload-closes-no-bugs --allow-root build/deb/*.deb
	@ls -1 build/deb/*.deb

test-deb: deb
	$(SUDO) tests/packages/check_packages.py build/deb build/debian-base $(MIRROR)

# What test-deb has made belongs to root.
clean:
	[ ! -d build/debian-base ] || $(SUDO) rm -rf build/debian-base
	rm -rf build
