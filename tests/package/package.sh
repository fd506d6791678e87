#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# package.sh SOURCE BUILD WORK: makes the Debian packages and the archive of a
# build, unpacks them, and builds and runs a program against them in each way
# that somebody may: CMake, pkg-config, by hand, and CMake with the source.
set -euo pipefail
source=$1 build=$2 work=$3
here=$source/tests/package
rm -rf "$work"
mkdir -p "$work"
cd "$work"

refuse() {
  echo "package: $*" >&2
  exit 1
}
quietly() { "$@" >>log 2>&1 || refuse "$* failed: $(tail -n 30 log)"; }
version=$(sed -n 's/^#define ORUMLOX_VERSION_[A-Z]* //p' \
  "$source/include/orumlox/version.h" | paste -sd .)
programs=0
run() { # run PROGRAM...: each says the version
  for program in "$@"; do
    [[ $("$program") == "$version" ]] || refuse "$program failed"
    programs=$((programs + 1))
  done
}

# Packages without a file in common, in one root; the archive in another.
quietly cpack --config "$build/CPackConfig.cmake" -B packages
python= plugin= # where what they need is there
[[ ! -d $build/python/orumlox ]] || python="python3-orumlox_$version-1_amd64.deb "
[[ ! -e $build/gst/libgstorumlox.so ]] || plugin="gstreamer1.0-orumlox_$version-1_amd64.deb "
[[ $(cd packages && echo *.deb) == "${plugin}liborumlox-dev_$version-1_amd64.deb \
liborumlox0_$version-1_amd64.deb ${python}vexo_$version-1_amd64.deb" ]] || refuse packages/*
root=$work/root
for package in packages/*.deb; do
  dpkg-deb -x "$package" "$root"
  dpkg-deb -c "$package" | sed -n 's/^[^d].* \.\(\/[^ ]*\).*/\1/p'
done | sort >files
[[ -s files && -z $(uniq -d files) ]] || refuse "$(uniq -d files)"
dpkg-deb -f packages/vexo_* Depends | grep -q "liborumlox0 (>= $version).*libpng" ||
  refuse "what vexo depends on"
libraries=$root/usr/lib/x86_64-linux-gnu
for file in share/doc/orumlox/{LICENSE,{CHANGELOG,SECURITY,README,docs/abi}.md} \
  lib/x86_64-linux-gnu/{liborumlox.{a,so.0},pkgconfig/orumlox.pc} \
  share/man/man1/vexo.1 share/bash-completion/completions/vexo; do
  [[ -s $root/usr/$file ]] || refuse "no $file"
done
dpkg-deb --ctrl-tarfile packages/liborumlox0_* | tar -xO ./symbols |
  cmp - "$source/cmake/deb/symbols"
if [[ -n $plugin ]]; then
  dpkg-deb -f "packages/${plugin% }" Depends |
    grep -q "liborumlox0 (>= $version).*libgstreamer1.0-0" || refuse "what the plugin depends on"
fi
mkdir elsewhere
tar -xzf packages/*.tar.gz -C elsewhere --strip-components=1

# The plugin finds the library wherever both lie.
for folder in ${plugin:+"$libraries" elsewhere/lib/x86_64-linux-gnu}; do
  GST_PLUGIN_PATH=$folder/gstreamer-1.0 GST_REGISTRY=$work/registry.bin \
    quietly gst-inspect-1.0 vexoconvert
done

# The tool starts wherever it lies; its page has all commands, its completion
# commands, options and layouts.
for tool in "$root/usr/bin/vexo" elsewhere/bin/vexo; do
  [[ $("$tool" --version) == "vexo $version" ]] || refuse "$tool does not start"
  # It finds what it loads when it is wanted.
  [[ ! -e $build/tools/vexo/libvexo_av.so ]] ||
    quietly "$tool" convert "$source/samples/coffee_320x208.y4m" frame.mkv
done
page=$(LC_ALL=C MANWIDTH=80 man --warnings -l "$root/usr/share/man/man1/vexo.1" 2>warnings)
[[ ! -s warnings ]] || refuse "$(cat warnings)"
[[ $page == *"vexo thumbnail [OPTIONS] FILES..."*--prescale* ]] || refuse "$page"
complete_line() { # complete_line WORD...: of which the last is not finished
  COMP_WORDS=(vexo "$@") COMP_CWORD=$# COMPREPLY=()
  local line=(vexo "$@")
  _vexo "$root/usr/bin/vexo" "${line[-1]}" "${line[-2]}"
  echo "${COMPREPLY[*]}"
}
# shellcheck source=/dev/null
. "$root/usr/share/bash-completion/completions/vexo"
[[ $(complete_line key) == keyframes ]] || refuse "completion of commands"
[[ $(complete_line scale --mo) == --mode1 ]] || refuse "completion of options"
[[ $(complete_line scale --to nv) == "nv12 nv21" ]] || refuse "completion of layouts"
[[ -z $(complete_line scale nv) ]] || refuse "completion of files"

# The module starts wherever it lies, and made of the source by pip: the portable
# form alone, that is quick.
if [[ -n $python ]]; then
  dpkg-deb -f packages/python3-* Depends |
    grep -q "liborumlox0 (>= $version).*python3 (>= 3.*), python3 (<< 3.*numpy" ||
    refuse "what the module depends on"
  CMAKE_ARGS="-G Ninja -DORUMLOX_PORTABLE=ON -DORUMLOX_OPTIMISATION=-O0" quietly \
    /usr/bin/python3 -m pip install --no-build-isolation --no-deps --no-index \
    --target by_pip "$source"
  for folder in "$root/usr/lib/python3/dist-packages" \
    elsewhere/lib/python3/dist-packages by_pip; do
    said=$(PYTHONPATH=$folder /usr/bin/python3 -c "import orumlox
print(orumlox.__version__, orumlox.__file__)")
    [[ $said == "$version "*$folder* ]] || refuse "$folder does not start"
  done
fi

# CMake, of the packages and of the archive.
project() { # project NAME OPTION...
  quietly cmake -G Ninja -S "$here" -B "$@"
  quietly cmake --build "$1"
  run "$1"/programs/*
}
project of_packages -DCMAKE_PREFIX_PATH="$root/usr"
project of_archive -DCMAKE_PREFIX_PATH="$work/elsewhere"
if readelf -d of_packages/programs/orumlox_static_C_99 | grep -E 'orumlox|stdc\+\+'; then
  refuse "a C program with the static library needs that"
fi

# pkg-config and by hand, shared and static. (The prefix of Debian's packages is
# where compilers look, here it is not.)
export PKG_CONFIG_PATH=$libraries/pkgconfig
cp "$here/consumer.c" consumer.cpp
for language in "gcc -std=c99 $here/consumer.c" "gcc -std=c11 $here/consumer.c" \
  "g++ -std=c++11 consumer.cpp" "g++ -std=c++20 consumer.cpp"; do
  read -ra compile <<<"$language -Wall -Wextra -Wpedantic -Werror"
  read -ra shared <<<"$(pkg-config --cflags --libs orumlox)"
  read -ra static <<<"$(pkg-config --static --cflags --libs orumlox)"
  quietly "${compile[@]}" "${shared[@]}" -o shared
  quietly "${compile[@]}" "${static[@]}" -static -o static
  quietly "${compile[@]}" -I"$root/usr/include" -L"$libraries" -lorumlox -o by_hand
  quietly "${compile[@]}" -I"$root/usr/include" "$libraries/liborumlox.a" -lm \
    -pthread -o by_hand_static
  LD_LIBRARY_PATH=$libraries run ./shared ./by_hand
  run ./static ./by_hand_static
done
[[ $(pkg-config --modversion orumlox) == "$version" ]] || refuse "pkg-config's version"

# The source as a part of the project, the portable form alone: that is quick.
project of_source -DORUMLOX_SOURCE="$source" -DORUMLOX_PORTABLE=ON \
  -DORUMLOX_OPTIMISATION=-O0

# Without GoogleTest there are no tests, and a line says so.
quietly cmake -S "$source" -B no_googletest -DORUMLOX_GTEST_DIR="$work"
grep -q "The tests are not built" log || refuse "nothing is said of GoogleTest"
echo "$programs programs"
