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

# The fuzz targets (libFuzzer), FUZZ_SECONDS each, one after the other;
# FUZZ_TARGETS picks some. The corpora grow under build/fuzz, findings land
# there too. Each target: name, seed folder, longest input, dictionary.
FUZZ_SECONDS ?= 300
FUZZ_TARGETS ?= document formula zip gige settings
FUZZ_document = gik_fuzz_document document 16384 -dict=fuzz/document.dict
FUZZ_formula = gik_fuzz_formula formula 1024 -dict=fuzz/formula.dict
FUZZ_zip = tvk_fuzz_zip zip 65536
FUZZ_gige = tvk_fuzz_gige gige 16384 -dict=fuzz/document.dict
FUZZ_settings = llk_fuzz_settings settings 4096 -dict=fuzz/document.dict
fuzz:
	@scripts/install-deps clang-14 libclang-rt-14-dev
	@test -f build/fuzz/build.ninja || cmake -S . -B build/fuzz -G Ninja -DCMAKE_BUILD_TYPE=Release \
		-DCMAKE_C_COMPILER=clang-14 -DCMAKE_CXX_COMPILER=clang++-14 -DTAVIK_FUZZ=ON -DTAVIK_TESTS=OFF
	cmake --build build/fuzz --target $(foreach t,$(FUZZ_TARGETS),$(word 1,$(FUZZ_$(t)))) -j $(NINJA_JOBS)
	@set -e; $(foreach t,$(FUZZ_TARGETS),set -- $(FUZZ_$(t)); mkdir -p build/fuzz/corpus-$$2; \
		echo "== $$1"; build/fuzz/fuzz/$$1 -max_total_time=$(FUZZ_SECONDS) -max_len=$$3 -timeout=20 \
		$$4 -artifact_prefix=build/fuzz/ build/fuzz/corpus-$$2 fuzz/seeds/$$2;)

format:
	git ls-files '*.h' '*.hpp' '*.cpp' '*.c' | xargs clang-format -i

clean:
	rm -rf build
