# Shared by the scripts of this folder: where the project is, and how a fresh Debian machine gets what it needs.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

build_packages="cmake ninja-build g++ pkg-config libocct-foundation-dev libocct-modeling-data-dev
libocct-modeling-algorithms-dev libocct-data-exchange-dev libocct-ocaf-dev libtinyxml-dev libcli11-dev libfmt-dev
nlohmann-json3-dev libpng-dev libtiff-dev libstb-dev libtinygltf-dev libembree-dev
qt6-base-dev fonts-dejavu-core"
test_packages="git libgtest-dev clang clang-format clang-tidy libclang-rt-14-dev llvm binutils locales xvfb xauth"
bench_packages="libbenchmark-dev jq"
windows_packages="cmake ninja-build g++-mingw-w64-i686-posix binutils-mingw-w64-i686 mingw-w64-i686-dev libtinyxml-dev
libcli11-dev libfmt-dev nlohmann-json3-dev googletest ca-certificates curl patch xz-utils"

# Some tests wait more than they work.
test_jobs=$(($(nproc) + 1))

# Installs those of the packages that are missing; needs root or sudo only then.
need() {
  local missing=()
  local package
  for package in "$@"; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' || missing+=("$package")
  done
  [ ${#missing[@]} -eq 0 ] && return
  local as_root=()
  [ "$(id -u)" -eq 0 ] || as_root=(sudo)
  echo "Installing: ${missing[*]}"
  "${as_root[@]}" apt-get update -qq
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends \
    "${missing[@]}" >/dev/null
}

# Configures and builds a preset: build PRESET [TARGET...]
build() {
  local preset=$1
  shift
  cmake --preset "$preset" >/dev/null
  if [ $# -gt 0 ]; then
    cmake --build --preset "$preset" --target "$@"
  else
    cmake --build --preset "$preset"
  fi
}
