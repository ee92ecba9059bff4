# Lists the Debian packages that the project needs, and installs them. Sourced by the scripts.

build_packages="g++ cmake ninja-build pkg-config libcollada-dom-dev libxml2-dev libpugixml-dev libtsl-ordered-map-dev libglu1-mesa-dev zlib1g-dev libcli11-dev nlohmann-json3-dev"
# For drawing in scenetool and in an example; the drivers are for machines without a graphics card.
build_packages="$build_packages libepoxy-dev libegl-dev libgl-dev libglfw3-dev libpng-dev libturbojpeg0-dev libstb-dev libmeshoptimizer-dev"
build_packages="$build_packages libegl1 libegl-mesa0 libgl1-mesa-dri"
test_packages="$build_packages libgtest-dev libassimp-dev xvfb xdotool python3-jsonschema"
benchmark_packages="$build_packages libbenchmark-dev python3 gnuplot-nox"
assimp_packages="libassimp-dev"
fuzz_packages="clang libclang-rt-dev"
documentation_packages="$build_packages doxygen"
package_packages="$build_packages clang file dpkg-dev lintian man-db bash-completion zsh fish"
ci_packages="$test_packages $benchmark_packages $fuzz_packages $documentation_packages $package_packages
    clang-format clang-tidy gdb snakemake"

# need_packages NAME...: installs missing packages, and prints one line with their names. Shows the output of apt-get
# only if it fails. A user who must not install packages gets the command to run as root.
need_packages() {
    command -v dpkg-query >/dev/null || return 0 # not Debian; CMake reports what is missing
    local missing=()
    local name
    for name in "$@"; do
        [ "$(dpkg-query -W -f='${db:Status-Status}' "$name" 2>/dev/null)" = installed ] || missing+=("$name")
    done
    [ ${#missing[@]} -gt 0 ] || return 0
    local by_hand="Run as root: apt-get update && apt-get install -y --no-install-recommends ${missing[*]}"
    local as_root=()
    if [ "$(id -u)" != 0 ]; then
        command -v sudo >/dev/null || { echo "Packages are missing. $by_hand" >&2; return 1; }
        as_root=(sudo)
    fi
    echo "== installing ${missing[*]}"
    local log
    log=$(mktemp)
    if ! { "${as_root[@]}" apt-get update -qq &&
        "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}"; } \
        >"$log" 2>&1 </dev/null; then
        cat "$log" >&2
        rm -f "$log"
        echo "The packages could not be installed. $by_hand" >&2
        return 1
    fi
    rm -f "$log"
}
