#!/usr/bin/env bash
# Makes the packages, unpacks them into an empty root and builds programs there as a user would, with nothing of the build
# tree on any path. usage: test.sh BUILD_DIRECTORY
set -euo pipefail
build=$(cd "$1" && pwd)
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
root=$work/root

fail() { echo "FAILED: $*" >&2; exit 1; }

cpack -G DEB --config "$build/CPackConfig.cmake" -B "$work/packages" >"$work/cpack.log" 2>&1 ||
  { cat "$work/cpack.log"; fail "making the packages"; }
ls "$work/packages"/*.deb
mkdir "$root"
for package in "$work/packages"/*.deb; do
  dpkg-deb -x "$package" "$root"
done
if grep -rIl -e "$build" -e "$(dirname "$(dirname "$here")")" "$root"; then fail "these files name the build tree"; fi
dpkg-deb -f "$work"/packages/liboxgenapi3_*.deb Depends | grep -q 'libpugixml.*libzip' || fail "runtime dependencies"
dpkg-deb -f "$work"/packages/liboxgenapi-dev_*.deb Depends | grep -q 'liboxgenapi3 (=' || fail "development dependencies"
dpkg-deb -f "$work"/packages/oxgenapi_*.deb Depends | grep -q 'liboxcamera1 (=' || fail "dependencies of the tool"
[ "$(find "$root/usr/share/doc" -path '*/*ox*/copyright' | wc -l)" -eq "$(ls "$work"/packages/*.deb | wc -l)" ] ||
  fail "a package without a copyright file"
if dpkg-deb -c "$work"/packages/liboxgenapi3_*.deb | grep -E 'include|cmake|\.so$'; then
  fail "development files in the runtime package"
fi
libraries=$(dirname "$(find "$root/usr/lib" -name 'libOxGenApi.so.3')")

expect() {
  local output
  output=$("$@") || fail "$1: status $?"
  [ "$output" = "Width = 640" ] || fail "$1 printed: $output"
}

export CCACHE_DISABLE=1
cp -r "$here" "$work/consumer"
cmake -S "$work/consumer" -B "$work/with-cmake" -G Ninja "-DCMAKE_PREFIX_PATH=$root/usr" >/dev/null
ninja -C "$work/with-cmake" >/dev/null
expect "$work/with-cmake/consumer_c"
expect "$work/with-cmake/consumer_cpp"

export PKG_CONFIG_LIBDIR=$libraries/pkgconfig
pkg-config --atleast-version=3.1 oxgenapi || fail "pkg-config: version"
read -ra flags <<<"$(pkg-config --cflags --libs oxgenapi)"
cc -std=c11 "$here/consumer.c" "${flags[@]}" -lOxSimulatedCamera "-Wl,-rpath,$libraries" -o "$work/with-pkg-config"
expect "$work/with-pkg-config"

pkg-config --print-requires oxcamera | grep -q oxgenapi || fail "pkg-config: oxcamera"
read -ra flags <<<"$(pkg-config --cflags --libs oxcamera)"
cc -std=c11 "$root"/usr/share/doc/oxgenapi/examples/c/camera.c "${flags[@]}" "-Wl,-rpath,$libraries" -o "$work/camera"
[ "$("$work/camera")" = "Width = 320" ] || fail "the camera library does not open its simulated camera"

# What README.md and the quick start show in C compiles with the line that stands below it.
"$here/shown_programs.py" "$here/../../README.md" "$here/../../docs/quick-start.md" "$work/shown" "$libraries" ||
  fail "a program shown in the documents"

# Python: from its Debian package, and from a wheel that carries the libraries, in a virtual environment. Debian's own, which the package is for.
python=/usr/bin/python3
program="import oxgenapi
with oxgenapi.SimulatedCamera() as device, oxgenapi.NodeMap.of(device) as cam:
    cam.Width.value = 640
    print('Width =', cam.Width.value)
with oxgenapi.open('simulated') as cam:
    assert cam.Width.value == 640"
export LD_LIBRARY_PATH=$libraries
PYTHONPATH=$root/usr/lib/python3/dist-packages expect $python -B -c "$program"
unset LD_LIBRARY_PATH
cp -r "$here/../../python" "$work/python"
$python -m venv --system-site-packages --without-pip "$work/venv"
OXGENAPI_WHEEL_LIBRARIES=$libraries "$work/venv/bin/python" -m pip install --quiet --no-build-isolation --no-index "$work/python"
expect "$work/venv/bin/python" -I -c "$program"
