#!/usr/bin/env bash
# Set-up, build and run on a Debian machine.
#   ./run.sh tour    install what is missing, build, run the tour program
#   ./run.sh test    install what is missing, build, run the unit tests, then
#                    the same tests under AddressSanitizer and UBSan, then
#                    build an example against the installed package
#   ./run.sh bench   build and run the benchmarks (writes bench/results/)
#   ./run.sh accuracy-full   opt-in: 10^8 inputs a vector function and slot against
#                    MPFR, rewrites docs/accuracy.md (hours)
#   ./run.sh fuzz    opt-in: builds the stream-image fuzzer with clang and runs
#                    it for FUZZ_SECONDS (default 600)
set -euo pipefail
cd "$(dirname "$0")"
JOBS=$(nproc)

PACKAGES=(cmake ninja-build g++ make python3 pkg-config libgtest-dev libgmock-dev libbenchmark-dev
          libopenblas-dev liblapack-dev libmpfr-dev libgmp-dev libsleef-dev libgsl-dev librandom123-dev)

install_missing() {
    local missing=()
    for p in "${PACKAGES[@]}"; do
        dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
    done
    if [ ${#missing[@]} -gt 0 ]; then
        echo "Installing: ${missing[*]}"
        local sudo=""
        [ "$(id -u)" -ne 0 ] && sudo="sudo"
        $sudo apt-get update -qq
        DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq "${missing[@]}"
    fi
}

# Configures and builds a folder. Every option is stated here, so a folder
# that another command configured before gets these settings, not values
# cached from then; the arguments after the folder override them.
configure_build() {  # dir, overriding cmake args...
    local dir=$1; shift
    mkdir -p "$dir"
    cmake -S . -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE=Release -DORV_BUILD_TESTS=ON -DORV_BUILD_BENCH=OFF \
        -DORV_BUILD_EXAMPLES=ON -DORV_SANITIZE=OFF -DORV_FUZZ=OFF "$@" > "$dir/configure.log" 2>&1 \
        || { cat "$dir/configure.log"; exit 1; }
    cmake --build "$dir" -j "$JOBS"
}

# Runs a folder's tests; finding none is a failure.
run_tests() {  # dir
    (cd "$1" && ctest --output-on-failure --no-tests=error -j "$JOBS")
}

# Installs the build into a temporary prefix and runs the consumer built
# three ways (find_package, pkg-config through CMake, make with pkg-config),
# with no LD_LIBRARY_PATH: the run paths must find every library.
check_installed() {
    stage=$(mktemp -d)  # global: the trap runs after the function returns
    trap 'rm -rf "$stage"' EXIT
    cmake --install build --prefix "$stage/prefix" > /dev/null
    cmake -S examples/consumer -B "$stage/consumer" -G Ninja -DCMAKE_PREFIX_PATH="$stage/prefix" \
        > "$stage/consumer.configure.log" 2>&1 || { cat "$stage/consumer.configure.log"; exit 1; }
    cmake --build "$stage/consumer" > /dev/null
    mkdir -p "$stage/make"
    PKG_CONFIG_PATH="$stage/prefix/lib/pkgconfig" make -s -f examples/consumer/Makefile O="$stage/make"
    for exe in "$stage/consumer/consumer_cmake" "$stage/consumer/consumer_pkgconfig" "$stage/make/consumer_make"; do
        env -u LD_LIBRARY_PATH "$exe"
    done
    for exe in "$stage"/consumer/docs_* "$stage"/make/docs_*; do  # the documentation's examples, both ways
        env -u LD_LIBRARY_PATH "$exe" > /dev/null
    done
}

case "${1:-}" in
tour)
    install_missing
    configure_build build -DORV_BUILD_TESTS=OFF
    ./build/examples/tour
    ;;
test)
    install_missing
    configure_build build
    run_tests build
    echo "== sanitizer build (address, undefined behaviour)"
    configure_build build-asan -DORV_SANITIZE=ON -DORV_BUILD_EXAMPLES=OFF -DCMAKE_BUILD_TYPE=RelWithDebInfo
    ASAN_OPTIONS=handle_sigfpe=0:detect_leaks=1:allocator_may_return_null=1 \
        UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 run_tests build-asan
    echo "== installed package: find_package, pkg-config, make"
    check_installed
    ;;
bench)
    PACKAGES+=(python3-numpy python3-scipy)  # the numpy and scipy peers
    install_missing
    configure_build build-bench -DORV_BUILD_TESTS=OFF -DORV_BUILD_BENCH=ON -DORV_BUILD_EXAMPLES=OFF
    mkdir -p bench/results
    for b in build-bench/bench/bench_*; do
        "$b" --benchmark_out="bench/results/$(basename "$b").json" --benchmark_out_format=json
    done
    # The numpy and scipy peers, in the same job.
    /usr/bin/python3 bench/bench_datafit_eval.py > bench/results/bench_datafit_eval_scipy.txt
    OPENBLAS_NUM_THREADS=1 /usr/bin/python3 bench/numpy_stats.py bench/results/numpy_stats.json
    /usr/bin/python3 bench/bench_twister.py build-bench/bench/bench_twister > bench/results/bench_twister_numpy.md
    /usr/bin/python3 bench/bench_qrng_peers.py build-bench/bench/bench_qrng > bench/results/bench_qrng_peers.md
    /usr/bin/python3 bench/dist_peers.py build-bench/bench/bench_dist > bench/results/bench_dist_peers.md
    /usr/bin/python3 bench/atrig_peers.py > bench/results/bench_atrig_numpy.txt
    ;;
accuracy-full)
    install_missing
    configure_build build
    cmake --build build --target accuracy_full
    ;;
fuzz)
    PACKAGES+=(clang libclang-rt-dev)
    install_missing
    CC=clang CXX=clang++ configure_build build-fuzz -DORV_FUZZ=ON -DORV_SANITIZE=ON -DORV_BUILD_EXAMPLES=OFF
    rm -rf build-fuzz/corpus && cp -r tests/data/rng/fuzz_corpus build-fuzz/corpus
    ./build-fuzz/tests/rng/fuzz_rng_loader -max_total_time="${FUZZ_SECONDS:-600}" build-fuzz/corpus
    ;;
*)
    echo "usage: $0 tour|test|bench|accuracy-full|fuzz" >&2
    exit 2
    ;;
esac
