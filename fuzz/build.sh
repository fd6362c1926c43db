#!/usr/bin/env bash
# Builds the fuzz targets, with their dictionaries and zipped seeds, in the way of services that fuzz
# for others. What counts:
#   CC CXX CFLAGS CXXFLAGS   compilers and flags; by default clang, libFuzzer's instrumentation and
#                            the address and undefined-behaviour sanitizers
#   LIB_FUZZING_ENGINE       what targets are linked with; "standalone": they run the files they are
#                            given, and any compiler will do
#   OUT WORK                 where targets and intermediate files go; by default in build/fuzz
#   SRC                      where the checkout "deimg" is, for a copy of this script elsewhere
set -euo pipefail

source=$(cd "$(dirname "$0")/.." && pwd)
[ -f "$source/fuzz/CMakeLists.txt" ] || source=${SRC:?}/deimg
WORK=${WORK:-$source/build/fuzz}
OUT=${OUT:-$WORK/out}
LIB_FUZZING_ENGINE=${LIB_FUZZING_ENGINE:--fsanitize=fuzzer}
instrumented="-O2 -g -fno-omit-frame-pointer -fsanitize=fuzzer-no-link,address,undefined
  -fno-sanitize-recover=all"
[ "$LIB_FUZZING_ENGINE" != standalone ] || instrumented="-O2 -g"
CFLAGS=${CFLAGS-$instrumented}
CXXFLAGS=${CXXFLAGS-$instrumented}

# A build type of its own: no flags besides those given. Contracts are checked in every fuzz build.
cmake -G Ninja -S "$source" -B "$WORK" -DCMAKE_BUILD_TYPE=Fuzz \
  -DCMAKE_C_COMPILER="${CC:-clang}" -DCMAKE_C_FLAGS="${CFLAGS//$'\n'/}" \
  -DCMAKE_CXX_COMPILER="${CXX:-clang++}" \
  -DCMAKE_CXX_FLAGS="${CXXFLAGS//$'\n'/} -DDEIMG_CHECK_CONTRACTS" \
  -DLIB_FUZZING_ENGINE="$LIB_FUZZING_ENGINE" \
  -DDEIMG_BUILD_FUZZERS=ON -DDEIMG_BUILD_TESTS=OFF -DDEIMG_BUILD_TOOLS=OFF
cmake --build "$WORK" --target fuzz_targets

mkdir -p "$OUT"
OUT=$(cd "$OUT" && pwd)
for target in properties decoder raw_file tuning; do
  fuzzer=$OUT/${target}_fuzzer
  cp "$WORK/fuzz/${target}_fuzzer" "$fuzzer"
  printf '[libfuzzer]\nmax_len = 8192\nclose_fd_mask = 1\n' >"$fuzzer.options"
  case $target in
    properties | raw_file) cp "$source/fuzz/properties.dict" "$fuzzer.dict" ;;
  esac
  case $target in
    # Runs of whole jobs reach thousands of places: weighing those takes longer than the runs.
    raw_file | tuning) echo 'entropic = 0' >>"$fuzzer.options" ;;
  esac
  rm -f "${fuzzer}_seed_corpus.zip"
  (cd "$source/fuzz/corpus/$target" && zip -q -X -r "${fuzzer}_seed_corpus.zip" .)
done
