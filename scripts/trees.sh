# Sourced by scripts/demo, scripts/test and scripts/fuzz: the build trees and their flags,
# written once so that two scripts sharing a tree never configure it two ways. A tree
# configured with other flags recompiles everything.

# build/: the README's tree. Optimised, so that the optimiser's warnings are seen, and with
# warnings as errors; the demo, the test suite, the benchmarks and the resource check all run
# from it.
main_tree=build
main_flags=(-DCMAKE_BUILD_TYPE=Release -DVELTO_WERROR=ON)

# build-asan/: the suite under AddressSanitizer + UndefinedBehaviorSanitizer, built by clang
# with libFuzzer's coverage, so that the fuzz targets live in the same tree instead of one of
# their own. -O1 with line tables: the instrumented tests run several times faster than at
# -O0, and reports still name file and line.
asan_tree=build-asan
asan_flags=(-DCMAKE_CXX_COMPILER=clang++ -DCMAKE_BUILD_TYPE=Debug
    "-DCMAKE_CXX_FLAGS_DEBUG=-O1 -gline-tables-only"
    -DVELTO_SANITIZE=ON -DVELTO_FUZZ=ON -DVELTO_BENCH=OFF -DVELTO_TOOLS=OFF -DVELTO_WERROR=ON)

# build-tsan/: only the code that runs on more than one thread, under ThreadSanitizer.
tsan_tree=build-tsan
tsan_flags=(-DCMAKE_BUILD_TYPE=RelWithDebInfo "-DCMAKE_CXX_FLAGS_RELWITHDEBINFO=-O1 -g1"
    -DVELTO_TSAN=ON -DVELTO_BENCH=OFF -DVELTO_TOOLS=OFF -DVELTO_WERROR=ON)

# CPU-seconds of a first build of each tree (everything, cold compiler cache) on the reference
# 2-core machine, for the notice a newcomer sees before waiting on one.
declare -A first_build_cpu_seconds=([build]=290 [build-asan]=410 [build-tsan]=85)

# announce_first_build DIR: before a tree's first build, how long it takes here and on 2 cores.
announce_first_build() {
    [[ -f "$1/.ninja_log" ]] && return
    local cpu=${first_build_cpu_seconds[$1]:-300} cores
    cores=$(nproc)
    local here="about $(((cpu / cores + 30) / 60)) min on this machine's $cores cores"
    if ((cores != 2)); then here+=", $(((cpu / 2 + 30) / 60)) min on 2 cores"; fi
    echo "First build of $1/: $cpu CPU-seconds, $here (plus the package installs on a fresh machine). Later builds recompile only what changed." >&2
}

# configure_tree DIR FLAGS...: configures DIR once; a tree already configured is left alone
# unless the flags changed, which CMake sorts out itself.
configure_tree() {
    local dir=$1
    shift
    local launcher=()
    # A compiler cache makes the second build of an unchanged file free.
    if command -v ccache >/dev/null 2>&1; then launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache); fi
    cmake -S . -B "$dir" -G Ninja --log-level=WARNING "${launcher[@]}" "$@" >/dev/null
}

# build_tree DIR [TARGET...]: one status line on a terminal (ninja's own); elsewhere, such as
# in CI, only what the compiler says and a closing line with the time it took.
build_tree() {
    local dir=$1
    shift
    local targets=()
    if (($#)); then targets=(--target "$@"); fi
    local start=$SECONDS
    if [[ -t 1 ]]; then
        cmake --build "$dir" --parallel "$(nproc)" "${targets[@]}"
    else
        cmake --build "$dir" --parallel "$(nproc)" "${targets[@]}" -- --quiet
    fi
    echo "Built $dir/ in $((SECONDS - start)) s." >&2
}
