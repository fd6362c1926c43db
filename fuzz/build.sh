#!/usr/bin/env bash
# Builds every fuzz target as services that run fuzzers for others do:
#   OUT=DIRECTORY fuzz/build.sh
# CC, CXX, CFLAGS, CXXFLAGS and LIB_FUZZING_ENGINE say with what; without them, clang, libFuzzer and
# the address and undefined-behaviour sanitizers. In OUT stand then, for each TARGET, TARGET_fuzzer,
# TARGET_fuzzer_seed_corpus.zip and, where there is one, TARGET_fuzzer.dict.
set -euo pipefail
cd "$(dirname "$0")/.."

export CC=${CC:-clang} CXX=${CXX:-clang++}
OUT=${OUT:-build/fuzz}
sanitizers=
if [ -z "${LIB_FUZZING_ENGINE:-}" ]; then
  export LIB_FUZZING_ENGINE=-fsanitize=fuzzer
  sanitizers=fuzzer-no-link,address,undefined
fi
mkdir -p "$OUT"
cmake -G Ninja -S . -B "$OUT/work" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DLIB_FUZZING_ENGINE="$LIB_FUZZING_ENGINE" -DDEIMG_SANITIZE=$sanitizers \
  -DDEIMG_BUILD_FUZZERS=ON -DDEIMG_BUILD_TESTS=OFF -DDEIMG_BUILD_TOOLS=OFF >/dev/null
targets=(properties decoder raw_file tuning)
cmake --build "$OUT/work" --target "${targets[@]/%/_fuzzer}" -- --quiet
for target in "${targets[@]}"; do
  cp "$OUT/work/fuzz/${target}_fuzzer" "$OUT/"
  rm -f "$OUT/${target}_fuzzer_seed_corpus.zip"
  zip -q -j -X "$OUT/${target}_fuzzer_seed_corpus.zip" "fuzz/corpus/$target/"*
done
for target in properties raw_file; do cp fuzz/properties.dict "$OUT/${target}_fuzzer.dict"; done
