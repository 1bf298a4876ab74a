# Entry points for people and CI. Each target installs what is missing,
# configures, builds and runs. Build trees live under build/<type>.
.PHONY: demo test check test-asan test-tsan bench fuzz deps format clean

NINJA_JOBS ?= $(shell nproc)
CTEST = ctest --output-on-failure -j $(NINJA_JOBS) --timeout 300

define configure
	@test -f build/$(1)/build.ninja || cmake -S . -B build/$(1) -G Ninja -DCMAKE_BUILD_TYPE=$(2) $(3)
	cmake --build build/$(1) -j $(NINJA_JOBS)
endef

deps:
	@scripts/install-deps

# The main job: the command-line tool against the built-in camera simulator.
demo: deps
	$(call configure,release,Release)
	GENICAM_GENTL64_PATH=$(CURDIR)/build/release/producers build/release/tools/tavik demo

# The whole suite: the release build, then the address+undefined sanitizer build.
test: deps
	$(call configure,release,Release)
	cd build/release && $(CTEST)
	$(call configure,asan,Asan)
	cd build/asan && $(CTEST)

check: deps
	$(call configure,release,Release)
	cd build/release && $(CTEST)

test-asan: deps
	$(call configure,asan,Asan)
	cd build/asan && $(CTEST)

test-tsan: deps
	$(call configure,tsan,Tsan)
	cd build/tsan && $(CTEST)

bench: 
	@scripts/install-deps libopencv-imgproc-dev libyuv-dev libaravis-dev libusb-1.0-0-dev
	$(call configure,bench,Release,-DTAVIK_BENCH=ON)
	@for b in build/bench/bench/*/tavik_bench_*; do echo "== $$b"; $$b; done

# The feature kernel's fuzz targets (libFuzzer), FUZZ_SECONDS each; the
# corpora grow under build/fuzz, findings land there too.
FUZZ_SECONDS ?= 300
fuzz:
	@scripts/install-deps clang-14 libclang-rt-14-dev
	@test -f build/fuzz/build.ninja || cmake -S . -B build/fuzz -G Ninja -DCMAKE_BUILD_TYPE=Release \
		-DCMAKE_C_COMPILER=clang-14 -DCMAKE_CXX_COMPILER=clang++-14 -DTAVIK_FUZZ=ON -DTAVIK_TESTS=OFF
	cmake --build build/fuzz --target gik_fuzz_document gik_fuzz_formula -j $(NINJA_JOBS)
	mkdir -p build/fuzz/corpus-document build/fuzz/corpus-formula
	build/fuzz/fuzz/gik_fuzz_document -max_total_time=$(FUZZ_SECONDS) -max_len=16384 -timeout=20 \
		-dict=fuzz/document.dict -artifact_prefix=build/fuzz/ build/fuzz/corpus-document fuzz/seeds/document
	build/fuzz/fuzz/gik_fuzz_formula -max_total_time=$(FUZZ_SECONDS) -max_len=1024 -timeout=20 \
		-dict=fuzz/formula.dict -artifact_prefix=build/fuzz/ build/fuzz/corpus-formula fuzz/seeds/formula

format:
	git ls-files '*.h' '*.hpp' '*.cpp' '*.c' | xargs clang-format -i

clean:
	rm -rf build
