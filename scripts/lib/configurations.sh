# shellcheck shell=bash
# The configurations of scripts/test: what each builds and which tests it runs.

# Seconds that each fuzzer runs.
readonly FUZZ_SECONDS=6

if command -v ccache >/dev/null; then
  export CMAKE_C_COMPILER_LAUNCHER=ccache CMAKE_CXX_COMPILER_LAUNCHER=ccache
  export CMAKE_OBJCXX_COMPILER_LAUNCHER=ccache
  # What one checkout compiled serves the next one.
  export CCACHE_BASEDIR=$PWD CCACHE_NOHASHDIR=1
fi
# A finding ends the test with a status that no assertion gives.
export ASAN_OPTIONS=detect_leaks=1:exitcode=99:abort_on_error=0
export UBSAN_OPTIONS=print_stacktrace=1
export TSAN_OPTIONS=exitcode=99:second_deadlock_stack=1:suppressions=$PWD/tests/tsan.supp

# build PRESET: false, and a failure in the report, when it can't be built.
build() {
  local log
  begin "build $1"
  mkdir -p build
  log="build/$1.log"
  if cmake --preset "$1" >"$log" 2>&1 && cmake --build --preset "$1" >>"$log" 2>&1; then
    done_with "$1" build 1 0 0
  else
    # ninja goes on with what was already running: the failure is not always in the last lines.
    grep -A 25 -m 3 -e 'FAILED:' -e 'CMake Error' "$log" || tail -40 "$log"
    done_with "$1" build 0 1 0
    return 1
  fi
}

# run_tests PRESET KIND [CTEST ARGUMENTS...]: the tests of that kind, which must exist.
run_tests() {
  local preset=$1 kind=$2 result="build/$1-$2.xml" log="build/$1-$2.log" manner=(--parallel 2)
  shift 2
  # Desktops of end-to-end tests take turns, so that neither slows the other down. A test that fails
  # runs once more, since the machine may have been busy for a moment; the summary names it.
  [[ $kind == e2e ]] && manner=(--parallel 1 --repeat until-pass:2)
  begin "$preset: $kind"
  rm -f "$result"
  ctest --test-dir "build/$preset" --label-regex "^$kind\$" "${manner[@]}" \
    --no-tests=error --output-on-failure --output-junit "$PWD/$result" "$@" </dev/null |
    tee "$log" | grep --invert-match --extended-regexp ' Passed +[0-9.]+ sec$|^ +Start +[0-9]+:'
  local status=${PIPESTATUS[0]}
  note_retries "$preset" "$log"
  # shellcheck disable=SC2046 # three numbers
  done_with "$preset" "$kind" $(count_junit "$result" "$status")
}

run_release() {
  build release || return
  local kind
  for kind in unit conformance kernels packaging e2e; do run_tests release "$kind"; done
}

run_quick() {
  build release || return
  local kind
  for kind in unit conformance kernels; do run_tests release "$kind"; done
}

run_core() {
  build core || return
  local kind
  for kind in unit conformance kernels; do run_tests core "$kind"; done
}

run_asan() {
  build asan || return
  local kind
  for kind in unit conformance kernels e2e; do run_tests asan "$kind"; done
}

run_tsan() {
  build tsan || return
  run_tests tsan unit --label-regex '^concurrent$'
  run_tests tsan conformance
  run_tests tsan e2e --label-regex '^concurrent$'
}

run_package() {
  begin "package"
  if scripts/package && tests/packaging/debian.sh build/package "$PWD"; then
    done_with package packaging 1 0 0
  else
    done_with package packaging 0 1 0
  fi
}

run_root() {
  begin "root"
  if scripts/package && tests/packaging/clean-root.sh build/package "$PWD"; then
    done_with root packaging 1 0 0
  else
    done_with root packaging 0 1 0
  fi
}

run_bindings() {
  build release || return
  local log=build/bindings.log counts
  begin bindings
  # shellcheck disable=SC2266 # a pipe is meant
  bindings/test build/release/src 2>&1 | tee "$log"
  counts=$(sed -nE 's/^bindings: ([0-9]+) passed, ([0-9]+) failed, ([0-9]+) skipped$/\1 \2 \3/p' "$log")
  # shellcheck disable=SC2086 # three numbers
  done_with bindings languages ${counts:-0 1 0}
}

run_fuzz() {
  build fuzz || return
  local fuzzer name corpus passed=0 failed=0
  local -a seeds
  begin "fuzz: $FUZZ_SECONDS seconds each"
  for fuzzer in build/fuzz/fuzz/*_fuzz; do
    [[ -f $fuzzer && -x $fuzzer ]] || continue
    name=$(basename "$fuzzer")
    corpus=build/fuzz/corpus/$name
    mkdir -p "$corpus"
    seeds=()
    [[ -d fuzz/corpus/$name ]] && seeds=("fuzz/corpus/$name")
    if "$fuzzer" -max_total_time="$FUZZ_SECONDS" -timeout=10 -artifact_prefix="$corpus." \
      "$corpus" "${seeds[@]}" >"$corpus.log" 2>&1; then
      grep '^Done' "$corpus.log" | sed "s/^/$name: /"
      passed=$((passed + 1))
    else
      tail -40 "$corpus.log"
      failed=$((failed + 1))
    fi
  done
  done_with fuzz fuzzers "$passed" "$failed" 0
}

run_check() {
  begin check
  if scripts/check; then done_with check checks 1 0 0; else done_with check checks 0 1 0; fi
}

# compiled FOLDER: how many sources the objects in it were made of, those that were compiled as one
# counted each.
compiled() {
  find "$1" -name '*.o' -path '*.dir/*' ! -path '*/Unity/*' | wc -l |
    cat - <(find "$1" -path '*/Unity/*.cxx' -exec cat {} + | grep -c '^#include') |
    awk '{ sum += $1 } END { print sum }'
}

# The declarations of the frameworks with the bindings that they come from.
compare_declarations() {
  local bindings=build/macos-bindings status
  begin "macos: declarations compared"
  sdk/generator/fetch "$bindings"
  status=$?
  if [[ $status -eq 75 ]]; then
    echo "macos: skipped, because the bindings can't be reached"
    done_with macos declarations 0 0 1
  elif [[ $status -eq 0 ]] && sdk/generator/compare.py "$bindings"; then
    done_with macos declarations 1 0 0
  else
    done_with macos declarations 0 1 0
  fi
}

# The library for macOS, compiled and linked here, and its sources run on stand-ins of the
# frameworks. Skipped where the tool chain can't be reached.
run_macos() {
  local status architecture run=build/macos-run
  begin "macos: tool chain"
  scripts/setup --macos
  status=$?
  if [[ $status -eq 75 ]]; then
    echo "macos: skipped, because the tool chain can't be reached"
    done_with macos build 0 0 1
    return
  elif [[ $status -ne 0 ]]; then
    done_with macos build 0 1 0
    return 1
  fi
  for architecture in arm64 x86_64; do
    build "macos-$architecture" || return
    echo "$(compiled "build/macos-$architecture/src") files of the library compiled for $architecture"
  done
  begin "macos: the dynamic library"
  if scripts/lib/check-dylib.sh build/macos/VelmoraMacNative.dylib \
    build/macos-{arm64,x86_64}/src/VelmoraMacNative.dylib; then
    done_with macos library 1 0 0
  else
    done_with macos library 0 1 0
  fi
  begin "macos: clang's analyser"
  if scripts/lib/analyse-macos.py build/macos-arm64 build/macos-analysed; then
    done_with macos analyser 1 0 0
  else
    done_with macos analyser 0 1 0
  fi
  compare_declarations
  begin "macos: on stand-ins"
  if cmake -S tests/macos -B "$run" -G Ninja -DCMAKE_C_COMPILER=clang-19 \
    -DCMAKE_CXX_COMPILER=clang++-19 -DCMAKE_OBJCXX_COMPILER="$(command -v clang++-19)" \
    >"$run.log" 2>&1 && cmake --build "$run" >>"$run.log" 2>&1; then
    run_tests macos-run standins
  else
    grep -A 25 -m 3 -e 'FAILED:' -e 'CMake Error' "$run.log" || tail -40 "$run.log"
    done_with macos-run standins 0 1 0
  fi
}
